#include "cmodel/cfa/src/lines/kernels.h"

namespace {

constexpr Sample most(Sample a, Sample b, Sample c, Sample d) {
    return largest(largest(a, b), largest(c, d));
}
constexpr Sample fewest(Sample a, Sample b, Sample c, Sample d) {
    return least(least(a, b), least(c, d));
}

} // namespace

CFA_KERNEL void largest_of_21(Sight<2> raw, Sample *out, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; i++) {
        const auto P = raw.at(i);
        const Sample left2 = largest(largest(P(-1, -2), P(0, -2)), P(1, -2));
        const Sample left = largest(most(P(-2, -1), P(-1, -1), P(0, -1), P(1, -1)), P(2, -1));
        const Sample centre = largest(most(P(-2, 0), P(-1, 0), P(0, 0), P(1, 0)), P(2, 0));
        const Sample right = largest(most(P(-2, 1), P(-1, 1), P(0, 1), P(1, 1)), P(2, 1));
        const Sample right2 = largest(largest(P(-1, 2), P(0, 2)), P(1, 2));
        out[i] = largest(most(left2, left, right, right2), centre);
    }
}

// The sample groups are those of the prediction stage: plus, diagonal, cross and knight; rows and columns of
// six.
CFA_KERNEL void extremes_at_red_blue(Sight<2> raw, Extremes own, Extremes green, Extremes diagonal, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; i++) {
        const auto P = raw.at(i);
        own.max[i] = largest(most(P(-2, 0), P(0, -2), P(0, 2), P(2, 0)), P(0, 0));
        own.min[i] = least(fewest(P(-2, 0), P(0, -2), P(0, 2), P(2, 0)), P(0, 0));
        diagonal.max[i] = most(P(-1, -1), P(-1, 1), P(1, -1), P(1, 1));
        diagonal.min[i] = fewest(P(-1, -1), P(-1, 1), P(1, -1), P(1, 1));
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

CFA_KERNEL void extremes_at_green(Sight<2> raw, Extremes along_row, Extremes green, Extremes along_column,
                                  int n) {
    CFA_LOOP
    for (Index i = 0; i < n; i++) {
        const auto P = raw.at(i);
        const Sample plus_max = largest(most(P(-2, 0), P(0, -2), P(0, 2), P(2, 0)), P(0, 0));
        const Sample plus_min = least(fewest(P(-2, 0), P(0, -2), P(0, 2), P(2, 0)), P(0, 0));
        green.max[i] = largest(plus_max, most(P(-1, -1), P(-1, 1), P(1, -1), P(1, 1)));
        green.min[i] = least(plus_min, fewest(P(-1, -1), P(-1, 1), P(1, -1), P(1, 1)));
        along_row.max[i] = largest(most(P(-2, -1), P(-2, 1), P(2, -1), P(2, 1)), largest(P(0, -1), P(0, 1)));
        along_row.min[i] = least(fewest(P(-2, -1), P(-2, 1), P(2, -1), P(2, 1)), least(P(0, -1), P(0, 1)));
        along_column.max[i] =
            largest(most(P(-1, -2), P(1, -2), P(-1, 2), P(1, 2)), largest(P(-1, 0), P(1, 0)));
        along_column.min[i] = least(fewest(P(-1, -2), P(1, -2), P(-1, 2), P(1, 2)), least(P(-1, 0), P(1, 0)));
    }
}
