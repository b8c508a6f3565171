#include "cmodel/cfa/src/lines/kernels/kernels.h"

namespace cfa {

CFA_KERNEL void binomial_3x3(Sight<1> rows, Sample *out, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const auto P = rows.at(i);
        const Sample above = P(-1, -1) + 2 * P(-1, 0) + P(-1, 1);
        const Sample row = P(0, -1) + 2 * P(0, 0) + P(0, 1);
        const Sample below = P(1, -1) + 2 * P(1, 0) + P(1, 1);
        const uint16_t sum = above + 2 * row + below; // up to 65520
        out[i] = static_cast<Sample>(sum >> 4);
    }
}

} // namespace cfa
