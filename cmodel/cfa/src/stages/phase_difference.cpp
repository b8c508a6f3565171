// Colour moire shows as a residue at the Nyquist frequency on which the two green predictions disagree.
// First difference of each along its direction, fourth difference ACROSS it, magnitude through a curve.
#include "cmodel/cfa/src/kit/fixed_point.h"
#include "cmodel/cfa/src/kit/register_groups.h"
#include "cmodel/cfa/src/kit/window.h"
#include "cmodel/cfa/src/planes.h"
#include "cmodel/cfa/src/stages.h"
#include "cmodel/common/curve.h"

using namespace cfa;

namespace {

// Taps 1 1 0 -1 -1.
int32_t first_difference(int32_t a, int32_t b, int32_t d, int32_t e) {
    return a + b - d - e;
}

// Taps 1 -4 6 -4 1, magnitude in units of 16, rounded.
int32_t fourth_difference(int32_t a, int32_t b, int32_t c, int32_t d, int32_t e) {
    return clip12((magnitude(a - 4 * b + 6 * c - 4 * d + e) + 8) >> 4);
}

} // namespace

void cfa_CalPhaseDifference(const FRAME *raw, const FRAME *gh, const FRAME *gv, FRAME *pd_wt) {
    const CurveRegisters c = color_moire_curves().phase;
    const int width = width_of(raw);
    const int height = height_of(raw);
    const FramePtr H1 = plane_like(raw, FRAME_TYPE_IMG, 1, 16);
    const FramePtr V1 = plane_like(raw, FRAME_TYPE_IMG, 1, 16);

    Window<0, 2> GH(gh, 1);
    Window<2, 0> GV(gv, 1);
    for (int y = 0; y < height; ++y) {
        GH.move_to(y);
        GV.move_to(y);
        for (int x = 0; x < width; ++x) {
            GH.centre_on(x);
            GV.centre_on(x);
            sample(H1.get(), y, x) = first_difference(GH(0, -2), GH(0, -1), GH(0, 1), GH(0, 2));
            sample(V1.get(), y, x) = first_difference(GV(-2, 0), GV(-1, 0), GV(1, 0), GV(2, 0));
        }
    }

    Window<2, 0> H(H1.get());
    Window<0, 2> V(V1.get());
    for (int y = 0; y < height; ++y) {
        H.move_to(y);
        V.move_to(y);
        for (int x = 0; x < width; ++x) {
            H.centre_on(x);
            V.centre_on(x);
            const int32_t a = fourth_difference(V(0, -2), V(0, -1), V(0, 0), V(0, 1), V(0, 2));
            const int32_t b = fourth_difference(H(-2, 0), H(-1, 0), H(0, 0), H(1, 0), H(2, 0));
            sample(pd_wt, y, x) = CM_LUT3_CLIP(norm2(a, b), c.x0, c.y0, c.y1, c.slope, 10);
        }
    }
    give_plane("pd_wt", pd_wt);
}
