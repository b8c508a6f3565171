// The lumas and details that the sharpen gain is made of.
#include <algorithm>

#include "cmodel/cfa/src/kit/debug_image.h"
#include "cmodel/cfa/src/kit/fixed_point.h"
#include "cmodel/cfa/src/kit/window.h"
#include "cmodel/cfa/src/reg_parse/cfa_reg.h"
#include "cmodel/cfa/src/stages.h"
#include "cmodel/common/ppm.h"

namespace {

void subtract(const FRAME *a, const FRAME *b, FRAME *out) {
    for (int y = 0; y < static_cast<int>(out->height); y++)
        for (int x = 0; x < static_cast<int>(out->width); x++)
            sample(out, y, x) = value(a, y, x) - value(b, y, x);
}

void write_plane(const FRAME *plane, const char *name) {
    if (dump_dbg_img)
        CM_WritePPM5(debug_path_of(name).c_str(), plane);
}

} // namespace

void sg_get_bayer_luma(const FRAME *raw, FRAME *out) {
    gen_dst_dc(raw, out); // the binomial mixes the four colours of the mosaic into a luma
    write_plane(out, "dbg_sg_bayer_luma.ppm");
}

void sg_get_bayer_luma_lpf(const FRAME *bayer_luma, FRAME *out) {
    gen_dst_dc(bayer_luma, out);
    write_plane(out, "dbg_sg_bayer_luma_lpf.ppm");
}

void sg_get_rgb_luma(const FRAME *rgb, FRAME *out) {
    for (int y = 0; y < static_cast<int>(out->height); y++)
        for (int x = 0; x < static_cast<int>(out->width); x++)
            sample(out, y, x) =
                std::min(4095, (value(rgb, y, x, 2) + 2 * value(rgb, y, x, 1) + value(rgb, y, x, 0)) >> 2);
    write_plane(out, "dbg_sg_rgb_luma.ppm");
}

int32_t sg_SelMin(const int32_t block[9]) {
    int32_t least = block[0];
    for (int i : {1, 2, 3, 5, 6, 7, 8})
        least = std::min(least, block[i]);
    return least;
}

int32_t sg_SelMax(const int32_t block[9]) {
    int32_t largest = block[0];
    for (int i : {1, 2, 3, 5, 6, 7, 8})
        largest = std::max(largest, block[i]);
    return largest;
}

void sg_preprocess(const FRAME *in, FRAME *out) {
    const int32_t enable = cfa_reg.hw.reg_cfa_shpn_pre_proc_enable;
    Window<1> P(in);
    for (int y = 0; y < static_cast<int>(out->height); y++) {
        P.move_to(y);
        for (int x = 0; x < static_cast<int>(out->width); x++) {
            P.at(x);
            const int32_t block[9] = {P(-1, -1), P(-1, 0), P(-1, 1), P(0, -1), P(0, 0),
                                      P(0, 1),   P(1, -1), P(1, 0),  P(1, 1)};
            const int32_t limited = std::min(std::max(P(0, 0), sg_SelMin(block)), sg_SelMax(block));
            sample(out, y, x) = enable == 1 ? limited : P(0, 0);
        }
    }
    write_plane(out, "dbg_sg_spike_remove.ppm");
}

void sg_get_dalta_HF(const FRAME *rgb_luma, const FRAME *spike_removed, FRAME *out) {
    subtract(rgb_luma, spike_removed, out);
    if (dump_dbg_img)
        dump_signed_map(out, debug_path_of("dbg_sg_dalta_HF_4x_8b.ppm"));
}

void sg_get_delta_MF(const FRAME *spike_removed, const FRAME *lpf, FRAME *out) {
    subtract(spike_removed, lpf, out);
    if (dump_dbg_img)
        dump_signed_map(out, debug_path_of("dbg_sg_dalta_MF_4x_8b.ppm"));
}
