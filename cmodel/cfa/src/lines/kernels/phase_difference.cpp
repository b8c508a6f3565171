#include "cmodel/cfa/src/lines/kernels/kernels.h"
#include "cmodel/cfa/src/lines/kernels/row_curve.h"

namespace cfa::CFA_ROWS {

namespace {

// Taps 1 -4 6 -4 1 over samples of +-8190; magnitude in units of 16, rounded, 0..4095. The sum is taken in
// units of 4, which fit 16 bits: the part a + 2 c + e that these cut counts for a negative sum, whose
// magnitude they would round up.
constexpr Sample fourth_difference(Sample a, Sample b, Sample c, Sample d, Sample e) {
    const Sample part = a + 2 * c + e;                // +-32760
    const Sample quarter = (part >> 2) + c - (b + d); // +-32760
    const Sample cut = -((part & 3) != 0);
    const Sample size = quarter < 0 ? cut - quarter : quarter;
    return least(4095, static_cast<Sample>(size + 2) >> 2);
}

} // namespace

CFA_KERNEL void first_difference_row(Sight<0> green_h, Sample *out, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const auto G = green_h.at(i);
        out[i] = G(0, -2) + G(0, -1) - G(0, 1) - G(0, 2);
    }
}

CFA_KERNEL void first_difference_column(FiveSamples green_v, Sample *out, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i)
        out[i] = green_v.at[0][i] + green_v.at[1][i] - green_v.at[3][i] - green_v.at[4][i];
}

CFA_KERNEL void phase_difference_weight(Sight<0> first_v, FiveSamples first_h, Curve curve, Sample *weight,
                                        int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const auto V = first_v.at(i);
        const Sample a = fourth_difference(V(0, -2), V(0, -1), V(0, 0), V(0, 1), V(0, 2));
        const Sample b = fourth_difference(first_h.at[0][i], first_h.at[1][i], first_h.at[2][i],
                                           first_h.at[3][i], first_h.at[4][i]);
        weight[i] = static_cast<Sample>(truncated_curve(norm2_u12(a, b), curve));
    }
}

} // namespace cfa::CFA_ROWS
