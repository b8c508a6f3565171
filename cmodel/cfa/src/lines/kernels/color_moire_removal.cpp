#include "cmodel/cfa/src/lines/kernels/kernels.h"

namespace cfa {

CFA_KERNEL void largest_of_three(const Sample *above, const Sample *row, const Sample *below, Sample *out,
                                 int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i)
        out[i] = largest(row[i], largest(above[i], below[i]));
}

CFA_KERNEL void largest_of_seven(Sight<0> row, Sample *out, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const auto P = row.at(i);
        const Sample left = largest(largest(P(0, -3), P(0, -2)), P(0, -1));
        const Sample right = largest(largest(P(0, 1), P(0, 2)), P(0, 3));
        out[i] = largest(P(0, 0), largest(left, right));
    }
}

// Weights up to 4095: the mix is below 4095, the sum below 2^24.
CFA_KERNEL void mix_edges(const Sample *widened, const Sample *edge, const Sample *phase, Sample *mix,
                          int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const int32_t sum = widened[i] * phase[i] + (4095 - phase[i]) * edge[i];
        mix[i] = static_cast<Sample>(sum >> 12);
    }
}

CFA_KERNEL void removal_weight(Sight<0> mix, Sight<1> color_distance, Sample *weight, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const auto M = mix.at(i);
        const auto P = color_distance.at(i);
        const Sample mixed = M(0, -1) + 2 * M(0, 0) + M(0, 1) + 2;
        const Sample row_above = P(-1, -1) + 2 * P(-1, 0) + P(-1, 1);
        const Sample row = P(0, -1) + 2 * P(0, 0) + P(0, 1);
        const Sample row_below = P(1, -1) + 2 * P(1, 0) + P(1, 1);
        const uint16_t binomial = row_above + 2 * row + row_below + 8; // up to 65528
        const Sample distance_weight = binomial >> 4;
        // Two weights up to 4095, shifted by 3 and 1: the upper half is their product >> 12.
        weight[i] = upper_half((mixed >> 2) << 3, distance_weight << 1);
    }
}

CFA_KERNEL void remove_color_moire(const Sample *green, const Sample *weight, Sample strength, Sample *color,
                                   int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const Sample away = green[i] - color[i];                   // +-4095
        const Sample full = upper_half(away << 3, weight[i] << 1); // (away * weight) >> 12, toward green
        // (full * strength + 128) >> 8: the half is the top bit of the lower half of the product.
        const Sample part = upper_half(full << 3, strength << 5);
        const uint16_t lower = static_cast<uint16_t>((full << 3) * (strength << 5));
        color[i] = limited12(static_cast<Sample>(color[i] + part + (lower >> 15)));
    }
}

} // namespace cfa
