// Colour-difference variance: how much green minus another colour varies along the row and along the column.
#include <array>

#include "cmodel/cfa/src/kit/fixed_point.h"
#include "cmodel/cfa/src/kit/window.h"
#include "cmodel/cfa/src/planes.h"
#include "cmodel/cfa/src/stages.h"
#include "cmodel/common/color_id.h"

using namespace cfa;

namespace {

// |channel c - green| of a candidate picture.
FramePtr green_distance(const FRAME *raw, const FRAME *candidate, int c) {
    FramePtr diff = plane_like(raw, raw->type, 1, 12);
    for (int y = 0; y < height_of(raw); ++y)
        for (int x = 0; x < width_of(raw); ++x)
            sample(diff.get(), y, x) = magnitude(value(candidate, y, x, c) - value(candidate, y, x, 1));
    return diff;
}

// Five samples in a line, as differences or colours along the row or the column.
using Line = std::array<int32_t, 5>;

template <class W> Line row_of(const W &P) {
    return {P(0, -2), P(0, -1), P(0, 0), P(0, 1), P(0, 2)};
}
template <class W> Line column_of(const W &P) {
    return {P(-2, 0), P(-1, 0), P(0, 0), P(1, 0), P(2, 0)};
}

// Spread of the two colour differences along a line, and the steps of the two colours along it.
// Each pair is halved before it is added; the total is not. Scaled by 3925/1024.
int32_t variation(const Line &c_diff, const Line &a_diff, const Line &blue, const Line &red) {
    const int32_t sum_c = c_diff[0] + c_diff[1] + c_diff[2] + c_diff[3] + c_diff[4];
    const int32_t sum_a = a_diff[0] + a_diff[1] + a_diff[2] + a_diff[3] + a_diff[4];
    int32_t s = 0;
    for (int i = 0; i < 5; ++i) {
        s += (magnitude(sum_c - c_diff[i] * 5) + magnitude(sum_a - a_diff[i] * 5)) >> 1;
        if (i < 4)
            s += (magnitude(blue[i] - blue[i + 1]) + magnitude(red[i] - red[i + 1])) >> 1;
    }
    return clip_sig((s * 3925) >> 10);
}

} // namespace

void cfa_CalVarOfColorDiffAtG(const FRAME *raw, const FRAME *GH, const FRAME *GV, FRAME *SigH, FRAME *SigV,
                              uint32_t bayer_id) {
    const int width = width_of(raw);
    const int height = height_of(raw);
    const FramePtr AHDiff = green_distance(raw, GH, 2);
    const FramePtr AVDiff = green_distance(raw, GV, 2);
    const FramePtr CHDiff = green_distance(raw, GH, 0);
    const FramePtr CVDiff = green_distance(raw, GV, 0);

    Window<0, 2> ah(AHDiff.get()), ch(CHDiff.get()), gh_red(GH, 0), gh_blue(GH, 2);
    Window<2, 0> av(AVDiff.get()), cv(CVDiff.get()), gv_red(GV, 0), gv_blue(GV, 2);
    const auto each = [&](auto &&act) {
        act(ah), act(ch), act(gh_red), act(gh_blue);
        act(av), act(cv), act(gv_red), act(gv_blue);
    };
    for (int y = 0; y < height; ++y) {
        each([y](auto &window) { window.move_to(y); });
        for (int x = 0; x < width; ++x) {
            const uint32_t code = CM_GET_COLOR_ID(y, x, bayer_id);
            if (code != CODE_GB && code != CODE_GR)
                continue;
            each([x](auto &window) { window.centre_on(x); });
            sample(SigH, y, x) = variation(row_of(ch), row_of(ah), row_of(gh_blue), row_of(gh_red));
            sample(SigV, y, x) =
                variation(column_of(cv), column_of(av), column_of(gv_blue), column_of(gv_red));
        }
    }
    write_debug_image("SigH", SigH);
    write_debug_image("SigV", SigV);
    publish_plane("AHDiff", AHDiff.get());
    publish_plane("AVDiff", AVDiff.get());
    publish_plane("CHDiff", CHDiff.get());
    publish_plane("CVDiff", CVDiff.get());
}
