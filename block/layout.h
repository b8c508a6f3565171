// Where the samples of a caller's image lie, and whether they may lie there.
#pragma once

#include <cstdint>
#include <stdexcept>

#include "block/cfa_block.h"

namespace cfa {

/// Something wrong with the arguments of a call: the line says what, the code is one of CFA_ERROR_...
struct CallError : std::runtime_error {
    CallError(int status, const std::string &line) : std::runtime_error(line), code(status) {}
    int code;
};

/// An image with its strides in full. Bytes of sample (y, x, c): data + y * row + x * pixel + c * channel.
class Layout {
  public:
    /// No image: not wanted.
    Layout() = default;

    /// Throws CallError with `name` for an image whose samples are not aligned, overlap, or lie beyond the
    /// ends of memory. REQUIRES data not to be null.
    Layout(const char *name, const cfa_image &image, uint32_t width, uint32_t height, int channels);

    explicit operator bool() const { return data_ != nullptr; }
    uint16_t *row(int64_t y) const { return at(y * row_); }
    /// Channel c of a row.
    uint16_t *row(int64_t y, int c) const { return at(y * row_ + c * channel_); }
    ptrdiff_t pixel_stride() const { return pixel_; }
    bool channels_packed() const { return pixel_ == 6 && channel_ == 2; } // three of them
    bool pixels_packed() const { return pixel_ == 2; }

    /// Whether the two may be written and read in one run.
    bool apart_from(const Layout &other) const;
    /// Whether the bounds of the two, from the first byte of all samples to the last, are apart.
    bool bounds_apart_from(const Layout &other) const;

  private:
    uint16_t *at(int64_t offset) const {
        return reinterpret_cast<uint16_t *>(reinterpret_cast<char *>(data_) + offset);
    }
    bool within_pixels_of(const Layout &other) const;

    const char *name_ = "";
    uint16_t *data_ = nullptr;
    ptrdiff_t row_ = 0, pixel_ = 0, channel_ = 0;
    int channels_ = 0;
    uintptr_t first_ = 0, end_ = 0; // bounds
};

} // namespace cfa
