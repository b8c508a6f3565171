#include "cmodel/cfa/src/lines/kernels/kernels.h"
#include "cmodel/cfa/src/lines/kernels/reciprocal.h"
#include "cmodel/cfa/src/lines/kernels/row_curve.h"

namespace cfa::CFA_ROWS {

namespace {

constexpr Sample HUE_CIRCLE = 2880;

// Hue of a 12-bit colour in eighths of a degree. On a tie for the maximum green goes before blue before red.
inline Sample hue(Sample r, Sample g, Sample b) {
    const Sample mx = largest(r, largest(g, b));
    const Sample mn = least(r, least(g, b));
    const Sample is_green = -(mx == g);
    const Sample is_blue = -(mx == b);
    const Sample difference = select_by(is_green, b - r, select_by(is_blue, r - g, g - b));
    const Sample below_red = select_by(-(g >= b), 0, 360 << 3);
    const Sample base = select_by(is_green, 120 << 3, select_by(is_blue, 240 << 3, below_red));
    const int32_t angle = (difference * 60 * reciprocal(mx - mn)) >> 12;
    return select_by(-(mx == mn), 0, static_cast<Sample>(base + angle));
}

CFA_KERNEL void hues(const Sample *red, const Sample *green, const Sample *blue, Sample *out, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i)
        out[i] = hue(red[i], green[i], blue[i]);
}

CFA_KERNEL void distance_weight(const Sample *red, const Sample *green, const Sample *blue, const Sample *hue,
                                ColorDistanceSettings s, Sample *weight, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const Sample saturation = norm2_u12(distance(red[i], green[i]), distance(blue[i], green[i]));
        const int32_t saturation_weight = truncated_curve(saturation, s.saturation);

        const Sample h = hue[i];
        Sample nearest = 4095;
        const auto protect = [&](int k) {
            const Sample straight = distance(h, s.protected_hue[k]);
            const Sample around =
                least(straight, HUE_CIRCLE - straight); // negative for a hue beyond the circle
            nearest = least(nearest, around | s.out_of_reach[k]);
        };
        protect(0);
        protect(1);
        protect(2);
        weight[i] = static_cast<Sample>((saturation_weight * truncated_curve(nearest, s.hue)) >> 12);
    }
}

} // namespace

void color_distance_weight(const Sample *red, const Sample *green, const Sample *blue,
                           ColorDistanceSettings s, Sample *weight, int n) {
    for_each_block(n, [&](Index first, int count) {
        Sample hue[BLOCK];
        hues(red + first, green + first, blue + first, hue, count);
        distance_weight(red + first, green + first, blue + first, hue, s, weight + first, count);
    });
}

namespace {

CFA_KERNEL void luma_gain(const Sample *green, int32_t target, Sample *gain, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const int32_t raised = limited12((target * reciprocal(green[i]) + 16) >> 5);
        gain[i] = static_cast<Sample>(largest32(1024, raised)); // Q10
    }
}

CFA_KERNEL void gained_weight(const Sample *spread, const Sample *gain, Curve edge, Sample *weight, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const int32_t gained = limited12((spread[i] * gain[i] + 512) >> 10);
        weight[i] = static_cast<Sample>(truncated_curve(gained, edge));
    }
}

} // namespace

void edge_spread_weight(const Sample *spread, const Sample *green, EdgeWeightSettings s, Sample *weight,
                        int n) {
    for_each_block(n, [&](Index first, int count) {
        Sample gain[BLOCK];
        luma_gain(green + first, s.luma_target, gain, count);
        gained_weight(spread + first, gain, s.edge, weight + first, count);
    });
}

} // namespace cfa::CFA_ROWS
