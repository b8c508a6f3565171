// The reciprocal table in a form that vectorises. It equals get_inv for every argument: tested.
#pragma once

#include <cstdint>

#include "cmodel/cfa/src/lines/kernels/basics.h"

namespace cfa {

/// get_inv(x) for 1 <= x < 2048: the entries of the two breakpoints around x, by division, and the line
/// between them. Quotients of 32768 are at least 1/2048 away from the next whole number wherever they are
/// cut, far more than the division's error.
inline int32_t reciprocal_below_2048(int32_t x) {
    const int32_t t = select32(x >= 256, x & 7, 0); // place between the breakpoints; below 256 every x is one
    const float b0 = static_cast<float>(x - t);
    const int32_t y0 = static_cast<int32_t>(32768.0f / b0);
    const int32_t y1 = static_cast<int32_t>(32768.0f / (b0 + 8.0f));
    return (8 * y0 + t * (y1 - y0) + 4) >> 3;
}

/// get_inv(x) for every x.
inline int32_t reciprocal(int32_t x) {
    const int32_t positive = largest32(x, 1);
    const bool interpolated = static_cast<uint32_t>(positive - 256) < 2048 - 256;
    const int32_t t = select32(interpolated, positive & 7, 0);
    const float b0 = static_cast<float>(positive - t);
    const int32_t y0 = static_cast<int32_t>(32768.0f / b0);
    const int32_t y1 = static_cast<int32_t>(32768.0f / (b0 + 8.0f));
    const int32_t y = (8 * y0 + t * (y1 - y0) + 4) >> 3;
    return largest32(y - int32_t{positive == 2048}, 9); // Kept: 2048 itself is 15, not 16
}

} // namespace cfa
