// The curves as kernels evaluate them.
#pragma once

#include "cmodel/cfa/src/lines/kernels/kernels.h"

namespace cfa {

/// A value on the slope, limited to the levels. Because the slope agrees with the levels, a place at or
/// before the knee lands at or beyond y0, and the one limit stands for both flat parts.
constexpr int32_t limited_by_curve(int32_t t, const Curve &c) {
    return least32(largest32(t, c.low), c.high);
}

/// CM_LUT3 with 6 fractional bits of slope: rounded.
constexpr int32_t rounded_curve(int32_t x, const Curve &c) {
    return limited_by_curve((((x - c.x0) * c.slope + 32) >> 6) + c.y0, c);
}

/// CM_LUT3_CLIP with 10 fractional bits of slope: truncated.
constexpr int32_t truncated_curve(int32_t x, const Curve &c) {
    return limited_by_curve((((x - c.x0) * c.slope) >> 10) + c.y0, c);
}

} // namespace cfa
