// The panels of the scene: small paintings, each given its size and what is behind it.
#pragma once

#include <functional>

#include "tools/cfatool/charts/charts.h"

namespace cfatool {

/// The colour of pixel (u, v) of a panel, in light 0..FULL; `behind` shines through where the panel paints
/// nothing. Fine detail is in pixels, whatever the size; shapes grow with the panel.
using Panel = std::function<Rgb(int u, int v, const Rgb &behind)>;
using PanelMaker = Panel (*)(int width, int height, uint64_t seed);

// Near the sampling limit (scene_textures.cpp).
Panel rings_panel(int width, int height,
                  uint64_t seed); // zone plate, half a cycle a pixel at its nearer side
Panel cloth_panel(int width, int height, uint64_t seed); // herringbone jacket, striped shirt and tie in folds
Panel roof_panel(int width, int height, uint64_t seed);  // tiled roof seen at a slant, rows getting finer
Panel bars_panel(int width, int height, uint64_t seed);  // line pairs in ink and colour
Panel text_panel(int width, int height, uint64_t seed);  // print, down to strokes of one pixel

// Edges and colours (scene_shapes.cpp).
Panel star_panel(int width, int height, uint64_t seed);    // spokes that meet
Panel square_panel(int width, int height, uint64_t seed);  // slanted edge
Panel balls_panel(int width, int height, uint64_t seed);   // three shaded balls in tones of skin
Panel patches_panel(int width, int height, uint64_t seed); // saturated patches
Panel ramps_panel(int width, int height, uint64_t seed);   // grey ramp, grey steps, all hues

// Helpers of both.
inline Rgb mix(const Rgb &a, const Rgb &b, int64_t t) {
    const auto one = [t](int64_t from, int64_t to) { return from + ((to - from) * t >> 16); };
    return {one(a.r, b.r), one(a.g, b.g), one(a.b, b.b)};
}

/// A colour written as 0xRRGGBB.
constexpr Rgb colour(uint32_t rrggbb) {
    return {int64_t{rrggbb >> 16 & 255} * 257, int64_t{rrggbb >> 8 & 255} * 257, int64_t{rrggbb & 255} * 257};
}

/// A colour brightened or darkened: 65536 leaves it.
inline Rgb shaded(const Rgb &c, int64_t light) {
    const auto one = [light](int64_t v) { return std::min<int64_t>(v * light >> 16, FULL); };
    return {one(c.r), one(c.g), one(c.b)};
}

} // namespace cfatool
