// The curves as kernels evaluate them. Products fit 32 bits for the arguments and registers that the engine
// takes.
#pragma once

#include "cmodel/cfa/src/lines/kernels.h"

/// The value on the slope, limited by y1 from the side that the curve comes from.
constexpr int32_t limited_by_curve(int32_t t, const Curve &c) {
    return c.y0 <= c.y1 ? least32(t, c.y1) : largest32(t, c.y1);
}

/// CM_LUT3 with 6 fractional bits of slope: rounded.
constexpr int32_t rounded_curve(int32_t x, const Curve &c) {
    const int32_t t = (((x - c.x0) * c.slope + 32) >> 6) + c.y0;
    const int32_t sloped = limited_by_curve(t, c);
    return x <= c.x0 ? c.y0 : sloped;
}

/// CM_LUT3_CLIP with 10 fractional bits of slope: truncated.
constexpr int32_t truncated_curve(int32_t x, const Curve &c) {
    const int32_t t = (((x - c.x0) * c.slope) >> 10) + c.y0;
    const int32_t sloped = limited_by_curve(t, c);
    return x <= c.x0 ? c.y0 : sloped;
}
