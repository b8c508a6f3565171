#include "cmodel/cfa/src/lines/kernels/kernels.h"
#include "cmodel/cfa/src/lines/kernels/products.h"
#include "cmodel/cfa/src/lines/kernels/reciprocal.h"

namespace cfa::CFA_ROWS {

namespace {

// What lies within the threshold is noise.
constexpr Sample cored(Sample v, Sample threshold) {
    const Sample size = distance(v, 0);
    const Sample beyond = largest(static_cast<Sample>(size - threshold), 0);
    return v < 0 ? -beyond : beyond;
}

// The centre, where the mask is all ones limited to the range of its eight neighbours.
constexpr Sample without_spike(const Sight<1>::Site &P, Sample mask) {
    const Sample above_max = largest(largest(P(-1, -1), P(-1, 0)), P(-1, 1));
    const Sample above_min = least(least(P(-1, -1), P(-1, 0)), P(-1, 1));
    const Sample below_max = largest(largest(P(1, -1), P(1, 0)), P(1, 1));
    const Sample below_min = least(least(P(1, -1), P(1, 0)), P(1, 1));
    const Sample max = largest(largest(above_max, below_max), largest(P(0, -1), P(0, 1)));
    const Sample min = least(least(above_min, below_min), least(P(0, -1), P(0, 1)));
    const Sample limited = least(largest(P(0, 0), min), max);
    return static_cast<Sample>((limited & mask) | (P(0, 0) & ~mask));
}

} // namespace

CFA_KERNEL void sharpen_detail(Sight<1> bayer_luma, const Sample *red, const Sample *green,
                               const Sample *blue, SharpenSettings s, Sample *detail, Sample *luma, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const auto P = bayer_luma.at(i);
        const Sample rgb_sum = red[i] + 2 * green[i] + blue[i];
        const Sample rgb_luma = least_wide(4095, rgb_sum >> 2);

        const Sample above = P(-1, -1) + 2 * P(-1, 0) + P(-1, 1);
        const Sample row = P(0, -1) + 2 * P(0, 0) + P(0, 1);
        const Sample below = P(1, -1) + 2 * P(1, 0) + P(1, 1);
        const Sum sum = above + 2 * row + below;
        const Sample low_passed = static_cast<Sample>(sum >> 4);

        const Sample spike_removed = without_spike(P, s.remove_spikes);
        const int32_t mf = cored(spike_removed - low_passed, s.threshold_mf) * s.weight_mf;
        const int32_t hf = cored(rgb_luma - spike_removed, s.threshold_hf) * s.weight_hf;
        const int32_t both = mf + hf;
        const Sample size = static_cast<Sample>(least32(magnitude(both) >> 7, 4095));
        detail[i] = both < 0 ? -size : size;
        luma[i] = rgb_luma;
    }
}

namespace {

CFA_KERNEL void inverse_luma(const Sample *luma, int32_t min_y, int32_t *inverse, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i)
        inverse[i] = reciprocal(largest32(luma[i], min_y));
}

CFA_KERNEL void gain_of(const Sample *detail, const int32_t *inverse, SharpenSettings s, Sample *gain,
                        int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const int32_t g = limited12(((detail[i] * inverse[i]) >> 5) + 1024); // Q10
        gain[i] = static_cast<Sample>(least32(largest32(g, s.min_gain), s.max_gain));
    }
}

} // namespace

void sharpen_gain(const Sample *detail, const Sample *luma, SharpenSettings s, Sample *gain, int n) {
    for_each_block(n, [&](Index first, int count) {
        int32_t inverse[BLOCK];
        inverse_luma(luma + first, s.min_y, inverse, count);
        gain_of(detail + first, inverse, s, gain + first, count);
    });
}

CFA_KERNEL void add_detail(const Sample *detail, SharpenSettings s, Sample *color, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const Sample size = scaled_q5(distance(detail[i], 0), s.gain); // at least 0: shifts as it divides
        const Sample enough = WIDE ? size : least(size, 4095);         // no u12 colour changes by more
        const Sample change = detail[i] < 0 ? -enough : enough;
        color[i] = limited12(static_cast<Sample>(color[i] + change));
    }
}

CFA_KERNEL void remove_spikes(Sight<1> bayer_luma, SharpenSettings s, Sample *out, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i)
        out[i] = without_spike(bayer_luma.at(i), s.remove_spikes);
}

CFA_KERNEL void difference(const Sample *a, const Sample *b, Sample *out, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i)
        out[i] = a[i] - b[i];
}

} // namespace cfa::CFA_ROWS
