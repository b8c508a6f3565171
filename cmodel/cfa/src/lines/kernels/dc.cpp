#include "cmodel/cfa/src/lines/kernels/kernels.h"

namespace cfa::CFA_ROWS {

namespace {

constexpr Sample binomial(const Sight<1>::Site &P) {
    const Sample above = P(-1, -1) + 2 * P(-1, 0) + P(-1, 1);
    const Sample row = P(0, -1) + 2 * P(0, 0) + P(0, 1);
    const Sample below = P(1, -1) + 2 * P(1, 0) + P(1, 1);
    const Sum sum = above + 2 * row + below; // up to 65520
    return static_cast<Sample>(sum >> 4);
}

} // namespace

CFA_KERNEL void binomial_3x3(Sight<1> rows, Sample *out, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i)
        out[i] = binomial(rows.at(i));
}

CFA_KERNEL void binomial_3x3_u12(Sight<1> rows, Sample *out, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i)
        out[i] = least_wide(4095, binomial(rows.at(i)));
}

} // namespace cfa::CFA_ROWS
