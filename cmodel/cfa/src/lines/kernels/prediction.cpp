#include "cmodel/cfa/src/lines/kernels/kernels.h"

namespace cfa::CFA_ROWS {

CFA_KERNEL void predict_green(Sight<2> raw, GreenPrediction out, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const auto P = raw.at(i);
        const Sample h_sum = P(0, -1) + P(0, 1) + 1;
        const Sample v_sum = P(-1, 0) + P(1, 0) + 1;
        const Sample h_second = 2 * P(0, 0) - P(0, -2) - P(0, 2); // +-8190
        const Sample v_second = 2 * P(0, 0) - P(-2, 0) - P(2, 0);
        const Sample h_lp = h_sum >> 1;
        const Sample v_lp = v_sum >> 1;
        const Sample h_hp = h_second >> 2;
        const Sample v_hp = v_second >> 2;
        const Sample h = limited12(static_cast<Sample>(h_lp + h_hp));
        const Sample v = limited12(static_cast<Sample>(v_lp + v_hp));
        out.h[i] = h;
        out.v[i] = v;
        out.diff_h[i] = P(0, 0) - h;
        out.diff_v[i] = P(0, 0) - v;
    }
}

CFA_KERNEL void predict_at_green(const Sample *raw, const Sample *diff_left, const Sample *diff_above,
                                 const Sample *diff_below, Sample *along_row, Sample *along_column, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const Sample row = diff_left[i] + diff_left[i + 1];
        const Sample column = diff_above[i] + diff_below[i];
        const Sample row_mean = row >> 1;
        const Sample column_mean = column >> 1;
        along_row[i] = limited12(static_cast<Sample>(raw[i] + row_mean));
        along_column[i] = limited12(static_cast<Sample>(raw[i] + column_mean));
    }
}

CFA_KERNEL void predict_at_red_blue(const Sample *green, const Sample *diff_left_above,
                                    const Sample *diff_left_below, Sample *other, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const Sample sum =
            diff_left_above[i] + diff_left_above[i + 1] + diff_left_below[i] + diff_left_below[i + 1];
        const Sample mean = sum >> 2;
        other[i] = limited12(static_cast<Sample>(green[i] + mean));
    }
}

} // namespace cfa::CFA_ROWS
