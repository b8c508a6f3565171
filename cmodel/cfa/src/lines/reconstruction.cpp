#include "cmodel/cfa/src/lines/kernels.h"
#include "cmodel/cfa/src/lines/reciprocal.h"

CFA_KERNEL void blend_weights(const int32_t *sig_h, const int32_t *sig_v, BlendWeights out, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; i++) {
        const int32_t sig_max = largest32(sig_h[i], sig_v[i]);
        const int32_t m = sig_max >> 10;
        const int32_t coarse = sig_max >= 16384 ? 2 : 0;                 // in steps of 128 instead of 32
        const int32_t h = largest32(1, ((sig_v[i] - m) >> 5) >> coarse); // up to 1023
        const int32_t v = largest32(1, ((sig_h[i] - m) >> 5) >> coarse);
        out.h[i] = static_cast<Sample>(h);
        out.v[i] = static_cast<Sample>(v);
        out.inverse[i] = reciprocal(h + v);
    }
}

// Weights up to 1023 and a reciprocal of their sum: the products stay below 2^31 for 12-bit candidates.
CFA_KERNEL void choose(const Sample *h, const Sample *v, const Sample *direction, BlendWeights weights,
                       Sample *out, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; i++) {
        const int32_t sum = weights.h[i] * h[i] + weights.v[i] * v[i];
        const Sample blend = static_cast<Sample>(limited12((sum * weights.inverse[i]) >> 15));
        const Sample horizontal = -(direction[i] > 0);
        const Sample vertical = -(direction[i] < 0);
        out[i] = (h[i] & horizontal) | (v[i] & vertical) | (blend & ~(horizontal | vertical));
    }
}

CFA_KERNEL void limit_to_neighbourhood(Sight<1> raw, Sample *color, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; i++) {
        const auto P = raw.at(i);
        const Sample above_max = largest(largest(P(-1, -1), P(-1, 0)), P(-1, 1));
        const Sample above_min = least(least(P(-1, -1), P(-1, 0)), P(-1, 1));
        const Sample row_max = largest(largest(P(0, -1), P(0, 0)), P(0, 1));
        const Sample row_min = least(least(P(0, -1), P(0, 0)), P(0, 1));
        const Sample below_max = largest(largest(P(1, -1), P(1, 0)), P(1, 1));
        const Sample below_min = least(least(P(1, -1), P(1, 0)), P(1, 1));
        const Sample hi = largest(row_max, largest(above_max, below_max));
        const Sample lo = least(row_min, least(above_min, below_min));
        color[i] = least(hi, largest(lo, color[i]));
    }
}
