// PNG files through libpng.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/cfatool/base/files.h"

namespace cfatool {

/// Writes an 8-bit PNG row by row, RGB or grey. No time and no text chunk: the same rows give the same file.
/// Every member throws Trouble naming the file and the reason.
class PngWriter {
  public:
    /// REQUIRES width >= 1 and height >= 1.
    PngWriter(const std::string &path, int width, int height, bool grey = false);
    ~PngWriter();
    PngWriter(const PngWriter &) = delete;
    PngWriter &operator=(const PngWriter &) = delete;

    /// The next row, 3 x width samples; of a grey picture the first of three counts. REQUIRES fewer than
    /// `height` calls before.
    void write_row(const std::vector<uint8_t> &row);
    /// REQUIRES that all rows have been written.
    void commit();

  private:
    struct State;
    void fail() const;
    void flush();

    OutputFile file_;
    bool grey_;
    State *state_;
};

/// A whole picture; channels interleaved, max 255 or 65535.
struct RgbPicture {
    int width = 0;
    int height = 0;
    int channels = 3; // or 1
    uint32_t max = 0;
    std::vector<uint8_t> samples; // 1 or 2 (max 65535, high byte first) bytes each
};

/// Whether the file begins as a PNG file does. Throws Trouble for one that cannot be opened.
bool is_png(const std::string &path);

/// Whether greyscale is taken beside colour.
enum class PngColours { rgb, any };

/// Reads a PNG of 8 or 16 bits (or with a palette of RGB colours, or of fewer bits of grey, which are scaled
/// to 8), values as they stand, no gamma applied. Throws Trouble for a missing or malformed file, for alpha,
/// and for greyscale unless it is taken.
RgbPicture read_png(const std::string &path, PngColours colours = PngColours::rgb);

} // namespace cfatool
