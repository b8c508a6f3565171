#include "tools/cfatool/base/integer_math.h"

#include <cmath>
#include <doctest/doctest.h>

using namespace cfatool;

namespace {

constexpr double TURN = 4294967296.0;

} // namespace

TEST_CASE("sines agree with the mathematics library") {
    double worst = 0, worst_q30 = 0;
    for (uint64_t i = 0; i < 100000; ++i) {
        const auto phase = static_cast<uint32_t>(i * 4295071873u); // spread over the turn
        const double expected = std::sin(phase / TURN * 2 * M_PI);
        worst = std::max(worst, std::abs(sine(phase) / 32768.0 - expected));
        worst_q30 = std::max(worst_q30, std::abs(double(sine_q30(phase)) / 1073741824.0 - expected));
    }
    CHECK(worst < 1.5 / 32768); // the table rounds, the interpolation cuts off
    CHECK(worst_q30 < 2e-8);
    for (uint32_t quarter = 0; quarter < 4; ++quarter)
        CHECK(sine(quarter * QUARTER_TURN) == 32768 * (quarter % 2) * (quarter == 3 ? -1 : 1));
}

TEST_CASE("directions agree with the mathematics library in all octants") {
    for (int i = 0; i < 360; ++i) {
        const double angle = i * M_PI / 180;
        const auto dx = static_cast<int64_t>(10000 * std::cos(angle));
        const auto dy = static_cast<int64_t>(10000 * std::sin(angle));
        const auto error =
            static_cast<int32_t>(direction(dx, dy) - static_cast<uint32_t>(int64_t(i / 360.0 * TURN)));
        CHECK_MESSAGE(std::abs(error) < TURN / 1500, i, " degrees");
    }
    CHECK(direction(0, 0) == 0);
}

TEST_CASE("square roots are rounded down, quotients toward minus infinity") {
    for (const int64_t x : {0L, 1L, 2L, 3L, 4L, 99L, 100L, (1L << 40) - 1, 1L << 40, (1L << 62) - 1}) {
        const int64_t r = integer_sqrt(x);
        CHECK((r * r <= x && (r + 1) * (r + 1) > x));
    }
    CHECK(floor_div(-1, 4) == -1);
    CHECK(floor_div(-4, 4) == -1);
}
