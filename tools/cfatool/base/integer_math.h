// Integer mathematics of the charts: the same bits on every machine, no floating point.
#pragma once

#include <algorithm>
#include <cstdint>

namespace cfatool {

/// Angles and phases are uint32_t: 2^32 is one turn, so they wrap by themselves.
constexpr uint32_t QUARTER_TURN = 1u << 30;

/// Sine in Q30 by its series in integers (for set-up).
int64_t sine_q30(uint32_t phase);

/// Sine in Q15, -32768..32768, from a table of 1024 steps a quarter turn with linear interpolation (for
/// pixels).
int32_t sine(uint32_t phase);

/// An angle in thousandths of a degree as a phase.
uint32_t phase_of_degrees(int64_t thousandths);

/// Direction of (dx, dy) as a phase, from dx = positive x towards positive y; within 1/1500 turn.
uint32_t direction(int64_t dx, int64_t dy);

/// Largest r with r * r <= x. REQUIRES 0 <= x < 2^62.
int64_t integer_sqrt(int64_t x);

/// a / b rounded toward minus infinity. REQUIRES b > 0.
constexpr int64_t floor_div(int64_t a, int64_t b) {
    return a / b - (a % b < 0);
}

/// a at t = 0, b at t = 65536, linear between and beyond.
constexpr int64_t mix(int64_t a, int64_t b, int64_t t) {
    return a + ((b - a) * t >> 16);
}

/// 0 for x <= from, 65536 for x >= to, linear between. REQUIRES from < to.
constexpr int64_t ramp(int64_t x, int64_t from, int64_t to) {
    return std::clamp<int64_t>((x - from) * 65536 / (to - from), 0, 65536);
}

/// Random 64-bit number of a counter (splitmix64): every (seed, counter) has its own, whatever was drawn
/// before.
constexpr uint64_t random_bits(uint64_t seed, uint64_t counter) {
    uint64_t z = seed * 0xD1342543DE82EF95u + (counter + 1) * 0x9E3779B97F4A7C15u;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
    return z ^ (z >> 31);
}

/// Normally distributed noise of a counter: the sum of twelve uniform 16-bit numbers about its mean. Its
/// standard deviation is sigma / 1000; the result is rounded to nearest and lies within six sigma.
int64_t gaussian_noise(uint64_t seed, uint64_t counter, int64_t sigma_thousandths);

} // namespace cfatool
