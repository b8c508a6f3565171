// The line engine on picture files: rows from one file, rows to three, and no frame between.
#pragma once

#include "cmodel/common/frame.h"
#include "cmodel/common/large_buffer.h"
#include "cmodel/common/ppm_stream.h"

namespace cfa {

/// The output files, written one after another.
struct OutputPaths {
    const char *rgb, *dc, *gain;
};

/// A picture of one channel as the words of its file: bytes up to depth 8, 16 bits up to depth 16.
class WordStore {
  public:
    /// REQUIRES a depth of 1 to 16 and a size that CM_NewFRAME accepts.
    explicit WordStore(const PpmHeader &header);

    /// Reads all samples. False when one is missing or beyond the bound of the line engine.
    bool read(PpmReader &reader);

    /// What was read, as the frame that CM_ReadPPM5 makes of it. REQUIRES the reader to be open.
    FramePtr frame(PpmReader &reader) const;

    const PpmHeader &header() const { return header_; }
    uint32_t union_of_bits() const { return all_; }       // of the samples
    size_t size() const { return pixels_ * word_bytes_; } // in bytes
    size_t word_bytes() const { return word_bytes_; }
    template <class Word> Word *row(int y) {
        return reinterpret_cast<Word *>(bytes_.get()) + static_cast<size_t>(y) * header_.width;
    }

  private:
    const PpmHeader header_;
    const size_t word_bytes_;
    const size_t pixels_;
    const LargeBuffer bytes_;
    size_t present_ = 0; // bytes read
    uint32_t all_ = 0;
};

/// Runs the line engine on the store and writes the three outputs; the store then holds the DC image.
/// REQUIRES what conditions.h states, and the input to be closed.
void run_file_rows(WordStore &store, const OutputPaths &out);

} // namespace cfa
