#include "cmodel/cfa/src/kit/fixed_point.h"

#include <array>

using namespace cfa;

namespace {

// floor(32768 / x) for x = 1..255; entry 0 is never selected.
constexpr auto INVERSE_TABLE = [] {
    std::array<int32_t, 256> table{};
    table[0] = 32768;
    for (int32_t x = 1; x < 256; ++x)
        table[x] = 32768 / x;
    return table;
}();

// floor(32768 / (256 + 8 k)) at the breakpoints 256 + 8 k, k = 0..224.
constexpr auto BREAKPOINT_VALUES = [] {
    std::array<int32_t, 225> table{};
    for (int32_t k = 0; k < 225; ++k)
        table[k] = 32768 / (256 + 8 * k);
    return table;
}();

constexpr int32_t LAST_BREAKPOINT = 256 + 8 * 224;

// v * 2^count in 32 bits, floored; count is -31 to 31.
int32_t scaled(int32_t v, int32_t count) {
    return count >= 0 ? v << (count & 31) : v >> (-count & 31);
}

} // namespace

int32_t get_inv(int32_t x) {
    if (x <= 255)
        return INVERSE_TABLE[std::max(x, 1)];
    if (x < LAST_BREAKPOINT) {
        const int32_t k = (x - 256) >> 3;
        const int32_t b0 = 256 + 8 * k;
        const int32_t b1 = b0 + 8;
        return ((x - b0) * BREAKPOINT_VALUES[k + 1] + (b1 - x) * BREAKPOINT_VALUES[k] + 4) >> 3;
    }
    // Kept: from 2048 on the result is one of 15 to 9, the largest r with r * x <= 32768 but never below 9.
    for (int32_t result = 15; result >= 9; --result)
        if (x <= 32768 / result)
            return result;
    return 9;
}

int32_t rgb2hsv(int32_t c0, int32_t c1, int32_t c2, uint32_t &hue, uint32_t &sat, uint32_t &val,
                int32_t hue_bits, int32_t sat_bits, int32_t val_shift) {
    const int32_t mx = std::max({c0, c1, c2});
    const int32_t mn = std::min({c0, c1, c2});
    const int32_t inv_mx = get_inv(mx);
    const int32_t inv_range = get_inv(mx - mn);

    // Kept: the upper limit, although the first term never exceeds 1 << sat_bits.
    const int32_t s = mx == 0 ? 0
                              : std::min(scaled(1, sat_bits) - scaled(mn * inv_mx, sat_bits - 15),
                                         scaled(100, sat_bits) - 1);

    // On a tie for the maximum channel 1 goes before channel 2 before channel 0.
    int32_t h = 0;
    if (mx == mn) {
        h = 0;
    } else if (mx == c1) {
        h = scaled((c2 - c0) * 60 * inv_range, hue_bits - 15) + scaled(120, hue_bits);
    } else if (mx == c2) {
        h = scaled((c0 - c1) * 60 * inv_range, hue_bits - 15) + scaled(240, hue_bits);
    } else {
        const int32_t t = scaled((c1 - c2) * 60 * inv_range, hue_bits - 15);
        h = c1 >= c2 ? t : t + scaled(360, hue_bits);
    }

    hue = static_cast<uint32_t>(h);
    sat = static_cast<uint32_t>(s);
    val = static_cast<uint32_t>(scaled(mx, val_shift));
    return 0;
}
