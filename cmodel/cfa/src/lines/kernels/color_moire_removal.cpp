#include "cmodel/cfa/src/lines/kernels/kernels.h"
#include "cmodel/cfa/src/lines/kernels/products.h"

namespace cfa::CFA_ROWS {

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
        out[i] = largest_wide(0, largest(P(0, 0), largest(left, right)));
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
        const Sum binomial = row_above + 2 * row + row_below + 8; // up to 65528
        const Sample distance_weight = binomial >> 4;
        weight[i] = weighted_q12(mixed >> 2, distance_weight);
    }
}

CFA_KERNEL void remove_color_moire(const Sample *green, const Sample *weight, Sample strength, Sample *color,
                                   int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const Sample away = green[i] - color[i]; // +-4095
        const Sample full = weighted_q12(away, weight[i]);
        color[i] = limited12(static_cast<Sample>(color[i] + weighted_q8(full, strength)));
    }
}

} // namespace cfa::CFA_ROWS
