// Edge classifier: how much the mosaic changes along the row and along the column.
#include <algorithm>

#include "cmodel/cfa/src/kit/fixed_point.h"
#include "cmodel/cfa/src/kit/window.h"
#include "cmodel/cfa/src/planes.h"
#include "cmodel/cfa/src/stages.h"
#include "cmodel/common/color_id.h"

using namespace cfa;

namespace {

using Raw = Window<2>;

// The terms of the activity along the row; along the column the same on the transposed window.
struct Terms {
    int32_t own, diagonal, near, outer;
};

Terms along_row(const Raw &P) {
    return {magnitude(P(0, 0) - P(0, -2)) + magnitude(P(0, 0) - P(0, 2)),
            magnitude(P(-1, -1) - P(-1, 1)) + magnitude(P(1, -1) - P(1, 1)), magnitude(P(0, -1) - P(0, 1)),
            magnitude(P(-1, -2) - P(-1, 0)) + magnitude(P(-1, 0) - P(-1, 2)) + magnitude(P(1, -2) - P(1, 0)) +
                magnitude(P(1, 0) - P(1, 2))};
}

Terms along_column(const Raw &P) {
    return {magnitude(P(0, 0) - P(-2, 0)) + magnitude(P(0, 0) - P(2, 0)),
            magnitude(P(-1, -1) - P(1, -1)) + magnitude(P(-1, 1) - P(1, 1)), magnitude(P(-1, 0) - P(1, 0)),
            magnitude(P(-2, -1) - P(0, -1)) + magnitude(P(0, -1) - P(2, -1)) + magnitude(P(-2, 1) - P(0, 1)) +
                magnitude(P(0, 1) - P(2, 1))};
}

// Kept: the two kinds of site weigh the own-colour and the outer term differently.
int32_t activity_at_red_blue(const Terms &t) {
    return (t.own >> 1) + (t.diagonal >> 1) + t.near + (t.outer >> 1);
}
int32_t activity_at_green(const Terms &t) {
    return t.own + (t.diagonal >> 1) + t.near + (t.outer >> 2);
}

// Green over own colour, Q12: the reciprocal is Q15.
int32_t ratio(int32_t green, int32_t own) {
    return std::min(4095, (green * get_inv(own)) >> 3);
}

int32_t ratio_along_row(const Raw &P) {
    const int32_t gh = (P(0, -1) + P(0, 1)) >> 1;
    const int32_t ch = (2 * P(0, 0) + P(0, -2) + P(0, 2)) >> 2;
    return ratio(gh, ch);
}

int32_t ratio_along_column(const Raw &P) {
    const int32_t gv = (P(-1, 0) + P(1, 0)) >> 1;
    const int32_t cv = (2 * P(0, 0) + P(-2, 0) + P(2, 0)) >> 2;
    return ratio(gv, cv);
}

} // namespace

void cfa_CalClassifier(const FRAME *raw, FRAME *LH, FRAME *LV, FRAME *LMax, FRAME *RatioH, FRAME *RatioV,
                       uint32_t bayer_id) {
    const int width = width_of(raw);
    const int height = height_of(raw);
    Raw P(raw);
    for (int y = 0; y < height; ++y) {
        P.move_to(y);
        for (int x = 0; x < width; ++x) {
            P.centre_on(x);
            const uint32_t code = CM_GET_COLOR_ID(y, x, bayer_id);
            const bool red_blue = code == CODE_B || code == CODE_R; // any other code counts as green

            const Terms row = along_row(P);
            const Terms column = along_column(P);
            const int32_t h = red_blue ? activity_at_red_blue(row) : activity_at_green(row);
            const int32_t v = red_blue ? activity_at_red_blue(column) : activity_at_green(column);

            sample(LH, y, x) = std::min(32767, std::max(0, h));
            sample(LV, y, x) = std::min(32767, std::max(0, v));
            sample(LMax, y, x) = h >= v ? h : v; // not clipped
            sample(RatioH, y, x) = red_blue ? ratio_along_row(P) : 0;
            sample(RatioV, y, x) = red_blue ? ratio_along_column(P) : 0;
        }
    }
    publish_plane("LH", LH);
    publish_plane("LV", LV);
    publish_plane("LMax", LMax);
    give_plane("RatioH", RatioH);
    give_plane("RatioV", RatioV);
}
