#include "cmodel/common/curve.h"

#include <doctest/doctest.h>

#include <limits>

namespace {

constexpr int32_t MIN = std::numeric_limits<int32_t>::min();
constexpr int32_t MAX = std::numeric_limits<int32_t>::max();

} // namespace

TEST_CASE("curves: knee, slope, limits, wraps; rounded and truncated") {
    const int32_t cases[][8] = {
        // x, x0, y0, y1, slope, shift, rounded, truncated
        {10, 10, 7, 100, 3, 1, 7, 7},
        {11, 10, 0, 100, 3, 1, 2, 1},
        {13, 10, 7, 100, 3, 0, 16, 16},
        {4000, 10, 0, 100, 3, 1, 100, 100},
        {13, 10, 7, -5, -9, 3, 4, 3},               // floor(-27 / 8 + half), floor(-27 / 8)
        {500, 200, 4095, 0, -6988, 10, 2048, 2047}, // 4095 + floor(-2096400 / 1024)
        {4095, 200, 4095, 0, -6988, 10, 0, 0},
        {20, 10, 5, 5, -1, 0, -5, -5},                        // equal levels take the rising branch
        {20, 10, 5, 100, -1, 0, -5, -5},                      // a slope against its levels leaves their range
        {-1, 10, 5, 100, 1, 0, 5, 5},                         // x is signed
        {65536, 0, 9, 100, 65536, 4, 9, 9},                   // the product wraps to 0,
        {65537, 1, 9, -MAX, 32768, 16, 9 - 32768, 9 - 32768}, // to the most negative number,
        {MAX, MIN, 0, 100, -3, 31, 0, 0},                     // x - x0 to -1
        {1, 0, MAX, MAX, 5, 0, MIN + 4, MIN + 4},             // the sum too
        {2, 1, 0, 9, MAX, 31, -1, 0},                         // and the half
    };
    for (const auto &c : cases) {
        INFO("x ", c[0], " x0 ", c[1], " slope ", c[4]);
        CHECK(CM_LUT3(static_cast<uint32_t>(c[0]), c[1], static_cast<uint32_t>(c[2]), c[3],
                      static_cast<uint32_t>(c[4]), static_cast<uint32_t>(c[5])) == c[6]);
        CHECK(CM_LUT3_CLIP(static_cast<uint32_t>(c[0]), c[1], c[2], c[3], c[4],
                           static_cast<uint32_t>(c[5])) == c[7]);
    }
}

TEST_CASE("two-point interpolation") {
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
}
