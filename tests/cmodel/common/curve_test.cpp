#include "cmodel/common/curve.h"

#include <doctest/doctest.h>

#include <limits>
#include <random>

namespace {

constexpr int32_t MIN = std::numeric_limits<int32_t>::min();
constexpr int32_t MAX = std::numeric_limits<int32_t>::max();

// The low 32 bits of an exact number, as a signed one.
int32_t wrap(__int128 v) {
    return static_cast<int32_t>(static_cast<uint32_t>(v & 0xFFFFFFFF));
}

// The curve in exact arithmetic, wrapped where the hardware's words end.
int32_t exact_curve(int32_t x, int32_t x0, int32_t y0, int32_t y1, int32_t slope, uint32_t shift,
                    bool rounded) {
    if (x <= x0)
        return y0;
    const __int128 half = rounded && shift > 0 ? __int128{1} << (shift - 1) : 0;
    const int32_t t = wrap(__int128{wrap((__int128{x} - x0) * slope + half) >> shift} + y0);
    if (y0 <= y1)
        return t < y1 ? t : y1;
    return t > y1 ? t : y1;
}

} // namespace

TEST_CASE("curves: any arguments, against exact arithmetic") {
    std::mt19937 random(1);
    for (int i = 0; i < 200000; ++i) {
        const auto number = [&] { return static_cast<int32_t>(random()) >> (random() % 32); };
        const int32_t x = number(), x0 = number(), y0 = number(), y1 = number(), slope = number();
        const uint32_t shift = random() % 32;
        INFO("x ", x, " x0 ", x0, " y0 ", y0, " y1 ", y1, " slope ", slope, " shift ", shift);
        const auto ux = static_cast<uint32_t>(x), uy0 = static_cast<uint32_t>(y0);
        REQUIRE(CM_LUT3(ux, x0, uy0, y1, static_cast<uint32_t>(slope), shift) ==
                exact_curve(x, x0, y0, y1, slope, shift, true));
        REQUIRE(CM_LUT3_CLIP(ux, x0, y0, y1, slope, shift) ==
                exact_curve(x, x0, y0, y1, slope, shift, false));
    }
}

TEST_CASE("two-point interpolation; points of the curves by hand") {
    const int32_t cases[][6] = {
        // x0, x1, y0, y1, x, result
        {0, 4, 10, 20, 1, 12},
        {0, 4, 20, 10, 1, 18}, // truncated toward zero: 20 + (-10 / 4)
        {4, 0, 20, 10, 1, 13}, // 20 + (-10 * -3) / -4
        {4, 0, 20, 10, -1, 10},
        {0, 4, 10, 20, 9, 20},
        {0, 4, 10, 20, -9, 10},
        {4, 0, 20, 10, 5, 20},
        {3, 3, 10, 20, 4, 10},
        {0, 131072, 7, 65543, 65536, 7},         // 65536 * 65536 wraps to 0,
        {0, 131072, 7, 65543, 32768, 7 - 16384}, // 65536 * 32768 to the most negative number
        {MIN, MAX, 0, MIN, MIN + 1, MIN}, // x1 - x0 to -1, the product to the most negative number: no trap
    };
    for (const auto &c : cases)
        CHECK(CM_SingleIntp(c[0], c[1], c[2], c[3], c[4]) == c[5]);
    // Falling from 4095 at 200 to 0 at 800, slope -6988 / 1024. At 500: 4095 + floor(-2096400 / 1024) = 2047.
    CHECK(CM_LUT3_CLIP(500, 200, 4095, 0, -6988, 10) == 2047);
    CHECK(CM_LUT3(500, 200, 4095, 0, static_cast<uint32_t>(-6988), 10) == 2048);
    CHECK(CM_LUT3(20, 10, 5, 5, static_cast<uint32_t>(-1), 0) == -5); // equal levels take the rising branch
}
