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

TEST_CASE("curves: knee, rounding, limits") {
    CHECK(CM_LUT3(10, 10, 7, 100, 3, 1) == 7);
    CHECK(CM_LUT3(11, 10, 0, 100, 3, 1) == 2);
    CHECK(CM_LUT3_CLIP(11, 10, 0, 100, 3, 1) == 1);
    CHECK(CM_LUT3(4000, 10, 0, 100, 3, 1) == 100);
    // Falling: 4095 at 200 to 0 at 800, slope -6988 / 1024. At 500: 4095 + floor(-2096400 / 1024) = 2047.
    const auto falling = [](uint32_t x) { return CM_LUT3_CLIP(x, 200, 4095, 0, -6988, 10); };
    CHECK(falling(200) == 4095);
    CHECK(falling(500) == 2047);
    CHECK(falling(4095) == 0);
    CHECK(CM_LUT3(500, 200, 4095, 0, static_cast<uint32_t>(-6988), 10) == 2048);

    // Equal levels take the rising branch; x is read as signed.
    CHECK(CM_LUT3(20, 10, 5, 5, static_cast<uint32_t>(-1), 0) == -5);
    CHECK(CM_LUT3_CLIP(20, 10, 5, 5, -1, 0) == -5);
    CHECK(CM_LUT3(0xFFFFFFFF, 10, 5, 100, 1, 0) == 5);
    CHECK(CM_LUT3_CLIP(0xFFFFFFFF, 10, 5, 100, 1, 0) == 5);
}

TEST_CASE("curves: any arguments, against exact arithmetic") {
    std::mt19937 random(1);
    for (int i = 0; i < 200000; i++) {
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

TEST_CASE("two-point interpolation") {
    CHECK(CM_SingleIntp(0, 4, 10, 20, 1) == 12);
    CHECK(CM_SingleIntp(0, 4, 20, 10, 1) == 18); // truncated toward zero: 20 + (-10 / 4)
    CHECK(CM_SingleIntp(4, 0, 20, 10, 1) == 13); // 20 + (-10 * -3) / -4
    CHECK(CM_SingleIntp(4, 0, 20, 10, -1) == 10);
    CHECK(CM_SingleIntp(0, 4, 10, 20, 9) == 20);
    CHECK(CM_SingleIntp(0, 4, 10, 20, -9) == 10);
    CHECK(CM_SingleIntp(3, 3, 10, 20, 4) == 10);

    // The product wraps: 65536 * 65536 is 0, 65536 * 32768 is the most negative number.
    CHECK(CM_SingleIntp(0, 131072, 7, 65543, 65536) == 7);
    CHECK(CM_SingleIntp(0, 131072, 7, 65543, 32768) == 7 - 16384);
    // x1 - x0 wraps to -1 and the product is the most negative number: no trap.
    CHECK(CM_SingleIntp(MIN, MAX, 0, MIN, MIN + 1) == MIN);
}
