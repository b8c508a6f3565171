#include "block/layout.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <string>

namespace cfa {
namespace {

[[noreturn]] void refuse(const char *name, const char *reason) {
    throw CallError(CFA_ERROR_ARGUMENT, std::string(name) + ": " + reason);
}

// One of the three directions of an image: so many steps of so many bytes.
struct Direction {
    uint64_t steps;
    int64_t stride;
};

uint64_t size_of(int64_t stride) {
    return stride < 0 ? uint64_t{0} - static_cast<uint64_t>(stride) : static_cast<uint64_t>(stride);
}

} // namespace

Layout::Layout(const char *name, const cfa_image &image, uint32_t width, uint32_t height, int channels)
    : name_(name), data_(image.data), channels_(channels) {
    channel_ = image.channel_stride != 0 ? image.channel_stride : 2;
    pixel_ = image.pixel_stride != 0 ? image.pixel_stride : 2 * channels;
    if (image.row_stride != 0)
        row_ = image.row_stride;
    else if (__builtin_mul_overflow(static_cast<ptrdiff_t>(width), pixel_, &row_))
        refuse(name, "a row is too long");
    if (row_ % 2 != 0 || pixel_ % 2 != 0 || channel_ % 2 != 0)
        refuse(name, "a stride is odd");
    if (reinterpret_cast<uintptr_t>(data_) % 2 != 0)
        refuse(name, "the address is odd");
    if (width == 0 || height == 0)
        return; // no samples: none overlap

    // From the smallest stride to the largest, each must reach over what the smaller ones span.
    std::array<Direction, 3> directions{
        {{height, row_}, {width, pixel_}, {static_cast<uint64_t>(channels), channel_}}};
    std::sort(directions.begin(), directions.end(),
              [](const Direction &a, const Direction &b) { return size_of(a.stride) < size_of(b.stride); });
    uint64_t span = 2, below = 0; // bytes from first to last, bytes in front of data
    for (const Direction &d : directions) {
        if (d.steps < 2)
            continue;
        uint64_t reach;
        if (size_of(d.stride) < span)
            refuse(name, "strides make samples overlap");
        if (__builtin_mul_overflow(d.steps - 1, size_of(d.stride), &reach) ||
            __builtin_add_overflow(span, reach, &span))
            refuse(name, "strides reach beyond the memory");
        below += d.stride < 0 ? reach : 0;
    }
    first_ = reinterpret_cast<uintptr_t>(data_) - below;
    if (span > static_cast<uint64_t>(std::numeric_limits<ptrdiff_t>::max()) ||
        below > reinterpret_cast<uintptr_t>(data_) || __builtin_add_overflow(first_, span, &end_))
        refuse(name, "strides reach beyond the memory");
}

bool Layout::bounds_apart_from(const Layout &other) const {
    return end_ <= other.first_ || other.end_ <= first_;
}

// Whether every sample of one lies between those of the other: the same steps from row to row and pixel to
// pixel, and within a pixel other places.
bool Layout::within_pixels_of(const Layout &other) const {
    if (row_ != other.row_ || pixel_ != other.pixel_ || pixel_ < 0 || row_ % pixel_ != 0)
        return false;
    const int64_t distance = reinterpret_cast<intptr_t>(other.data_) - reinterpret_cast<intptr_t>(data_);
    for (int a = 0; a < channels_; ++a)
        for (int b = 0; b < other.channels_; ++b)
            if ((distance + b * other.channel_ - a * channel_) % pixel_ == 0)
                return false;
    return true;
}

bool Layout::apart_from(const Layout &other) const {
    return !*this || !other || bounds_apart_from(other) || within_pixels_of(other);
}

} // namespace cfa
