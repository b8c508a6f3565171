// Colour-moire removal: red and blue are pulled toward green by the combined weight of the statistics.
#include <algorithm>

#include "cmodel/cfa/src/kit/fixed_point.h"
#include "cmodel/cfa/src/kit/in_force.h"
#include "cmodel/cfa/src/kit/window.h"
#include "cmodel/cfa/src/planes.h"
#include "cmodel/cfa/src/stages.h"

using namespace cfa;

namespace {

// 3 x 3 binomial low-pass, rounded.
FramePtr smoothed(const FRAME *cdist_wt) {
    FramePtr out = plane_like(cdist_wt, FRAME_TYPE_IMG, 1, 16);
    Window<1> P(cdist_wt);
    for (int y = 0; y < height_of(cdist_wt); ++y) {
        P.move_to(y);
        for (int x = 0; x < width_of(cdist_wt); ++x) {
            P.centre_on(x);
            sample(out.get(), y, x) = (binomial3x3(P) + 8) >> 4;
        }
    }
    return out;
}

// Maximum over 3 rows by 7 columns, at least 0.
FramePtr widened(const FRAME *edge_wt) {
    FramePtr out = plane_like(edge_wt, FRAME_TYPE_IMG, 1, 16);
    Window<1, 3> P(edge_wt);
    for (int y = 0; y < height_of(edge_wt); ++y) {
        P.move_to(y);
        for (int x = 0; x < width_of(edge_wt); ++x) {
            P.centre_on(x);
            int32_t largest = 0;
            for (int dy = -1; dy <= 1; ++dy)
                for (int dx = -3; dx <= 3; ++dx)
                    largest = std::max(largest, P(dy, dx));
            sample(out.get(), y, x) = largest;
        }
    }
    return out;
}

// Where the phase difference signals moire, the widened edge weight takes over from the pixel's own; then a
// horizontal 1-2-1 low-pass, rounded.
FramePtr smoothed_mix(const FRAME *pd_wt, const FRAME *edge_wt, const FRAME *edge_max) {
    FramePtr mix = plane_like(pd_wt, FRAME_TYPE_IMG, 1, 16);
    FramePtr out = plane_like(pd_wt, FRAME_TYPE_IMG, 1, 16);
    Window<0, 1> P(mix.get()); // looks only along rows that are complete
    for (int y = 0; y < height_of(pd_wt); ++y) {
        for (int x = 0; x < width_of(pd_wt); ++x) {
            const int32_t pd = value(pd_wt, y, x);
            sample(mix.get(), y, x) = (value(edge_max, y, x) * pd + (4095 - pd) * value(edge_wt, y, x)) >> 12;
        }
        P.move_to(y);
        for (int x = 0; x < width_of(pd_wt); ++x) {
            P.centre_on(x);
            sample(out.get(), y, x) = (P(0, -1) + 2 * P(0, 0) + P(0, 1) + 2) >> 2;
        }
    }
    return out;
}

// Colour c pulled toward green by weight w (Q12) at a strength of 256ths. Kept: 256 is not reachable.
int32_t pulled(int32_t c, int32_t green, int32_t w, int32_t strength) {
    const int32_t full = c + (((green - c) * w) >> 12);
    return clip12(c + (((full - c) * strength + 128) >> 8));
}

} // namespace

void cfa_DeColorMoire(const FRAME *in_rgb, FRAME *out_rgb, const FRAME *pd_wt, const FRAME *cdist_wt,
                      const FRAME *edge_wt) {
    const int32_t strength = registers().reg_cfa_cmoire_strth;
    if (registers().reg_cfa_cmoire_enable != 1) {
        copy_to_dst(in_rgb, out_rgb);
        return;
    }
    const FramePtr cdist = smoothed(cdist_wt);
    const FramePtr edge_max = widened(edge_wt);
    const FramePtr mix = smoothed_mix(pd_wt, edge_wt, edge_max.get());

    for (int y = 0; y < height_of(in_rgb); ++y) {
        for (int x = 0; x < width_of(in_rgb); ++x) {
            const int32_t w = (value(mix.get(), y, x) * value(cdist.get(), y, x)) >> 12;
            const int32_t green = value(in_rgb, y, x, 1);
            sample(out_rgb, y, x, 0) = pulled(value(in_rgb, y, x, 0), green, w, strength);
            sample(out_rgb, y, x, 1) = clip12(green);
            sample(out_rgb, y, x, 2) = pulled(value(in_rgb, y, x, 2), green, w, strength);
        }
    }
    write_debug_image("pd_wt", pd_wt);
    write_debug_image("cdist_wt", cdist_wt);
    write_debug_image("edge_wt", edge_wt);
}
