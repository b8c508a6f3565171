// The scene: where the panels stand on the card.
#include <vector>

#include "tools/cfatool/base/integer_math.h"
#include "tools/cfatool/charts/scene_panels.h"

namespace cfatool {
namespace {

/// A panel's place in thousandths of the card.
struct Place {
    int left, top, right, bottom;
    PanelMaker make;
};

constexpr Place LAYOUT[] = {
    {30, 40, 385, 515, rings_panel},    {405, 40, 665, 515, cloth_panel}, {685, 40, 970, 420, star_panel},
    {685, 440, 970, 515, bars_panel},   {30, 545, 385, 770, balls_panel}, {405, 545, 665, 770, patches_panel},
    {685, 545, 825, 770, square_panel}, {845, 545, 970, 770, roof_panel}, {30, 800, 385, 955, text_panel},
    {405, 800, 970, 955, ramps_panel},
};

/// A panel's place in pixels.
struct Placed {
    int left, top, right, bottom;
    Panel paint;
};

// Slate, lighter towards the top, with the faint grid of a test card.
Rgb card(const Canvas &canvas, int x, int y) {
    const int64_t height = int64_t{y} * 65536 / canvas.height;
    const Rgb plain = mix(colour(0x5A6470), colour(0x343A44), height);
    const int step = std::max(canvas.width / 32, 4);
    return x % step < 2 || y % step < 2 ? shaded(plain, 72000) : plain;
}

} // namespace

Painter paint_scene(const Canvas &canvas) {
    std::vector<Placed> panels;
    for (const Place &p : LAYOUT) {
        const auto across = [&](int part) { return static_cast<int>(int64_t{canvas.width} * part / 1000); };
        const auto down = [&](int part) { return static_cast<int>(int64_t{canvas.height} * part / 1000); };
        const Placed at = {across(p.left), down(p.top), across(p.right), down(p.bottom), nullptr};
        if (at.right > at.left && at.bottom > at.top)
            panels.push_back({at.left, at.top, at.right, at.bottom,
                              p.make(at.right - at.left, at.bottom - at.top, canvas.seed)});
    }
    return [canvas, panels](int x, int y) {
        const Rgb behind = card(canvas, x, y);
        for (const Placed &p : panels)
            if (x >= p.left && x < p.right && y >= p.top && y < p.bottom)
                return p.paint(x - p.left, y - p.top, behind);
        return behind;
    };
}

} // namespace cfatool
