// The fixed-point kit that all stages share.
#pragma once

#include <algorithm>
#include <cstdint>

namespace cfa {

/// v limited to a 12-bit sample, 0..4095.
constexpr int32_t clip12(int32_t v) {
    return std::min(4095, std::max(0, v));
}

/// v limited to a colour-difference variance, 0..131071 (17 bits).
constexpr int32_t clip_sig(int32_t v) {
    return std::min(131071, std::max(0, v));
}

/// |v| in wrapping 32-bit arithmetic: the most negative number stays as it is.
constexpr int32_t magnitude(int32_t v) {
    return v < 0 ? -v : v;
}

/// Length of the vector (a, b), a, b >= 0, as 123/128 of the larger plus 51/128 of the smaller, rounded.
constexpr int32_t norm2(int32_t a, int32_t b) {
    return (std::max(a, b) * 123 + std::min(a, b) * 51 + 64) >> 7;
}

/// Weighted sum of the 3 x 3 neighbourhood with rows (1 2 1), (2 4 2), (1 2 1); the caller divides by 16.
/// P(dy, dx) reads a sample.
template <class Neighbourhood> int32_t binomial3x3(const Neighbourhood &P) {
    const int32_t above = P(-1, -1) + 2 * P(-1, 0) + P(-1, 1);
    const int32_t row = P(0, -1) + 2 * P(0, 0) + P(0, 1);
    const int32_t below = P(1, -1) + 2 * P(1, 0) + P(1, 1);
    return above + 2 * row + below;
}

} // namespace cfa

/// Reciprocal 32768 / x in Q15 as the hardware's tables give it: 32768 for x <= 1, falling to 9 for x > 3276.
int32_t get_inv(int32_t x);

/// Hue, saturation and value of channels 0, 1, 2. Hue has hue_bits fractional bits of a degree: 0 is the
/// direction of channel 0, 120 of channel 1, 240 of channel 2. Saturation has sat_bits fractional bits, value
/// is the maximum << val_shift. Each of the three is 0 to 31; arithmetic wraps at 32 bits.
/// Returns 0. The one caller passes hue_bits 3: 0..2880, in eighths of a degree, for samples of 12 bits.
int32_t rgb2hsv(int32_t c0, int32_t c1, int32_t c2, uint32_t &hue, uint32_t &sat, uint32_t &val,
                int32_t hue_bits, int32_t sat_bits, int32_t val_shift);

/// Integer square root by table and linear interpolation; 0 below 0, 32767 above 1073709056, and, kept, 0 at
/// exactly 1073709056. No stage calls it.
int32_t lut_intp(int32_t x);
