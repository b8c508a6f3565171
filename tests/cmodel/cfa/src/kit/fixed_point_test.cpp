#include "cmodel/cfa/src/kit/fixed_point.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

#include <doctest/doctest.h>

using namespace cfa;

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
}

TEST_CASE("magnitude and norm") {
    CHECK(clip_sig(131072) == 131071);
    CHECK(magnitude(INT32_MIN) == INT32_MIN); // wraps
    CHECK(norm2(0, 100) == 96);               // 12300 / 128 = 96.09
    CHECK(norm2(1, 1) == 1);                  // 174 + 64 = 238 / 128
    CHECK(norm2(0, 1) == 1);                  // 123 + 64 = 187 / 128: rounded, not truncated
    CHECK(norm2(40, 30) == 50);               // 4920 + 1530 + 64 = 6514 / 128 = 50.9
}

TEST_CASE("rgb2hsv: hue in eighths of a degree") {
    // Full colours of 255: the reciprocal of 255 is 128, so 60 degrees come out as 60 * 8 * 255 / 256 =
    // 478.1.
    struct {
        int32_t c0, c1, c2, hue;
    } const rows[] = {
        {255, 0, 0, 0},
        {0, 255, 0, 960},
        {0, 0, 255, 1920},
        {255, 255, 0, 960 - 479},  // channel 1 wins the tie with channel 0; -478.1 rounds down
        {0, 255, 255, 960 + 478},  // and with channel 2
        {255, 0, 255, 1920 + 478}, // channel 2 wins the tie with channel 0
        {255, 0, 1, 2880 - 2},     // -1.9 rounds down
        {255, 1, 0, 1},
        {255, 7, 7, 0},
        {200, 100, 150,
         2880 - 240}, // range 100: reciprocal 327, (100 - 150) * 60 * 327 >> 12 = -240 (-239.5)
        {200, 150, 100, 239},
        {9, 9, 9, 0},
        // The product wraps: -9000000 * 60 * 9 + 2^32 = -565032704, >> 12 is -137948 (-137947.4).
        {9000000, 9000000, 0, 960 - 137948}};
    uint32_t hue, sat, val;
    for (const auto &row : rows) {
        INFO("colour ", row.c0, " ", row.c1, " ", row.c2);
        CHECK(rgb2hsv(row.c0, row.c1, row.c2, hue, sat, val, 3, 0, 0) == 0);
        CHECK(static_cast<int32_t>(hue) == row.hue);
    }
    rgb2hsv(0, 255, 255, hue, sat, val, 0, 0, 0); // no fractional bits: 60 * 255 * 128 >> 15 = 59
    CHECK(hue == 120 + 59);
}

TEST_CASE("rgb2hsv: saturation and value") {
    struct {
        int32_t c0, c1, c2, sat_bits;
        uint32_t sat;
    } const rows[] = {{0, 0, 0, 8, 0},
                      {5, 5, 5, 8, 1},       // 256 - (5 * 6553 >> 7) = 256 - 255
                      {100, 50, 75, 8, 129}, // 256 - (50 * 327 >> 7) = 256 - 127
                      {100, 0, 75, 8, 256},
                      {-300, -200, -100, 0, 99}}; // 1 - (-300 * 32768 >> 15) = 301, limited to 100 - 1
    uint32_t hue, sat, val;
    for (const auto &row : rows) {
        INFO("colour ", row.c0, " ", row.c1, " ", row.c2);
        rgb2hsv(row.c0, row.c1, row.c2, hue, sat, val, 3, row.sat_bits, 2);
        CHECK(sat == row.sat);
        CHECK(static_cast<int32_t>(val) == 4 * std::max({row.c0, row.c1, row.c2}));
    }
}
