#include "cmodel/cfa/src/lines/curve.h"
#include "cmodel/cfa/src/lines/kernels.h"
#include "cmodel/cfa/src/lines/reciprocal.h"

namespace {

constexpr Sample hue_circle = 2880;

constexpr int32_t norm2(int32_t a, int32_t b) {
    return (largest32(a, b) * 123 + least32(a, b) * 51 + 64) >> 7;
}

// Hue of a 12-bit colour in eighths of a degree. On a tie for the maximum green goes before blue before red.
inline int32_t hue(int32_t r, int32_t g, int32_t b) {
    const int32_t mx = largest32(r, largest32(g, b));
    const int32_t mn = least32(r, least32(g, b));
    const bool green = mx == g;
    const bool blue = mx == b;
    const int32_t difference = select32(green, b - r, select32(blue, r - g, g - b));
    const int32_t base = select32(green, 120 << 3, select32(blue, 240 << 3, select32(g >= b, 0, 360 << 3)));
    const int32_t angle = (difference * 60 * reciprocal(mx - mn)) >> 12;
    return select32(mx == mn, 0, base + angle);
}

} // namespace

CFA_KERNEL void color_distance_weight(const Sample *red, const Sample *green, const Sample *blue,
                                      ColorDistanceSettings s, Sample *weight, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; i++) {
        const int32_t saturation = norm2(distance(red[i], green[i]), distance(blue[i], green[i]));
        const int32_t saturation_weight = truncated_curve(saturation, s.saturation);

        const int32_t h = hue(red[i], green[i], blue[i]);
        int32_t nearest = 4095;
        const auto protect = [&](int k) {
            const int32_t straight = h > s.protected_hue[k] ? h - s.protected_hue[k] : s.protected_hue[k] - h;
            const int32_t around =
                least32(straight, hue_circle - straight); // negative for a hue beyond the circle
            nearest = least32(nearest, around + s.out_of_reach[k]);
        };
        protect(0);
        protect(1);
        protect(2);
        weight[i] = static_cast<Sample>((saturation_weight * truncated_curve(nearest, s.hue)) >> 12);
    }
}

namespace {

// Sums of the 5 x 5 window over the samples that share a coefficient of the diagonal kernel, in its order;
// each has up to four samples. The anti-diagonal kernel swaps groups 1 and 5, 2 and 8, 4 and 7.
struct Groups {
    Sample g0, g1, g2, g3, g4, g5, g6, g7, g8;

    explicit Groups(const Sight<2>::Site &P)
        : g0(P(0, 0)), g1(P(-1, -1) + P(1, 1)), g2(P(-2, -2) + P(2, 2)),
          g3(P(-1, 0) + P(0, -1) + P(0, 1) + P(1, 0)), g4(P(-2, -1) + P(-1, -2) + P(1, 2) + P(2, 1)),
          g5(P(-1, 1) + P(1, -1)), g6(P(-2, 0) + P(0, -2) + P(0, 2) + P(2, 0)),
          g7(P(-2, 1) + P(-1, 2) + P(1, -2) + P(2, -1)), g8(P(-2, 2) + P(2, -2)) {}
};

constexpr int32_t magnitude(int32_t v) {
    return v < 0 ? -v : v;
}

struct Diagonals {
    int32_t rising, falling; // magnitudes

    Diagonals(const Groups &g, const Sample (&c)[9]) {
        const int32_t shared = c[0] * g.g0 + c[3] * g.g3 + c[6] * g.g6;
        rising = magnitude(shared + c[1] * g.g1 + c[5] * g.g5 + c[2] * g.g2 + c[8] * g.g8 + c[4] * g.g4 +
                           c[7] * g.g7);
        falling = magnitude(shared + c[1] * g.g5 + c[5] * g.g1 + c[2] * g.g8 + c[8] * g.g2 + c[4] * g.g7 +
                            c[7] * g.g4);
    }
};

// Three coefficients over five line sums, each up to 20475.
constexpr int32_t five_taps(const Sample (&c)[3], int32_t a, int32_t b, int32_t centre, int32_t d,
                            int32_t e) {
    return c[0] * centre + c[1] * (b + d) + c[2] * (a + e);
}

} // namespace

CFA_KERNEL void directional_spread(Sight<2> green_h, Sight<2> green_v, DirectionalKernels kernels,
                                   Sample *spread, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; i++) {
        const auto H = green_h.at(i);
        const auto V = green_v.at(i);
        const auto column = [&V](int dx) {
            return static_cast<Sample>(V(-2, dx) + V(-1, dx) + V(0, dx) + V(1, dx) + V(2, dx));
        };
        const auto row = [&H](int dy) {
            return static_cast<Sample>(H(dy, -2) + H(dy, -1) + H(dy, 0) + H(dy, 1) + H(dy, 2));
        };
        const int32_t s0 = five_taps(kernels.d0, column(-2), column(-1), column(0), column(1), column(2));
        const int32_t s90 = five_taps(kernels.d0, row(-2), row(-1), row(0), row(1), row(2));
        const Diagonals h(Groups(H), kernels.d45);
        const Diagonals v(Groups(V), kernels.d45);

        const Sample e0 = static_cast<Sample>(least32(4095, magnitude(s0) >> 12));
        const Sample e90 = static_cast<Sample>(least32(4095, magnitude(s90) >> 12));
        const Sample e45 = static_cast<Sample>(least32(4095, (v.rising + h.rising) >> 13));
        const Sample e135 = static_cast<Sample>(least32(4095, (v.falling + h.falling) >> 13));
        const Sample sum = e45 + e135 + e0 + e90;
        const Sample mean = sum >> 2;
        spread[i] = distance(e45, mean) + distance(e135, mean) + distance(e0, mean) + distance(e90, mean);
    }
}

CFA_KERNEL void edge_spread_weight(const Sample *spread, const Sample *green, EdgeWeightSettings s,
                                   Sample *weight, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; i++) {
        const int32_t raised = limited12((s.luma_target * reciprocal(green[i]) + 16) >> 5);
        const int32_t gain = largest32(1024, raised); // Q10
        const int32_t gained = limited12((spread[i] * gain + 512) >> 10);
        weight[i] = static_cast<Sample>(truncated_curve(gained, s.edge));
    }
}
