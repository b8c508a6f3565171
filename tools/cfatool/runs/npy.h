// Planes as NumPy files.
#pragma once

#include <cstdint>
#include <string>

#include "tools/cfatool/base/files.h"

namespace cfatool {

/// How the samples of a plane lie in a file.
struct PlaneForm {
    int width = 0, height = 0;
    int channels = 0; // 1, or 3 interleaved
    int bytes = 0;    // of a sample: 1, 2, 3, 4 or 8
    bool big_endian = false;
    bool is_signed = false;
    uint32_t max = 0;  // by the header of a picture; 0 where the file says none
    int64_t begin = 0; // of the first sample in the file
    bool png = false;  // max is that of the file format, 255 or 65535

    size_t row_samples() const { return static_cast<size_t>(width) * static_cast<size_t>(channels); }
    size_t row_bytes() const { return row_samples() * static_cast<size_t>(bytes); }
};

/// Reads the header of a NumPy file of format 1 to 3: whole numbers of 1, 2, 4 or 8 bytes and booleans, C
/// order, shape (h, w), (h, w, 1) or (h, w, 3), up to 2147483647 samples. Throws Trouble for any other, and
/// for one that is cut short or goes on behind its samples.
PlaneForm read_npy_header(const std::string &path, std::FILE *stream);

/// A NumPy file that is written row by row and there when it is complete. Samples as they stand in memory,
/// 2 or 4 bytes each: unsigned ('<u2', '<u4') or signed ('<i4'). Shape (h, w), or (h, w, channels) for
/// several. Throws Trouble.
class NpyFile {
  public:
    NpyFile(const std::string &path, const PlaneForm &form);
    void write_row(const void *samples) { file_.write(samples, row_bytes_); }
    void commit() { file_.commit(); }

  private:
    OutputFile file_;
    const size_t row_bytes_;
};

} // namespace cfatool
