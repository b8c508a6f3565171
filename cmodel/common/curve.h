// Piecewise-linear curves: flat at y0 up to the knee x0, then sloped, then flat at the limit y1.
#pragma once

#include <cstdint>

/// The curve at x, its sloped part rounded to nearest: ((x - x0) * slope + half) >> shift, plus
/// y0, never beyond y1 (below it for a falling curve, y0 > y1). slope carries `shift` fractional
/// bits. Products wrap at 32 bits.
int32_t CM_LUT3(uint32_t x, int32_t x0, uint32_t y0, int32_t y1, uint32_t slope, uint32_t shift);

/// The same curve with its sloped part truncated (no half).
int32_t CM_LUT3_CLIP(uint32_t x, int32_t x0, int32_t y0, int32_t y1, int32_t slope, uint32_t shift);

/// Two-point interpolation: y0 at x0, y1 at x1, flat outside; the product wraps at 32 bits, the
/// division truncates toward zero.
int32_t CM_SingleIntp(int32_t x0, int32_t x1, int32_t y0, int32_t y1, int32_t x);
