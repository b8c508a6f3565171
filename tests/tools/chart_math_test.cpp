#include "tools/cfatool/chart_math.h"

#include <cmath>
#include <doctest/doctest.h>

using namespace cfatool;

namespace {

constexpr double TURN = 4294967296.0;

} // namespace

TEST_CASE("sines agree with the mathematics library") {
    double worst = 0;
    double worst_q30 = 0;
    for (uint64_t i = 0; i < 100000; ++i) {
        const auto phase = static_cast<uint32_t>(i * 4295071873u); // spread over the turn
        const double expected = std::sin(phase / TURN * 2 * M_PI);
        worst = std::max(worst, std::abs(sine(phase) / 32768.0 - expected));
        worst_q30 = std::max(worst_q30, std::abs(double(sine_q30(phase)) / 1073741824.0 - expected));
    }
    CHECK(worst < 1.5 / 32768); // the table rounds, the interpolation cuts off
    CHECK(worst_q30 < 2e-8);
    CHECK(sine(0) == 0);
    CHECK(sine(QUARTER_TURN) == 32768);
    CHECK(sine(2 * QUARTER_TURN) == 0);
    CHECK(sine(3 * QUARTER_TURN) == -32768);
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

TEST_CASE("integer helpers") {
    for (const int64_t x : {0L, 1L, 2L, 3L, 4L, 99L, 100L, (1L << 40) - 1, 1L << 40, (1L << 62) - 1}) {
        const int64_t r = integer_sqrt(x);
        CHECK(r * r <= x);
        CHECK((r + 1) * (r + 1) > x);
    }
    CHECK(floor_div(-1, 4) == -1);
    CHECK(floor_div(-4, 4) == -1);
    CHECK(floor_div(7, 4) == 1);
    CHECK(ramp(5, 0, 10) == 32768);
    CHECK(ramp(-5, 0, 10) == 0);
    CHECK(ramp(50, 0, 10) == 65536);
    CHECK(phase_of_degrees(90000) == QUARTER_TURN);
}

TEST_CASE("noise has the deviation asked for, no mean, and hardly any correlation with its neighbour") {
    constexpr int N = 200000;
    double sum = 0;
    double squares = 0;
    double products = 0;
    int64_t previous = 0;
    for (int i = 0; i < N; ++i) {
        const int64_t n = gaussian_noise(5, i, 20000);
        sum += double(n);
        squares += double(n * n);
        products += double(n * previous);
        previous = n;
    }
    CHECK(std::abs(sum / N) < 0.2);
    CHECK(std::sqrt(squares / N) == doctest::Approx(20).epsilon(0.01));
    CHECK(std::abs(products / N) < 3);
    CHECK(gaussian_noise(5, 77, 20000) != gaussian_noise(6, 77, 20000));
}
