#include "cmodel/cfa/src/lines/kernels/kernels.h"
#include "cmodel/cfa/src/lines/kernels/reciprocal.h"
#include "cmodel/cfa/src/lines/kernels/row_curve.h"

namespace cfa::CFA_ROWS {

namespace {

constexpr Sample HUE_CIRCLE = 2880;

// Hue of a 12-bit colour in eighths of a degree. On a tie for the maximum green goes before blue before red.
inline Sample hue(Sample r, Sample g, Sample b) {
    const Sample mx = largest(r, largest(g, b));
    const Sample mn = least(r, least(g, b));
    const Sample is_green = -(mx == g);
    const Sample is_blue = -(mx == b);
    const Sample difference = select_by(is_green, b - r, select_by(is_blue, r - g, g - b));
    const Sample below_red = select_by(-(g >= b), 0, 360 << 3);
    const Sample base = select_by(is_green, 120 << 3, select_by(is_blue, 240 << 3, below_red));
    const int32_t angle = (difference * 60 * reciprocal(mx - mn)) >> 12;
    return select_by(-(mx == mn), 0, static_cast<Sample>(base + angle));
}

CFA_KERNEL void hues(const Sample *red, const Sample *green, const Sample *blue, Sample *out, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i)
        out[i] = hue(red[i], green[i], blue[i]);
}

CFA_KERNEL void distance_weight(const Sample *red, const Sample *green, const Sample *blue, const Sample *hue,
                                ColorDistanceSettings s, Sample *weight, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const Sample saturation = norm2_u12(distance(red[i], green[i]), distance(blue[i], green[i]));
        const int32_t saturation_weight = truncated_curve(saturation, s.saturation);

        const Sample h = hue[i];
        Sample nearest = 4095;
        const auto protect = [&](int k) {
            const Sample straight = distance(h, s.protected_hue[k]);
            const Sample around =
                least(straight, HUE_CIRCLE - straight); // negative for a hue beyond the circle
            nearest = least(nearest, around | s.out_of_reach[k]);
        };
        protect(0);
        protect(1);
        protect(2);
        weight[i] = static_cast<Sample>((saturation_weight * truncated_curve(nearest, s.hue)) >> 12);
    }
}

} // namespace

void color_distance_weight(const Sample *red, const Sample *green, const Sample *blue,
                           ColorDistanceSettings s, Sample *weight, int n) {
    for_each_block(n, [&](Index first, int count) {
        Sample hue[BLOCK];
        hues(red + first, green + first, blue + first, hue, count);
        distance_weight(red + first, green + first, blue + first, hue, s, weight + first, count);
    });
}

namespace {

// Twice the two diagonal responses of one prediction. The kernel's nine groups of samples that share a
// coefficient are k0 (centre), k3 and k6, which the anti-diagonal kernel shares, and the pairs k1/k5, k2/k8,
// k4/k7, which it swaps. With the sum and the difference of such a pair,  2 (a g + b h) = (a + b)(g + h) + (a
// - b)(g - h), swapping a and b turns only the sign of the second product: nine products serve both kernels.
// On wide rows the sums may wrap, and a doubled sum would have lost its top bit: there twelve products, those
// of the pairs as  a g + b h = b (g + h) + (a - b) g,  swapped  b (g + h) + (a - b) h.
struct Diagonals {
    int32_t rising, falling; // magnitudes, up to 2^30 - 2^24

    Diagonals(const Sight<2>::Site &P, const DirectionalKernels &k) {
        const Sample g1 = P(-1, -1) + P(1, 1);
        const Sample g5 = P(-1, 1) + P(1, -1);
        const Sample g2 = P(-2, -2) + P(2, 2);
        const Sample g8 = P(-2, 2) + P(2, -2);
        const Sample g4 = P(-2, -1) + P(-1, -2) + P(1, 2) + P(2, 1);
        const Sample g7 = P(-2, 1) + P(-1, 2) + P(1, -2) + P(2, -1);
        const Sample g3 = P(-1, 0) + P(0, -1) + P(0, 1) + P(1, 0);
        const Sample g6 = P(-2, 0) + P(0, -2) + P(0, 2) + P(2, 0);
        if constexpr (WIDE) {
            const int32_t both = k.c0 * P(0, 0) + k.c3 * g3 + k.c6 * g6 + k.c5 * (g1 + g5) +
                                 k.c8 * (g2 + g8) + k.c7 * (g4 + g7);
            rising = magnitude(both + k.difference15 * g1 + k.difference28 * g2 + k.difference47 * g4);
            falling = magnitude(both + k.difference15 * g5 + k.difference28 * g8 + k.difference47 * g7);
            return;
        }
        const int32_t even = times(k.twice0, P(0, 0)) + times(k.twice3, g3) + times(k.twice6, g6) +
                             times(k.sum15, g1 + g5) + times(k.sum28, g2 + g8) + times(k.sum47, g4 + g7);
        const int32_t odd =
            times(k.difference15, g1 - g5) + times(k.difference28, g2 - g8) + times(k.difference47, g4 - g7);
        rising = magnitude(even + odd);
        falling = magnitude(even - odd);
    }

    static constexpr int32_t times(Sample coefficient, Sample sum) { return int32_t{coefficient} * sum; }
};

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

} // namespace

CFA_KERNEL void sum_of_five(FiveSamples green, Sample *sum, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i)
        sum[i] = green.at[0][i] + green.at[1][i] + green.at[2][i] + green.at[3][i] + green.at[4][i];
}

CFA_KERNEL void directional_spread(Sight<2> green_h, Sight<2> green_v, FiveSamples columns, FiveSamples rows,
                                   DirectionalKernels kernels, Sample *spread, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const auto H = green_h.at(i);
        const auto V = green_v.at(i);
        const int32_t s0 = five_taps(kernels, columns, i);
        const int32_t s90 = five_taps(kernels, rows, i);
        const Diagonals h(H, kernels);
        const Diagonals v(V, kernels);

        const Sample e0 = response(magnitude(s0) >> 12);
        const Sample e90 = response(magnitude(s90) >> 12);
        const Sample e45 = response((v.rising + h.rising) >> (WIDE ? 13 : 14));
        const Sample e135 = response((v.falling + h.falling) >> (WIDE ? 13 : 14));
        const Sample sum = e45 + e135 + e0 + e90;
        const Sample mean = sum >> 2;
        spread[i] = gap(e45, mean) + gap(e135, mean) + gap(e0, mean) + gap(e90, mean);
    }
}

namespace {

CFA_KERNEL void luma_gain(const Sample *green, int32_t target, Sample *gain, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const int32_t raised = limited12((target * reciprocal(green[i]) + 16) >> 5);
        gain[i] = static_cast<Sample>(largest32(1024, raised)); // Q10
    }
}

CFA_KERNEL void gained_weight(const Sample *spread, const Sample *gain, Curve edge, Sample *weight, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const int32_t gained = limited12((spread[i] * gain[i] + 512) >> 10);
        weight[i] = static_cast<Sample>(truncated_curve(gained, edge));
    }
}

} // namespace

void edge_spread_weight(const Sample *spread, const Sample *green, EdgeWeightSettings s, Sample *weight,
                        int n) {
    for_each_block(n, [&](Index first, int count) {
        Sample gain[BLOCK];
        luma_gain(green + first, s.luma_target, gain, count);
        gained_weight(spread + first, gain, s.edge, weight + first, count);
    });
}

} // namespace cfa::CFA_ROWS
