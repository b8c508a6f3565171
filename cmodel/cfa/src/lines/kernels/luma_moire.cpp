#include "cmodel/cfa/src/lines/kernels/kernels.h"
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
        const int32_t vertical = columns.at[0][i] + columns.at[1][i] + columns.at[2][i] + columns.at[3][i] +
                                 int32_t{columns.at[4][i]};
        const int32_t horizontal =
            rows.at[0][i] + rows.at[1][i] + rows.at[2][i] + rows.at[3][i] + int32_t{rows.at[4][i]};
        out[i] = largest32(vertical, horizontal);
    }
}

CFA_KERNEL void luma_moire_weight(ThreeRanges ranges, const int32_t *gradient, LumaMoireSettings s,
                                  Sample *weight, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const int32_t red = ranges.max[0][i] - ranges.min[0][i];
        const int32_t green = ranges.max[1][i] - ranges.min[1][i];
        const int32_t blue = ranges.max[2][i] - ranges.min[2][i];
        const int32_t detail = largest32(green, largest32(red, blue) & s.red_blue_mask);
        const int32_t w1 = rounded_curve(least32(detail >> 4, 255), s.detail);

        // 256 * gradient / den, 24 bits over 17: the quotient is exact in a float
        // as far as 256, where it is cut.
        const int32_t den = largest32(20 * (green + s.noise), 1);
        const float quotient = static_cast<float>(gradient[i] << 8) / static_cast<float>(den);
        const float limited = quotient < 255.0f ? quotient : 255.0f;
        const int32_t rounded = static_cast<int32_t>(limited);
        // The float of a quotient just below a whole number may be that number.
        const int32_t ratio = WIDE ? rounded - (rounded * den > gradient[i] << 8) : rounded;
        const int32_t w2 = rounded_curve(ratio, s.edge);

        weight[i] = static_cast<Sample>(least32(rounded_curve((w1 * w2) >> 8, s.output), 255));
    }
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
        const int32_t h = sum >> 2;
        const int32_t m = ((256 - s.lpf_w) * luma[i] + s.lpf_w * h + 128) >> 8;
        const int32_t t = ((256 - s.dc_w) * m + s.dc_w * average[i] + 128) >> 8;
        const int32_t w = weight[i];
        out[i] = static_cast<Sample>(limited12(((256 - w) * c + w * t + 128) >> 8));
    }
}

} // namespace cfa::CFA_ROWS
