#include "cmodel/cfa/src/lines/kernels/kernels.h"

namespace cfa::CFA_ROWS {

namespace {

// Kept: a product that has wrapped to a negative number is 0.
constexpr int32_t limited_sig(int32_t v) {
    return least32(131071, WIDE ? largest32(0, v) : v);
}

} // namespace

// Sums stay within 16 unsigned bits: five times the spread of five distances is at most 49140 for a pair of
// colours halved, the four steps at most 16380, together 65520.
CFA_KERNEL void variance_at_green(FiveSamples red, FiveSamples blue, FiveSamples red_d, FiveSamples blue_d,
                                  int32_t *sig, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const Sample red_sum =
            red_d.at[0][i] + red_d.at[1][i] + red_d.at[2][i] + red_d.at[3][i] + red_d.at[4][i];
        const Sample blue_sum =
            blue_d.at[0][i] + blue_d.at[1][i] + blue_d.at[2][i] + blue_d.at[3][i] + blue_d.at[4][i];
        const auto spread = [&](int k) {
            const Sample r = distance(red_sum, static_cast<Sample>(red_d.at[k][i] * 5));
            const Sample b = distance(blue_sum, static_cast<Sample>(blue_d.at[k][i] * 5));
            const Sum pair = r + b; // up to 32760
            return static_cast<Sum>(pair >> 1);
        };
        const auto step = [&](int k) {
            const Sample r = distance(red.at[k][i], red.at[k + 1][i]);
            const Sample b = distance(blue.at[k][i], blue.at[k + 1][i]);
            const Sample pair = r + b;
            return static_cast<Sum>(pair >> 1);
        };
        const Sum spreads = spread(0) + spread(1) + spread(2) + spread(3) + spread(4);
        const Sum steps = step(0) + step(1) + step(2) + step(3);
        const Sum sum = spreads + steps;
        sig[i] = limited_sig((int32_t{sum} * 3925) >> 10);
    }
}

CFA_KERNEL void distances(const Sample *a, const Sample *b, Sample *out, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i)
        out[i] = distance(a[i], b[i]);
}

CFA_KERNEL void distances_from_mean(const Sample *row, const Sample *before, const Sample *behind,
                                    Sample *out, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const Sample sum = before[i] + behind[i];
        out[i] = distance(row[i], sum >> 1);
    }
}

CFA_KERNEL void outer_spread(const Sample *before, const Sample *centre, const Sample *behind, Sample *out,
                             int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const Sample sum = before[i] + centre[i] + behind[i];
        const auto spread = [sum](Sample d) { return distance(sum, static_cast<Sample>(d * 3)); };
        out[i] = spread(before[i]) + spread(centre[i]) + spread(behind[i]);
    }
}

CFA_KERNEL void variance_at_red_blue(FiveSamples centre, const Sample *outer_before,
                                     const Sample *outer_behind, int32_t *sig, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const Sample sum =
            centre.at[0][i] + centre.at[1][i] + centre.at[2][i] + centre.at[3][i] + centre.at[4][i];
        const auto spread = [&](int k) { return distance(sum, static_cast<Sample>(centre.at[k][i] * 5)); };
        // Weights 1 4 8 4 1 on the centre line, 1 on the outer ones.
        const Sum ones = spread(0) + spread(4); // up to 32760
        const Sum fours = spread(1) + spread(3);
        const Sum outer = outer_before[i] + outer_behind[i];
        sig[i] = limited_sig(ones + 4 * int32_t{fours} + 8 * int32_t{spread(2)} + outer);
    }
}

} // namespace cfa::CFA_ROWS
