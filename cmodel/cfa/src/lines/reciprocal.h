// The kit's table functions in a form that vectorises. Each equals its table for every argument: tested.
#pragma once

#include <cstdint>

#include "cmodel/cfa/src/lines/kernel.h"

/// get_inv(x) by two divisions. Quotients of 32768 are at least 1/2048 away from the next whole number
/// wherever they are cut, which is far more than the division's error.
inline int32_t reciprocal(int32_t x) {
    const int32_t positive = largest32(x, 1);
    const bool interpolated = positive >= 256 && positive < 2048;
    const int32_t step = interpolated ? 7 : 0;
    const int32_t t = positive & step; // place between two breakpoints, 0..7
    const float b0 = static_cast<float>(positive - t);
    const int32_t y0 = static_cast<int32_t>(32768.0f / b0);
    const int32_t y1 = static_cast<int32_t>(32768.0f / (b0 + 8.0f));
    const int32_t y = (t * y1 + (8 - t) * y0 + 4) >> 3;            // y0 where t is 0
    const int32_t highest = select32(positive >= 2048, 15, 32768); // 2048 itself is 15, not 16
    return largest32(least32(y, highest), 9);
}
