// Directional prediction: two candidate pictures, green interpolated along the row (GH) or the column (GV).
#include <algorithm>
#include <initializer_list>

#include "cmodel/cfa/src/kit/fixed_point.h"
#include "cmodel/cfa/src/kit/window.h"
#include "cmodel/cfa/src/planes.h"
#include "cmodel/cfa/src/stages.h"
#include "cmodel/common/color_id.h"

using namespace cfa;

namespace {

using Raw = Window<2>;

struct Range {
    int32_t min, max;

    explicit Range(std::initializer_list<int32_t> samples) : min(std::min(samples)), max(std::max(samples)) {}
};

// Sample groups of the 5 x 5 window without its corners.
Range cross_and_knight(const Raw &P) {
    return Range{P(0, -1), P(0, 1), P(-1, 0),  P(1, 0),  P(-1, -2), P(-1, 2),
                 P(1, -2), P(1, 2), P(-2, -1), P(-2, 1), P(2, -1),  P(2, 1)};
}
Range plus5(const Raw &P) {
    return Range{P(-2, 0), P(0, -2), P(0, 0), P(0, 2), P(2, 0)};
}
Range diag(const Raw &P) {
    return Range{P(-1, -1), P(-1, 1), P(1, -1), P(1, 1)};
}
Range nine_greens(const Raw &P) {
    return Range{P(-2, 0), P(0, -2), P(0, 0), P(0, 2), P(2, 0), P(-1, -1), P(-1, 1), P(1, -1), P(1, 1)};
}
Range row6(const Raw &P) {
    return Range{P(0, -1), P(0, 1), P(-2, -1), P(-2, 1), P(2, -1), P(2, 1)};
}
Range col6(const Raw &P) {
    return Range{P(-1, 0), P(1, 0), P(-1, -2), P(1, -2), P(-1, 2), P(1, 2)};
}

void store_ranges(FRAME *MaxRGB, FRAME *MinRGB, int y, int x, const Range &r, const Range &g,
                  const Range &b) {
    sample(MaxRGB, y, x, 0) = r.max;
    sample(MaxRGB, y, x, 1) = g.max;
    sample(MaxRGB, y, x, 2) = b.max;
    sample(MinRGB, y, x, 0) = r.min;
    sample(MinRGB, y, x, 1) = g.min;
    sample(MinRGB, y, x, 2) = b.min;
}

// What pass 1 leaves behind at each pixel beside the ranges.
struct Green {
    int32_t h_lp, h_hp, v_lp, v_hp, h, v;
};

Green green_at_red_blue(const Raw &P) {
    const int32_t h_lp = (P(0, -1) + P(0, 1) + 1) >> 1;
    const int32_t h_hp = (2 * P(0, 0) - P(0, -2) - P(0, 2)) >> 2;
    const int32_t v_lp = (P(-1, 0) + P(1, 0) + 1) >> 1;
    const int32_t v_hp = (2 * P(0, 0) - P(-2, 0) - P(2, 0)) >> 2;
    return {h_lp, h_hp, v_lp, v_hp, clip12(h_lp + h_hp), clip12(v_lp + v_hp)};
}

// Kept: green at green sites is the raw sample, not clipped.
Green green_at_green(const Raw &P) {
    return {P(0, 0), 0, P(0, 0), 0, P(0, 0), P(0, 0)};
}

// Pass 1 skips codes other than 0 to 3.
void predict_green(const FRAME *raw, FRAME *GH, FRAME *GV, FRAME *GH_lp, FRAME *GH_hp, FRAME *GV_lp,
                   FRAME *GV_hp, FRAME *MaxRGB, FRAME *MinRGB, uint32_t bayer_id) {
    const int width = width_of(raw);
    const int height = height_of(raw);
    Raw P(raw);
    for (int y = 0; y < height; ++y) {
        P.move_to(y);
        for (int x = 0; x < width; ++x) {
            P.centre_on(x);
            const uint32_t code = CM_GET_COLOR_ID(y, x, bayer_id);
            if (code > CODE_R)
                continue;
            if (code == CODE_B)
                store_ranges(MaxRGB, MinRGB, y, x, diag(P), cross_and_knight(P), plus5(P));
            else if (code == CODE_R)
                store_ranges(MaxRGB, MinRGB, y, x, plus5(P), cross_and_knight(P), diag(P));
            else if (code == CODE_GR)
                store_ranges(MaxRGB, MinRGB, y, x, row6(P), nine_greens(P), col6(P));
            else
                store_ranges(MaxRGB, MinRGB, y, x, col6(P), nine_greens(P), row6(P));

            const bool at_green = code == CODE_GB || code == CODE_GR;
            const Green g = at_green ? green_at_green(P) : green_at_red_blue(P);
            sample(GH_lp, y, x) = g.h_lp;
            sample(GH_hp, y, x) = g.h_hp;
            sample(GV_lp, y, x) = g.v_lp;
            sample(GV_hp, y, x) = g.v_hp;
            sample(GH, y, x, 1) = g.h;
            sample(GV, y, x, 1) = g.v;
        }
    }
}

// Pass 2 on one candidate picture: red and blue from their difference to its green, which G reads.
// Any code other than 0, 1, 3 takes the formulas of code 2.
void predict_red_blue(const FRAME *raw, FRAME *candidate, uint32_t bayer_id) {
    const int width = width_of(raw);
    const int height = height_of(raw);
    Window<1> P(raw);
    Window<1> G(candidate, 1);
    for (int y = 0; y < height; ++y) {
        P.move_to(y);
        G.move_to(y);
        for (int x = 0; x < width; ++x) {
            P.centre_on(x);
            G.centre_on(x);
            const uint32_t code = CM_GET_COLOR_ID(y, x, bayer_id);
            if (code == CODE_B || code == CODE_R) {
                const int32_t above = P(-1, -1) - G(-1, -1) + P(-1, 1) - G(-1, 1);
                const int32_t below = P(1, -1) - G(1, -1) + P(1, 1) - G(1, 1);
                const int32_t diagonal = (above + below) >> 2;
                sample(candidate, y, x, code == CODE_B ? 0 : 2) = clip12(G(0, 0) + diagonal);
                sample(candidate, y, x, code == CODE_B ? 2 : 0) = P(0, 0);
            } else {
                const int32_t along_row = (P(0, -1) - G(0, -1) + P(0, 1) - G(0, 1)) >> 1;
                const int32_t along_col = (P(-1, 0) - G(-1, 0) + P(1, 0) - G(1, 0)) >> 1;
                sample(candidate, y, x, code == CODE_GB ? 0 : 2) = clip12(P(0, 0) + along_col);
                sample(candidate, y, x, code == CODE_GB ? 2 : 0) = clip12(P(0, 0) + along_row);
            }
        }
    }
}

} // namespace

void cfa_CalPredictPixel(const FRAME *raw, FRAME *GH, FRAME *GV, FRAME *GH_lp, FRAME *GH_hp, FRAME *GV_lp,
                         FRAME *GV_hp, FRAME *MaxRGB, FRAME *MinRGB, uint32_t bayer_id) {
    predict_green(raw, GH, GV, GH_lp, GH_hp, GV_lp, GV_hp, MaxRGB, MinRGB, bayer_id);
    predict_red_blue(raw, GH, bayer_id);
    predict_red_blue(raw, GV, bayer_id);

    publish_plane("GH", GH);
    publish_plane("GV", GV);
    publish_plane("GH_lp", GH_lp);
    publish_plane("GV_lp", GV_lp);
    give_plane("GH_hp", GH_hp);
    give_plane("GV_hp", GV_hp);
    publish_plane("MaxRGB", MaxRGB);
    publish_plane("MinRGB", MinRGB);
}
