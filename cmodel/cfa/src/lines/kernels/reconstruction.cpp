#include "cmodel/cfa/src/lines/kernels/kernels.h"
#include "cmodel/cfa/src/lines/kernels/reciprocal.h"

namespace cfa::CFA_ROWS {

CFA_KERNEL void blend_weights(const int32_t *sig_h, const int32_t *sig_v, BlendWeights out, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const int32_t sig_max = largest32(sig_h[i], sig_v[i]);
        const int32_t m = sig_max >> 10;
        const bool coarse = sig_max >= 16384; // in steps of 128 instead of 32
        const int32_t step_h = select32(coarse, (sig_v[i] - m) >> 7, (sig_v[i] - m) >> 5);
        const int32_t step_v = select32(coarse, (sig_h[i] - m) >> 7, (sig_h[i] - m) >> 5);
        const int32_t h = largest32(1, step_h); // up to 1023
        const int32_t v = largest32(1, step_v);
        out.h[i] = static_cast<Sample>(h);
        out.v[i] = static_cast<Sample>(v);
        out.inverse[i] = reciprocal_below_2048(h + v); // 2..2046
    }
}

namespace {

// Weights up to 1023 and the reciprocal of their sum, w * get_inv(w) below 2^16: the product of candidates
// u16 with both fits 32 unsigned bits.
inline Sample chosen(Sample h, Sample v, Sample direction, Sample weight_h, Sample weight_v,
                     int32_t inverse) {
    const int32_t sum = weight_h * h + weight_v * v;
    const uint32_t product = static_cast<uint32_t>(sum) * static_cast<uint32_t>(inverse);
    const Sample blend = static_cast<Sample>(least32(4095, static_cast<int32_t>(product >> 15)));
    const Sample horizontal = -(direction > 0);
    const Sample vertical = -(direction < 0);
    return select_by(horizontal, h, select_by(vertical, v, blend));
}

} // namespace

CFA_KERNEL void choose(const Sample *h, const Sample *v, const Sample *direction, BlendWeights w, Sample *out,
                       int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i)
        out[i] = chosen(h[i], v[i], direction[i], w.h[i], w.v[i], w.inverse[i]);
}

CFA_KERNEL void choose_within(const Sample *h, const Sample *v, const Sample *direction, BlendWeights w,
                              const Sample *low, const Sample *high, Sample *out, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const Sample c = chosen(h[i], v[i], direction[i], w.h[i], w.v[i], w.inverse[i]);
        out[i] = least(high[i], largest(low[i], c));
    }
}

CFA_KERNEL void neighbourhood_range(Sight<1> raw, Sample *low, Sample *high, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const auto P = raw.at(i);
        const Sample above_max = largest(largest(P(-1, -1), P(-1, 0)), P(-1, 1));
        const Sample above_min = least(least(P(-1, -1), P(-1, 0)), P(-1, 1));
        const Sample row_max = largest(largest(P(0, -1), P(0, 0)), P(0, 1));
        const Sample row_min = least(least(P(0, -1), P(0, 0)), P(0, 1));
        const Sample below_max = largest(largest(P(1, -1), P(1, 0)), P(1, 1));
        const Sample below_min = least(least(P(1, -1), P(1, 0)), P(1, 1));
        high[i] = largest(row_max, largest(above_max, below_max));
        low[i] = least(row_min, least(above_min, below_min));
    }
}

} // namespace cfa::CFA_ROWS
