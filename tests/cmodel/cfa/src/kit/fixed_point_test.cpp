#include "cmodel/cfa/src/kit/fixed_point.h"

#include <cstdint>
#include <iterator>

#include <doctest/doctest.h>

namespace {

struct Hsv {
    uint32_t hue = 77, sat = 77, val = 77;
};

Hsv hsv(int32_t c0, int32_t c1, int32_t c2, int32_t hue_bits = 3, int32_t sat_bits = 0,
        int32_t val_shift = 0) {
    Hsv out;
    CHECK(rgb2hsv(c0, c1, c2, out.hue, out.sat, out.val, hue_bits, sat_bits, val_shift) == 0);
    return out;
}

} // namespace

TEST_CASE("get_inv gives the reciprocal of the tables") {
    const int32_t xs[] = {INT32_MIN, -1,   0,    1,    2,    3,    100,  255,  256,  260,   264,
                          272,       280,  288,  2047, 2048, 2184, 2185, 2340, 2341, 2520,  2521,
                          2730,      2731, 2978, 2979, 3276, 3277, 3640, 3641, 4095, 65535, INT32_MAX};
    const int32_t inverses[] = {32768, 32768, 32768, 32768, 16384, 10922, 327, 128, 128, 126, 124,
                                120,   117,   113,   16,    15,    15,    14,  14,  13,  13,  12,
                                12,    11,    11,    10,    10,    9,     9,   9,   9,   9,   9};
    for (size_t i = 0; i < std::size(xs); i++) {
        CAPTURE(xs[i]);
        CHECK(get_inv(xs[i]) == inverses[i]);
    }
    for (int32_t x = 256; x < 2048; x++) { // between breakpoints 8 apart, rounded to nearest
        const int32_t part = x % 8;
        const int32_t eighths = 32768 / (x - part) * (8 - part) + 32768 / (x - part + 8) * part;
        CAPTURE(x);
        REQUIRE(get_inv(x) == (eighths + 4) / 8);
    }
}

TEST_CASE("limits, magnitude and norm") {
    CHECK(clip12(-1) == 0);
    CHECK(clip12(4095) == 4095);
    CHECK(clip12(4096) == 4095);
    CHECK(clip_sig(-5) == 0);
    CHECK(clip_sig(131072) == 131071);
    CHECK(magnitude(INT32_MIN) == INT32_MIN); // wraps
    CHECK(norm2(0, 100) == 96);               // 12300 / 128 = 96.09
    CHECK(norm2(100, 0) == 96);
    CHECK(norm2(1, 1) == 1);    // 174 + 64 = 238 / 128
    CHECK(norm2(0, 1) == 1);    // 123 + 64 = 187 / 128: rounded, not truncated
    CHECK(norm2(30, 40) == 50); // 4920 + 1530 + 64 = 6514 / 128 = 50.9
}

TEST_CASE("rgb2hsv: hue in eighths of a degree") {
    // Full colours of 255: the reciprocal of 255 is 128, so 60 degrees come out as 60 * 8 * 255 / 256 =
    // 478.1.
    CHECK(hsv(255, 0, 0).hue == 0);
    CHECK(hsv(0, 255, 0).hue == 960);
    CHECK(hsv(0, 0, 255).hue == 1920);
    CHECK(hsv(255, 255, 0).hue == 960 - 479);  // channel 1 wins the tie with channel 0; -478.1 rounds down
    CHECK(hsv(0, 255, 255).hue == 960 + 478);  // and with channel 2
    CHECK(hsv(255, 0, 255).hue == 1920 + 478); // channel 2 wins the tie with channel 0
    CHECK(hsv(255, 0, 1).hue == 2880 - 2);     // -1.9 rounds down
    CHECK(hsv(255, 1, 0).hue == 1);
    CHECK(hsv(255, 7, 7).hue == 0);
    // Channel 0 largest: range 100 has the reciprocal 327, (50 - 100) * 60 * 327 >> 12 = -240 (-239.5).
    CHECK(hsv(200, 100, 150).hue == 2880 - 240);
    CHECK(hsv(200, 150, 100).hue == 239);
    CHECK(hsv(9, 9, 9).hue == 0);
    // With no fractional bits: 60 * 255 * 128 >> 15 = 59.
    CHECK(hsv(0, 255, 255, 0).hue == 120 + 59);
    // The product wraps for deep samples: -200000 * 60 * 9 = -108000000 fits, -9000000 * 60 * 9 does not:
    // -4860000000 + 2^32 = -565032704, >> 12 is -137948 (-137947.4).
    CHECK(static_cast<int32_t>(hsv(9000000, 9000000, 0).hue) == 960 - 137948);
}

TEST_CASE("rgb2hsv: saturation and value") {
    CHECK(hsv(0, 0, 0).sat == 0);
    CHECK(hsv(0, 0, 0, 3, 8).sat == 0);
    CHECK(hsv(5, 5, 5, 3, 8).sat == 1);       // 256 - (5 * 6553 >> 7) = 256 - 255
    CHECK(hsv(100, 50, 75, 3, 8).sat == 129); // 256 - (50 * 327 >> 7) = 256 - 127
    CHECK(hsv(100, 0, 75, 3, 8).sat == 256);
    CHECK(hsv(-300, -200, -100, 3, 0).sat == 99); // 1 - (-300 * 32768 >> 15) = 301, limited to 100 - 1
    CHECK(hsv(3, 900, 20, 3, 0, 2).val == 3600);
}
