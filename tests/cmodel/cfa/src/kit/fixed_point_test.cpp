#include "cmodel/cfa/src/kit/fixed_point.h"

#include <doctest/doctest.h>

using namespace cfa;

TEST_CASE("magnitude of the most negative number wraps") {
    CHECK(magnitude(INT32_MIN) == INT32_MIN);
}

TEST_CASE("rgb2hsv: counts beyond 15 bits, products that wrap, colours below 0") {
    // Reciprocals: 128 of 255, 655 of 50, 327 of 100, 163 of 200, 9 of millions, 32768 below 1.
    constexpr int32_t m = 9000000; // 60 * 9 * m is 565032704 more than 2^32
    struct {
        int32_t c0, c1, c2, hue_bits, sat_bits, val_shift, hue, sat, val;
    } const rows[] = {
        {0, 255, 255, 16, 16, 16, (60 * 255 * 128 * 2) + (120 << 16), 1 << 16, 255 << 16},
        {0, 255, 255, 31, 31, 31, INT32_MIN + 0x62000000, INT32_MIN,
         INT32_MIN}, // 0x1de200 << 16 loses the top
        {0, 0, 0, 3, 8, 0, 0, 0, 0},
        {100, 50, 75, 20, 20, 0, -25 * 60 * 655 * 32 + (360 << 20), (1 << 20) - 50 * 327 * 32, 100},
        {m, m, 0, 3, 0, 0, 960 - 137948, 1, m}, // -565032704 >> 12 rounds down
        {m, 0, m, 3, 0, 0, 1920 + 137947, 1, m},
        {m + 1, m, 0, 3, 0, 0, 137947, 1, m + 1},
        {-300, -200, -100, 0, 0, 2, 240 - 30, 99, -400}}; // 1 + 300, limited to 100 - 1
    for (const auto &row : rows) {
        INFO("colour ", row.c0, " ", row.c1, " ", row.c2, ", ", row.hue_bits, " bits");
        uint32_t hue, sat, val;
        CHECK(rgb2hsv(row.c0, row.c1, row.c2, hue, sat, val, row.hue_bits, row.sat_bits, row.val_shift) == 0);
        CHECK(static_cast<int32_t>(hue) == row.hue);
        CHECK(static_cast<int32_t>(sat) == row.sat);
        CHECK(static_cast<int32_t>(val) == row.val);
    }
}
