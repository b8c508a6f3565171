#include "cmodel/cfa/src/lines/kernels/kernels.h"

namespace cfa::CFA_ROWS {

namespace {

// The two diagonal responses of one prediction, added up group by group of samples that share a coefficient.
// The groups 0, 3 and 6 have the same in both kernels; the pairs of groups 1/5, 2/8 and 4/7 swap theirs. With
// the sum and the difference of such a pair,  2 (a g + b h) = (a + b)(g + h) + (a - b)(g - h), swapping a and
// b turns only the sign of the second product. On narrow rows `x` and `y` add up the first and the second
// products: x + y and x - y are twice the responses. On wide rows the sums may wrap, and a doubled one would
// have lost its top bit: there x and y are the responses, and a pair is  b (g + h) + (a - b) g, swapped  b (g
// + h) + (a - b) h.
struct Diagonals {
    int32_t x = 0, y = 0;

    constexpr void add(Sample coefficient, Sample g) {
        const int32_t product = int32_t{coefficient} * g;
        x += product;
        y += WIDE ? product : 0;
    }
    constexpr void add(const SwappedPair &k, Sample g, Sample h) {
        const Sample sum = g + h;
        if constexpr (WIDE) {
            x += k.b * sum + k.difference * g;
            y += k.b * sum + k.difference * h;
        } else {
            const Sample difference = g - h;
            x += int32_t{k.sum} * sum;
            y += int32_t{k.difference} * difference;
        }
    }
    constexpr int32_t rising() const { return magnitude(WIDE ? x : x + y); } // narrow: up to 2^30 - 2^24
    constexpr int32_t falling() const { return magnitude(WIDE ? y : x - y); }
};

// The groups at an even distance from the centre, rows and columns counted together, and at an odd one.
constexpr void add_even(Diagonals &sum, const Sight<2>::Site &P, const DirectionalKernels &k) {
    sum.add(k.c0, P(0, 0));
    sum.add(k.c6, P(-2, 0) + P(0, -2) + P(0, 2) + P(2, 0));
    sum.add(k.c15, P(-1, -1) + P(1, 1), P(-1, 1) + P(1, -1));
    sum.add(k.c28, P(-2, -2) + P(2, 2), P(-2, 2) + P(2, -2));
}
constexpr void add_odd(Diagonals &sum, const Sight<2>::Site &P, const DirectionalKernels &k) {
    sum.add(k.c3, P(-1, 0) + P(0, -1) + P(0, 1) + P(1, 0));
    sum.add(k.c47, P(-2, -1) + P(-1, -2) + P(1, 2) + P(2, 1), P(-2, 1) + P(-1, 2) + P(1, -2) + P(2, -1));
}

// A magnitude limited to 12 bits. Kept: one that has wrapped to a negative number is 0.
constexpr Sample response(int32_t v) {
    return static_cast<Sample>(WIDE ? limited12(v) : least32(4095, v));
}

// Five taps over line sums of up to 20475. Pairs of sums are kept in 16 bits by taking off 20475, whose share
// the constant of the kernel puts back.
constexpr int32_t five_taps(const DirectionalKernels &k, const FiveSamples &sum, Index i) {
    if constexpr (WIDE)
        return k.line0 * sum.at[2][i] + k.line1 * (sum.at[1][i] + sum.at[3][i]) +
               k.line2 * (sum.at[0][i] + sum.at[4][i]);
    const uint16_t near = static_cast<uint16_t>(sum.at[1][i] + sum.at[3][i]);
    const uint16_t far = static_cast<uint16_t>(sum.at[0][i] + sum.at[4][i]);
    return int32_t{k.line0} * sum.at[2][i] + int32_t{k.line1} * static_cast<Sample>(near - 20475) +
           int32_t{k.line2} * static_cast<Sample>(far - 20475) + k.line_constant;
}

constexpr Sample spread_of(const Diagonals &h, const Diagonals &v, int32_t s0, int32_t s90) {
    const Sample e0 = response(magnitude(s0) >> 12);
    const Sample e90 = response(magnitude(s90) >> 12);
    const Sample e45 = response((v.rising() + h.rising()) >> (WIDE ? 13 : 14));
    const Sample e135 = response((v.falling() + h.falling()) >> (WIDE ? 13 : 14));
    const Sample sum = e45 + e135 + e0 + e90;
    const Sample mean = sum >> 2;
    return distance(e45, mean) + distance(e135, mean) + distance(e0, mean) + distance(e90, mean);
}

} // namespace

CFA_KERNEL void sum_of_five(FiveSamples green, Sample *sum, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i)
        sum[i] = green.at[0][i] + green.at[1][i] + green.at[2][i] + green.at[3][i] + green.at[4][i];
}

// At green sites both predictions are the mosaic: those groups are added up once.
CFA_KERNEL void directional_spread_at_red_blue(Sight<2> green_h, Sight<2> green_v, FiveSamples columns,
                                               FiveSamples rows, DirectionalKernels k, Sample *spread,
                                               int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        Diagonals h;
        add_odd(h, green_h.at(i), k);
        Diagonals v = h;
        add_even(h, green_h.at(i), k);
        add_even(v, green_v.at(i), k);
        spread[i] = spread_of(h, v, five_taps(k, columns, i), five_taps(k, rows, i));
    }
}

CFA_KERNEL void directional_spread_at_green(Sight<2> green_h, Sight<2> green_v, FiveSamples columns,
                                            FiveSamples rows, DirectionalKernels k, Sample *spread, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        Diagonals h;
        add_even(h, green_h.at(i), k);
        Diagonals v = h;
        add_odd(h, green_h.at(i), k);
        add_odd(v, green_v.at(i), k);
        spread[i] = spread_of(h, v, five_taps(k, columns, i), five_taps(k, rows, i));
    }
}

} // namespace cfa::CFA_ROWS
