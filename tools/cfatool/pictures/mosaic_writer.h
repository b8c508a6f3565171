// Sampling an RGB picture through a colour-filter array into a P5 file.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/cfatool/base/files.h"
#include "tools/cfatool/pictures/colour_sites.h"

namespace cfatool {

/// How a picture becomes a mosaic.
struct MosaicForm {
    int width = 0;
    int height = 0;
    uint32_t bayer = 0; // pattern id, 0..15
    int bits = 12;      // depth of the samples, 2..31
    int64_t full = 0;   // the value in the picture that becomes the largest sample
    int64_t noise = 0;  // standard deviation in thousandths of a sample step
    uint64_t seed = 1;  // of the noise

    uint32_t max() const { return (1u << bits) - 1; }
};

/// Writes a mosaic in the model's form (P5 with its comment line, samples of 1 to 4 bytes) row by row.
/// Every member throws Trouble naming the file and the reason.
class MosaicWriter {
  public:
    MosaicWriter(const std::string &path, const MosaicForm &form);

    /// The next row. REQUIRES `width` pixels. Values are scaled to the depth (rounded to nearest), noise is
    /// added, and the sum is limited to 0..max.
    void write_row(const std::vector<Rgb> &row);
    void commit() { file_.commit(); }

  private:
    int64_t sample_of(int x, const Rgb &colour) const;

    MosaicForm form_;
    int sample_bytes_;
    OutputFile file_;
    std::vector<uint8_t> buffer_; // one row as it stands in the file
    int y_ = 0;
};

/// Samples a colour picture (PNG, P6) into a mosaic; the form's size and full scale are the picture's.
/// Throws Trouble.
void write_mosaic(const std::string &picture, const MosaicForm &form, const std::string &output);

} // namespace cfatool
