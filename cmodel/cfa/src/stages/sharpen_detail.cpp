// The lumas and details that the sharpen gain is made of.
#include <algorithm>

#include "cmodel/cfa/src/kit/fixed_point.h"
#include "cmodel/cfa/src/kit/in_force.h"
#include "cmodel/cfa/src/kit/window.h"
#include "cmodel/cfa/src/planes.h"
#include "cmodel/cfa/src/stages.h"

using namespace cfa;

namespace {

void subtract(const FRAME *a, const FRAME *b, FRAME *out) {
    for (int y = 0; y < height_of(out); ++y)
        for (int x = 0; x < width_of(out); ++x)
            sample(out, y, x) = value(a, y, x) - value(b, y, x);
}

} // namespace

void sg_get_bayer_luma(const FRAME *raw, FRAME *out) {
    gen_dst_dc(raw, out); // the binomial mixes the four colours of the mosaic into a luma
    publish_plane("bayer_luma", out);
}

void sg_get_bayer_luma_lpf(const FRAME *bayer_luma, FRAME *out) {
    gen_dst_dc(bayer_luma, out);
    publish_plane("lpf", out);
}

void sg_get_rgb_luma(const FRAME *rgb, FRAME *out) {
    for (int y = 0; y < height_of(out); ++y)
        for (int x = 0; x < width_of(out); ++x)
            sample(out, y, x) =
                std::min(4095, (value(rgb, y, x, 2) + 2 * value(rgb, y, x, 1) + value(rgb, y, x, 0)) >> 2);
    publish_plane("rgb_luma", out);
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
    const int32_t enable = registers().reg_cfa_shpn_pre_proc_enable;
    Window<1> P(in);
    for (int y = 0; y < height_of(out); ++y) {
        P.move_to(y);
        for (int x = 0; x < width_of(out); ++x) {
            P.centre_on(x);
            const int32_t block[9] = {P(-1, -1), P(-1, 0), P(-1, 1), P(0, -1), P(0, 0),
                                      P(0, 1),   P(1, -1), P(1, 0),  P(1, 1)};
            const int32_t limited = std::min(std::max(P(0, 0), sg_SelMin(block)), sg_SelMax(block));
            sample(out, y, x) = enable == 1 ? limited : P(0, 0);
        }
    }
    publish_plane("spike_removed", out);
}

void sg_get_dalta_HF(const FRAME *rgb_luma, const FRAME *spike_removed, FRAME *out) {
    subtract(rgb_luma, spike_removed, out);
    publish_plane("HF", out);
}

void sg_get_delta_MF(const FRAME *spike_removed, const FRAME *lpf, FRAME *out) {
    subtract(spike_removed, lpf, out);
    publish_plane("MF", out);
}
