#include <cmath>

#include <doctest/doctest.h>

#include "cmodel/cfa/src/kit/fixed_point.h"

using namespace cfa;

TEST_CASE("lut_intp: square root by table") {
    // Roots of breakpoints, rounded; 8 and 24 lie half-way between two, where the line is truncated.
    // clang-format off
    const int32_t rows[][2] = {
        {0, 0}, {16, 4}, {32, 6}, {60, 8}, {76, 9}, {92, 10}, {112, 11}, {136, 12}, {604, 25}, {704, 27},
        {14524, 121}, {15256, 124}, {63760, 253}, {98304, 314}, {229376, 479}, {360448, 600},
        {264306688, 16258}, {1052803072, 32447}, {8, 2}, {24, 5}, {1073709056, 0}, {1073709057, 32767},
        {INT32_MAX, 32767}, {-5, 0}};
    // clang-format on
    for (const auto &row : rows)
        CHECK_MESSAGE(lut_intp(row[0]) == row[1], row[0]);
    for (int32_t x = 60; x < 264306688; x += x / 97 + 1) // between breakpoints a little less
        REQUIRE_MESSAGE(std::abs(lut_intp(x) - std::sqrt(x)) < 1.0 + std::sqrt(x) / 40, x);
    // In the last interval the product wraps: 320 * 15000000 - 2^32 = 505032704, over 20905984 is 24.
    CHECK(lut_intp(1052803072 + 15000000) == 32447 + 24);
}
