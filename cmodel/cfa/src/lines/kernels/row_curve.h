// The curves as kernels evaluate them.
#pragma once

#include "cmodel/cfa/src/lines/kernels/kernels.h"

namespace cfa::CFA_ROWS {

/// How far x lies beyond the knee. On narrow rows the slope agrees with the levels: a place before the knee
/// lands beyond y0, and the limits stand for both flat parts. On wide rows it need not, and x stops at the
/// knee.
constexpr int32_t beyond_knee(int32_t x, const Curve &c) {
    return WIDE ? largest32(x - c.x0, 0) : x - c.x0;
}

/// A value on the slope, limited.
constexpr int32_t limited_by_curve(int32_t t, const Curve &c) {
    return least32(largest32(t, c.low), c.high);
}

/// CM_LUT3 with 6 fractional bits of slope: rounded.
constexpr int32_t rounded_curve(int32_t x, const Curve &c) {
    return limited_by_curve(((beyond_knee(x, c) * c.slope + 32) >> 6) + c.y0, c);
}

/// CM_LUT3_CLIP with 10 fractional bits of slope: truncated.
constexpr int32_t truncated_curve(int32_t x, const Curve &c) {
    return limited_by_curve(((beyond_knee(x, c) * c.slope) >> 10) + c.y0, c);
}

} // namespace cfa::CFA_ROWS
