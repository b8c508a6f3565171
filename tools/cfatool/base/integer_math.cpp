// Series, tables and sums behind the charts.
#include "tools/cfatool/base/integer_math.h"

#include <array>
#include <cstdlib>

namespace cfatool {
namespace {

constexpr int64_t HALF_PI_Q30 = 1686629713; // pi / 2 x 2^30

/// sin(k / steps x pi / 2) in Q30: x - x^3/3! + x^5/5! - ... until the terms vanish.
constexpr int64_t quarter_sine_q30(int64_t k, int64_t steps) {
    const int64_t x = HALF_PI_Q30 * k / steps;
    int64_t term = x;
    int64_t sum = x;
    for (int n = 2; n <= 16; n += 2) {
        term = -((term * x >> 30) * x >> 30) / (n * (n + 1));
        sum += term;
    }
    return sum;
}

constexpr int STEPS = 1024; // of a quarter turn

constexpr auto SINE_TABLE = [] {
    std::array<int32_t, STEPS + 1> table{};
    for (int k = 0; k <= STEPS; ++k)
        table[k] = static_cast<int32_t>((quarter_sine_q30(k, STEPS) + (1 << 14)) >> 15);
    return table;
}();
static_assert(SINE_TABLE[0] == 0 && SINE_TABLE[STEPS] == 32768);

/// A phase of any quarter as one of the first (0..2^30) and a sign.
struct FirstQuarter {
    uint32_t phase;
    int sign;
};

FirstQuarter first_quarter(uint32_t phase) {
    const uint32_t within = phase % QUARTER_TURN;
    const uint32_t quarter = phase / QUARTER_TURN;
    return {quarter % 2 == 0 ? within : QUARTER_TURN - within, quarter < 2 ? 1 : -1};
}

} // namespace

int64_t sine_q30(uint32_t phase) {
    const FirstQuarter q = first_quarter(phase);
    return q.sign * quarter_sine_q30(q.phase / 2, QUARTER_TURN / 2);
}

int32_t sine(uint32_t phase) {
    const FirstQuarter q = first_quarter(phase);
    const uint32_t step = q.phase >> 20;
    if (step == STEPS)
        return q.sign * SINE_TABLE[STEPS];
    const auto part = static_cast<int32_t>(q.phase >> 4 & 0xFFFF);
    return q.sign * static_cast<int32_t>(mix(SINE_TABLE[step], SINE_TABLE[step + 1], part));
}

uint32_t phase_of_degrees(int64_t thousandths) {
    return static_cast<uint32_t>(floor_div(thousandths * (int64_t{1} << 32), 360000));
}

uint32_t direction(int64_t dx, int64_t dy) {
    const int64_t ax = std::abs(dx);
    const int64_t ay = std::abs(dy);
    if (ax + ay == 0)
        return 0;
    const int64_t z = std::min(ax, ay) * 65536 / std::max(ax, ay);
    // atan(z) is about z (pi/4 + 0.273 (1 - z)); in turns z (0.125 + 0.04345 (1 - z)).
    int64_t turn = z * (8192 + ((65536 - z) * 2848 >> 16)); // 2^32 is one turn
    if (ay > ax)
        turn = QUARTER_TURN - turn;
    if (dx < 0)
        turn = 2 * int64_t{QUARTER_TURN} - turn;
    return static_cast<uint32_t>(dy < 0 ? -turn : turn);
}

int64_t integer_sqrt(int64_t x) {
    int64_t root = 0;
    for (int64_t bit = int64_t{1} << 30; bit > 0; bit >>= 1)
        if ((root + bit) * (root + bit) <= x)
            root += bit;
    return root;
}

int64_t gaussian_noise(uint64_t seed, uint64_t counter, int64_t sigma_thousandths) {
    int64_t sum = -393210; // twelve times the mean, 32767.5
    for (uint64_t i = 0; i < 3; ++i)
        for (uint64_t bits = random_bits(seed, 3 * counter + i), n = 0; n < 4; ++n, bits >>= 16)
            sum += static_cast<int64_t>(bits & 0xFFFF);
    return floor_div(sum * sigma_thousandths + 32768000, 65536000); // 65536 is the deviation of the sum
}

} // namespace cfatool
