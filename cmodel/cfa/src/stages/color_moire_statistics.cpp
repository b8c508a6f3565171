// Colour-moire statistics: which pixels may lose their colour, and where the directional texture is unequal.
#include <algorithm>
#include <array>
#include <cstdlib>

#include "cmodel/cfa/src/kit/fixed_point.h"
#include "cmodel/cfa/src/kit/in_force.h"
#include "cmodel/cfa/src/kit/register_groups.h"
#include "cmodel/cfa/src/kit/window.h"
#include "cmodel/cfa/src/planes.h"
#include "cmodel/cfa/src/stages.h"
#include "cmodel/common/curve.h"

using namespace cfa;

namespace {

constexpr int32_t HUE_CIRCLE = 2880; // 360 degrees in eighths

int32_t clipped_weight(int32_t x, const CurveRegisters &c) {
    return CM_LUT3_CLIP(x, c.x0, c.y0, c.y1, c.slope, 10);
}

// Distance to the nearest protected hue; 4095 when none is protected.
int32_t hue_distance(int32_t hue, const std::array<ProtectedHue, 3> &hues) {
    int32_t nearest = 4095;
    for (const ProtectedHue &one : hues) {
        if (!one.enabled)
            continue;
        const int32_t d = magnitude(hue - one.hue);
        nearest = std::min(nearest, std::min(d, HUE_CIRCLE - d));
    }
    return nearest;
}

// High for a pale colour whose hue is far from the protected ones.
int32_t color_distance_weight(int32_t red, int32_t green, int32_t blue, const ColorMoireCurves &curves,
                              const std::array<ProtectedHue, 3> &hues) {
    const int32_t saturation = norm2(magnitude(red - green), magnitude(blue - green));
    const int32_t sat_weight = clipped_weight(saturation, curves.saturation);

    uint32_t hue = 0, unused_sat = 0, unused_val = 0;
    rgb2hsv(red, green, blue, hue, unused_sat, unused_val, 3, 0, 0);
    const int32_t hue_weight = clipped_weight(hue_distance(static_cast<int32_t>(hue), hues), curves.hue);
    return (sat_weight * hue_weight) >> 12;
}

// The two 5 x 5 kernels; K135 is K45 mirrored left to right.
struct Kernels {
    int32_t k0[5][5];
    int32_t k45[5][5];

    Kernels() {
        const DirectionalCoefficients c = directional_coefficients();
        static constexpr int INDEX_45[5][5] = {
            {2, 4, 6, 7, 8}, {4, 1, 3, 5, 7}, {6, 3, 0, 3, 6}, {7, 5, 3, 1, 4}, {8, 7, 6, 4, 2}};
        for (int i = 0; i < 5; ++i) {
            for (int j = 0; j < 5; ++j) {
                k0[i][j] = c.straight[std::abs(j - 2)];
                k45[i][j] = c.diagonal[INDEX_45[i][j]];
            }
        }
    }
};

struct Responses {
    int32_t e0, e90, e45, e135;

    // Kept: the kernel that varies along the row looks at GV, the one down the column at GH.
    Responses(const Kernels &k, const Window<2> &GH, const Window<2> &GV) {
        int32_t s0 = 0, s90 = 0, sa = 0, sb = 0, sc = 0, sd = 0;
        for (int r = 0; r < 5; ++r) {
            for (int c = 0; c < 5; ++c) {
                const int32_t gh = GH(r - 2, c - 2);
                const int32_t gv = GV(r - 2, c - 2);
                s0 += k.k0[r][c] * gv;
                s90 += k.k0[c][r] * gh;
                sa += k.k45[r][c] * gh;
                sb += k.k45[r][4 - c] * gh;
                sc += k.k45[r][c] * gv;
                sd += k.k45[r][4 - c] * gv;
            }
        }
        e0 = clip12(magnitude(s0) >> 12);
        e90 = clip12(magnitude(s90) >> 12);
        e45 = clip12((magnitude(sc) + magnitude(sa)) >> 13);
        e135 = clip12((magnitude(sd) + magnitude(sb)) >> 13);
    }

    int32_t spread() const {
        const int32_t mean = (e45 + e135 + e0 + e90) >> 2;
        return magnitude(e45 - mean) + magnitude(e135 - mean) + magnitude(e0 - mean) + magnitude(e90 - mean);
    }
};

// Q10, 1024..4095: dark areas are raised toward the target brightness, nothing is lowered.
int32_t luma_gain(int32_t green) {
    if (registers().reg_cfa_cmoire_lumagain_enable != 1)
        return 1024;
    const int32_t target = registers().reg_cfa_cmoire_lumatg;
    return std::min(4095, std::max(1024, (target * get_inv(green) + 16) >> 5));
}

int32_t edge_spread_weight(const Responses &e, int32_t green, const CurveRegisters &curve) {
    const int32_t spread = clip12((e.spread() * luma_gain(green) + 512) >> 10);
    return clipped_weight(spread, curve);
}

} // namespace

void cfa_CalColorMoireSts(const FRAME *avg, const FRAME *gh, const FRAME *gv, FRAME *cdist_wt,
                          FRAME *edge_wt) {
    const Kernels kernels;
    const ColorMoireCurves curves = color_moire_curves();
    const std::array<ProtectedHue, 3> hues = protected_hues();
    Window<2> GH(gh, 1), GV(gv, 1);
    for (int y = 0; y < height_of(avg); ++y) {
        GH.move_to(y);
        GV.move_to(y);
        for (int x = 0; x < width_of(avg); ++x) {
            GH.centre_on(x);
            GV.centre_on(x);
            const int32_t red = value(avg, y, x, 0);
            const int32_t green = value(avg, y, x, 1);
            const int32_t blue = value(avg, y, x, 2);
            sample(cdist_wt, y, x) = color_distance_weight(red, green, blue, curves, hues);
            sample(edge_wt, y, x) = edge_spread_weight(Responses(kernels, GH, GV), green, curves.edge);
        }
    }
    give_plane("cdist_wt", cdist_wt);
    give_plane("edge_wt", edge_wt);
}
