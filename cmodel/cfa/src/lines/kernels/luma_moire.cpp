#include "cmodel/cfa/src/lines/kernels/kernels.h"
#include "cmodel/cfa/src/lines/kernels/products.h"
#include "cmodel/cfa/src/lines/kernels/row_curve.h"

namespace cfa::CFA_ROWS {

CFA_KERNEL void sum_of_steps(FiveSamples green, Sample *sum, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i)
        sum[i] = distance(green.at[0][i], green.at[1][i]) + distance(green.at[1][i], green.at[2][i]) +
                 distance(green.at[2][i], green.at[3][i]) + distance(green.at[3][i], green.at[4][i]);
}

CFA_KERNEL void gradient_sum(FiveSamples columns, FiveSamples rows, int32_t *out, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const Sum columns_4 = columns.at[0][i] + columns.at[1][i] + columns.at[2][i] + columns.at[3][i];
        const Sum rows_4 = rows.at[0][i] + rows.at[1][i] + rows.at[2][i] + rows.at[3][i]; // up to 65520
        const int32_t vertical = int32_t{columns_4} + columns.at[4][i];
        const int32_t horizontal = int32_t{rows_4} + rows.at[4][i];
        out[i] = largest32(vertical, horizontal);
    }
}

namespace {

// 256 times the gradient over the green range, 0..255.
CFA_KERNEL void gradient_ratio(Range green, const int32_t *gradient, int32_t noise, Sample *ratio, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        // 24 bits over 17: the quotient is exact in a float as far as 256, where it is cut.
        const int32_t den = largest32(20 * (green.at(i) + noise), 1);
        const float quotient = static_cast<float>(gradient[i] << 8) / static_cast<float>(den);
        const float limited = quotient < 255.0f ? quotient : 255.0f;
        const int32_t whole = static_cast<int32_t>(limited);
        // On wide rows the float of a quotient just below a whole number may be that number.
        ratio[i] = static_cast<Sample>(WIDE ? whole - (whole * den > gradient[i] << 8) : whole);
    }
}

// Of green alone, or of the colour with the largest range, 0..255.
CFA_KERNEL void detail_of_green(Range green, Sample *detail, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i)
        detail[i] = least(green.at(i) >> 4, 255);
}
CFA_KERNEL void detail_of_all(Range red, Range green, Range blue, Sample *detail, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i)
        detail[i] = least(largest(green.at(i), largest(red.at(i), blue.at(i))) >> 4, 255);
}

CFA_KERNEL void weight_of(const Sample *detail, const Sample *ratio, LumaMoireSettings s, Sample *weight,
                          int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const int32_t w1 = rounded_curve(detail[i], s.detail);
        const int32_t w2 = rounded_curve(ratio[i], s.edge);
        weight[i] = static_cast<Sample>(least32(rounded_curve((w1 * w2) >> 8, s.output), 255));
    }
}

CFA_KERNEL void through_curve(Curve curve, Sample *v, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i)
        v[i] = static_cast<Sample>(least32(rounded_curve(v[i], curve), 255));
}

// What the two curves are read at, for `count` sites from `first` on.
void detail_and_ratio(const ThreeRanges &ranges, const int32_t *gradient, const LumaMoireSettings &s,
                      Index first, int count, Sample *detail, Sample *ratio) {
    const Range green = ranges.of[1].from(first);
    if (s.all_colors)
        detail_of_all(ranges.of[0].from(first), green, ranges.of[2].from(first), detail, count);
    else
        detail_of_green(green, detail, count);
    gradient_ratio(green, gradient + first, s.noise, ratio, count);
}

} // namespace

void luma_moire_weight(ThreeRanges ranges, const int32_t *gradient, LumaMoireSettings s, Sample *weight,
                       int n) {
    for_each_block(n, [&](Index first, int count) {
        Sample detail[BLOCK], ratio[BLOCK];
        detail_and_ratio(ranges, gradient, s, first, count, detail, ratio);
        weight_of(detail, ratio, s, weight + first, count);
    });
}

void luma_moire_factors(ThreeRanges ranges, const int32_t *gradient, LumaMoireSettings s, Sample *detail,
                        Sample *edge, int n) {
    detail_and_ratio(ranges, gradient, s, 0, n, detail, edge);
    through_curve(s.detail, detail, n);
    through_curve(s.edge, edge, n);
}

CFA_KERNEL void average_luma(const Sample *red, const Sample *green, const Sample *blue, Sample *luma,
                             int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const Sample sum = red[i] + 2 * green[i] + blue[i] + 2;
        luma[i] = sum >> 2;
    }
}

CFA_KERNEL void remove_luma_moire(Sight<0> color, const Sample *average, const Sample *luma,
                                  const Sample *weight, LumaMoireSettings s, Sample *out, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const auto C = color.at(i);
        const Sample c = C(0, 0);
        const Sample sum = C(0, 1) + 2 * c + C(0, -1) + 2;
        const Sample h = sum >> 2;
        const Sample m = blend_q8(luma[i], h, s.lpf_w);
        const Sample t = blend_q8(m, average[i], s.dc_w);
        out[i] = limited12(blend_q8(c, t, weight[i]));
    }
}

} // namespace cfa::CFA_ROWS
