// Luma moire: false fine texture near the sampling limit is pulled to a smoothed value by a per-pixel weight.
#include <algorithm>

#include "cmodel/cfa/src/kit/fixed_point.h"
#include "cmodel/cfa/src/kit/in_force.h"
#include "cmodel/cfa/src/kit/register_groups.h"
#include "cmodel/cfa/src/kit/window.h"
#include "cmodel/cfa/src/planes.h"
#include "cmodel/cfa/src/stages.h"
#include "cmodel/common/curve.h"

using namespace cfa;

namespace {

FramePtr low_passed(const FRAME *src) {
    FramePtr dst = plane_like(src, FRAME_TYPE_IMG, 3, 12);
    cfa_LpfFrame(src, dst.get());
    return dst;
}

int32_t weight_of(int32_t x, const CurveRegisters &c) {
    return CM_LUT3(x, c.x0, c.y0, c.y1, c.slope, 6);
}

// The larger of two sums of 20 absolute green differences over the 5 x 5 neighbourhood.
// Kept: vertical differences of the horizontal prediction, horizontal differences of the vertical one.
int32_t gradient_sum(const Window<2> &gh, const Window<2> &gv) {
    int32_t sum_v = 0;
    int32_t sum_h = 0;
    for (int step = -2; step <= 1; ++step) {
        for (int line = -2; line <= 2; ++line) {
            sum_v += magnitude(gh(step, line) - gh(step + 1, line));
            sum_h += magnitude(gv(line, step) - gv(line, step + 1));
        }
    }
    return std::max(sum_v, sum_h);
}

// One channel of a removed pixel: c the pixel, l and r its neighbours, a the average colour, luma its luma.
struct Removal {
    int32_t lpf_w = registers().reg_cfa_ymoire_lpf_w; // of 256: low-pass against the average luma
    int32_t dc_w = registers().reg_cfa_ymoire_dc_w;   // of 256: average colour against the low-passed value

    int32_t operator()(int32_t c, int32_t l, int32_t r, int32_t a, int32_t luma, int32_t w) const {
        const int32_t h = (r + 2 * c + l + 2) >> 2;
        const int32_t m = ((256 - lpf_w) * luma + lpf_w * h + 128) >> 8;
        const int32_t t = ((256 - dc_w) * m + dc_w * a + 128) >> 8;
        return clip12(((256 - w) * c + w * t + 128) >> 8);
    }
};

void remove(const FRAME *rgb, const FRAME *avg, const FRAME *weight, FRAME *out) {
    const int width = width_of(rgb);
    const int height = height_of(rgb);
    const Removal removed;
    // Kept: both bounds are inclusive; the extra row and column mirror back and write the same values again.
    for (int row = 0; row <= height; ++row) {
        const int y = mirror_index(row, height);
        for (int col = 0; col <= width; ++col) {
            const int x = mirror_index(col, width);
            const int left = mirror_index(x - 1, width);
            const int right = mirror_index(x + 1, width);
            const int32_t luma =
                (value(avg, y, x, 0) + 2 * value(avg, y, x, 1) + value(avg, y, x, 2) + 2) >> 2;
            for (int k = 0; k < 3; ++k)
                sample(out, y, x, k) =
                    removed(value(rgb, y, x, k), value(rgb, y, left, k), value(rgb, y, right, k),
                            value(avg, y, x, k), luma, value(weight, y, x));
        }
    }
}

} // namespace

void cfa_LpfFrame(const FRAME *src, FRAME *dst) {
    for (int k = 0; k < 3; ++k) {
        Window<1> P(src, k);
        for (int y = 0; y < height_of(src); ++y) {
            P.move_to(y);
            for (int x = 0; x < width_of(src); ++x) {
                P.centre_on(x);
                sample(dst, y, x, k) = binomial3x3(P) >> 4;
            }
        }
    }
}

int32_t cfa_CalYMoireWgt(const FRAME *gh, const FRAME *gv, const FRAME *max_lpf, const FRAME *min_lpf,
                         FRAME *wgt) {
    const int32_t green_only = registers().reg_cfa_ymoire_ref_maxg_only;
    const int32_t noise = registers().reg_cfa_ymoire_np;
    const LumaMoireCurves curves = luma_moire_curves();
    const FramePtr W1 = plane_like(wgt, wgt->type, 1, 8);
    const FramePtr W2 = plane_like(wgt, wgt->type, 1, 8);
    Window<2> GH(gh, 1), GV(gv, 1);

    for (int y = 0; y < height_of(wgt); ++y) {
        GH.move_to(y);
        GV.move_to(y);
        for (int x = 0; x < width_of(wgt); ++x) {
            GH.centre_on(x);
            GV.centre_on(x);
            const int32_t dr = value(max_lpf, y, x, 0) - value(min_lpf, y, x, 0);
            const int32_t dg = value(max_lpf, y, x, 1) - value(min_lpf, y, x, 1);
            const int32_t db = value(max_lpf, y, x, 2) - value(min_lpf, y, x, 2);
            const int32_t detail = green_only == 1 ? dg : std::max({dr, db, dg});
            const int32_t w1 = weight_of(std::min(detail >> 4, 255), curves.detail);

            // 256 times the mean gradient over the green range; the noise offset pads the range.
            const int32_t num = gradient_sum(GH, GV) << 8;
            const int32_t den = std::max(20 * (dg + noise), 1);
            const int32_t w2 = weight_of(std::min(num / den, 255), curves.edge);

            const int32_t w = weight_of((w1 * w2) >> 8, curves.output);
            sample(wgt, y, x) = std::min(w, 255); // Kept: never 256; a negative weight stays negative
            sample(W1.get(), y, x) = std::min(w1, 255);
            sample(W2.get(), y, x) = std::min(w2, 255);
        }
    }
    publish_plane("MoireWgt_W1", W1.get());
    publish_plane("MoireWgt_W2", W2.get());
    return 0;
}

void cfa_DeYMoire(const FRAME *rgb, const FRAME *avg, const FRAME *max_rgb, const FRAME *min_rgb,
                  const FRAME *gh, const FRAME *gv, FRAME *out) {
    if (registers().reg_cfa_ymoire_enable != 1) {
        copy_to_dst(rgb, out);
        return;
    }
    const FramePtr MaxRGB_lpf = low_passed(max_rgb);
    const FramePtr MinRGB_lpf = low_passed(min_rgb);
    const FramePtr MoireWgt = plane_like(rgb, rgb->type, 1, 8);
    publish_plane("MaxRGB_lpf", MaxRGB_lpf.get());
    publish_plane("MinRGB_lpf", MinRGB_lpf.get());
    cfa_CalYMoireWgt(gh, gv, MaxRGB_lpf.get(), MinRGB_lpf.get(), MoireWgt.get());
    publish_plane("MoireWgt", MoireWgt.get());

    remove(rgb, avg, MoireWgt.get(), out);
    write_debug_image("YMoire", out);
}
