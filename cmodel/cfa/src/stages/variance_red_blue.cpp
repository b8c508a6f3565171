// Colour-difference variance at red and blue sites.
#include "cmodel/cfa/src/kit/fixed_point.h"
#include "cmodel/cfa/src/kit/window.h"
#include "cmodel/cfa/src/planes.h"
#include "cmodel/cfa/src/stages.h"
#include "cmodel/common/color_id.h"

using namespace cfa;

namespace {

// Bilinear estimate of the colour `own` (code 0 or 3) at every pixel; sites of codes beyond 3 stay 0.
// Kept: sums are divided, not shifted, so that negative ones are truncated toward zero.
FramePtr bilinear(const FRAME *raw, uint32_t own, uint32_t bayer_id) {
    FramePtr estimate = plane_like(raw, raw->type, 1, 12);
    const uint32_t beside_own = own == CODE_B ? CODE_GB : CODE_GR; // the green of the rows of that colour
    const uint32_t below_own = own == CODE_B ? CODE_GR : CODE_GB;
    Window<1> P(raw);
    for (int y = 0; y < height_of(raw); ++y) {
        P.move_to(y);
        for (int x = 0; x < width_of(raw); ++x) {
            P.centre_on(x);
            const uint32_t code = CM_GET_COLOR_ID(y, x, bayer_id);
            uint32_t &out = sample(estimate.get(), y, x);
            if (code == own)
                out = P(0, 0);
            else if (code == beside_own)
                out = (P(0, -1) + P(0, 1)) / 2;
            else if (code == below_own)
                out = (P(-1, 0) + P(1, 0)) / 2;
            else if (code <= CODE_R)
                out = (P(-1, -1) + P(-1, 1) + P(1, -1) + P(1, 1)) / 4;
        }
    }
    return estimate;
}

// |green of a candidate picture - estimate|: depends on the position alone, filled once for all windows.
void fill_difference(const FRAME *candidate, const FRAME *estimate, FRAME *diff) {
    for (int y = 0; y < height_of(estimate); ++y)
        for (int x = 0; x < width_of(estimate); ++x)
            sample(diff, y, x) = magnitude(value(candidate, y, x, 1) - value(estimate, y, x));
}

// The weights of the 5 x 5 window. The horizontal measure takes rows of it, the vertical one columns of its
// transpose: a centre line of weights 1 4 8 4 1 and, two lines off, three samples of weight 1.
constexpr int32_t CENTRE_WEIGHT[5] = {1, 4, 8, 4, 1};

// Five samples of the line, in its order, at distance `off` across it. D(along, across) reads a difference.
template <class D> int32_t centre_line(const D &diff) {
    int32_t sum = 0;
    for (int k = -2; k <= 2; ++k)
        sum += diff(k, 0);
    int32_t spread = 0;
    for (int k = -2; k <= 2; ++k)
        spread += CENTRE_WEIGHT[k + 2] * magnitude(sum - diff(k, 0) * 5);
    return spread;
}

template <class D> int32_t outer_line(const D &diff, int across) {
    const int32_t sum = diff(-1, across) + diff(0, across) + diff(1, across);
    int32_t spread = 0;
    for (int k = -1; k <= 1; ++k)
        spread += magnitude(sum - diff(k, across) * 3);
    return spread;
}

template <class D> int32_t measure(const D &diff) {
    return clip_sig(outer_line(diff, -2) + centre_line(diff) + outer_line(diff, 2));
}

} // namespace

void cfa_CalVarOfColorDiffAtRB(const FRAME *raw, const FRAME *GH, const FRAME *GV, FRAME *Diff0H,
                               FRAME *Diff0V, FRAME *Diff3H, FRAME *Diff3V, FRAME *SigH, FRAME *SigV,
                               uint32_t bayer_id) {
    const int width = width_of(raw);
    const int height = height_of(raw);
    const FramePtr Plane0 = bilinear(raw, CODE_B, bayer_id);
    const FramePtr Plane3 = bilinear(raw, CODE_R, bayer_id);
    fill_difference(GH, Plane0.get(), Diff0H);
    fill_difference(GV, Plane0.get(), Diff0V);
    fill_difference(GH, Plane3.get(), Diff3H);
    fill_difference(GV, Plane3.get(), Diff3V);

    Window<2> d0h(Diff0H), d0v(Diff0V), d3h(Diff3H), d3v(Diff3V);
    for (int y = 0; y < height; ++y) {
        for (Window<2> *window : {&d0h, &d0v, &d3h, &d3v})
            window->move_to(y);
        for (int x = 0; x < width; ++x) {
            const uint32_t code = CM_GET_COLOR_ID(y, x, bayer_id);
            if (code != CODE_B && code != CODE_R)
                continue;
            // Kept: the code of the centre chooses the difference for every position of the window.
            Window<2> &dh = code == CODE_B ? d0h : d3h;
            Window<2> &dv = code == CODE_B ? d0v : d3v;
            dh.centre_on(x);
            dv.centre_on(x);
            sample(SigH, y, x) = measure([&dh](int along, int across) { return dh(across, along); });
            sample(SigV, y, x) = measure([&dv](int along, int across) { return dv(along, across); });
        }
    }
    give_plane("SigH", SigH);
    give_plane("SigV", SigV);
}
