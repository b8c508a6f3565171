#include "cmodel/cfa/src/lines/kernels/kernels.h"

namespace cfa::CFA_ROWS {

namespace {

constexpr Sample most(Sample a, Sample b, Sample c, Sample d) {
    return largest(largest(a, b), largest(c, d));
}
constexpr Sample fewest(Sample a, Sample b, Sample c, Sample d) {
    return least(least(a, b), least(c, d));
}

} // namespace

CFA_KERNEL void largest_of_columns(FiveSamples raw, Sample *of_three, Sample *of_five, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const Sample three = largest(raw.at[2][i], largest(raw.at[1][i], raw.at[3][i]));
        of_three[i] = three;
        of_five[i] = largest(three, largest(raw.at[0][i], raw.at[4][i]));
    }
}

CFA_KERNEL void largest_of_window(FiveSamples of_three, FiveSamples of_five, Sample *out, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const Sample inner = largest(of_five.at[2][i], largest(of_five.at[1][i], of_five.at[3][i]));
        out[i] = largest(inner, largest(of_three.at[0][i], of_three.at[4][i]));
    }
}

// The sample groups are those of the prediction stage: plus, diagonal, cross and
// knight; rows and columns of six.
CFA_KERNEL void green_extremes_at_red_blue(Sight<2> raw, Extremes green, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const auto P = raw.at(i);
        const Sample cross_max = most(P(0, -1), P(0, 1), P(-1, 0), P(1, 0));
        const Sample cross_min = fewest(P(0, -1), P(0, 1), P(-1, 0), P(1, 0));
        const Sample side_max = most(P(-1, -2), P(-1, 2), P(1, -2), P(1, 2));
        const Sample side_min = fewest(P(-1, -2), P(-1, 2), P(1, -2), P(1, 2));
        const Sample end_max = most(P(-2, -1), P(-2, 1), P(2, -1), P(2, 1));
        const Sample end_min = fewest(P(-2, -1), P(-2, 1), P(2, -1), P(2, 1));
        green.max[i] = largest(cross_max, largest(side_max, end_max));
        green.min[i] = least(cross_min, least(side_min, end_min));
    }
}

CFA_KERNEL void green_extremes_at_green(Sight<2> raw, Extremes green, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const auto P = raw.at(i);
        const Sample plus_max = largest(most(P(-2, 0), P(0, -2), P(0, 2), P(2, 0)), P(0, 0));
        const Sample plus_min = least(fewest(P(-2, 0), P(0, -2), P(0, 2), P(2, 0)), P(0, 0));
        green.max[i] = largest(plus_max, most(P(-1, -1), P(-1, 1), P(1, -1), P(1, 1)));
        green.min[i] = least(plus_min, fewest(P(-1, -1), P(-1, 1), P(1, -1), P(1, 1)));
    }
}

CFA_KERNEL void color_extremes_at_red_blue(Sight<2> raw, Extremes own, Extremes diagonal, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const auto P = raw.at(i);
        own.max[i] = largest(most(P(-2, 0), P(0, -2), P(0, 2), P(2, 0)), P(0, 0));
        own.min[i] = least(fewest(P(-2, 0), P(0, -2), P(0, 2), P(2, 0)), P(0, 0));
        diagonal.max[i] = most(P(-1, -1), P(-1, 1), P(1, -1), P(1, 1));
        diagonal.min[i] = fewest(P(-1, -1), P(-1, 1), P(1, -1), P(1, 1));
    }
}

CFA_KERNEL void color_extremes_at_green(Sight<2> raw, Extremes along_row, Extremes along_column, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const auto P = raw.at(i);
        along_row.max[i] = largest(most(P(-2, -1), P(-2, 1), P(2, -1), P(2, 1)), largest(P(0, -1), P(0, 1)));
        along_row.min[i] = least(fewest(P(-2, -1), P(-2, 1), P(2, -1), P(2, 1)), least(P(0, -1), P(0, 1)));
        along_column.max[i] =
            largest(most(P(-1, -2), P(1, -2), P(-1, 2), P(1, 2)), largest(P(-1, 0), P(1, 0)));
        along_column.min[i] = least(fewest(P(-1, -2), P(1, -2), P(-1, 2), P(1, 2)), least(P(-1, 0), P(1, 0)));
    }
}

} // namespace cfa::CFA_ROWS
