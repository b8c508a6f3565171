// The plain charts and the list of all.
#include "tools/cfatool/charts/charts.h"

#include "tools/cfatool/base/integer_math.h"

namespace cfatool {
namespace {

Rgb grey(int64_t level) {
    return {level, level, level};
}

/// 0..FULL along a sine.
int64_t wave(uint32_t phase) {
    return mix(0, FULL, 32768 + sine(phase));
}

/// Phase of a distance in pixels (Q30) in waves of `period` thousandths of a pixel.
uint32_t wave_phase(int64_t distance_q30, int64_t period) {
    return static_cast<uint32_t>(floor_div(distance_q30 * 4000, period));
}

Painter flat(const Canvas &canvas) {
    return [=](int, int) { return canvas.colour; };
}

// Eight bands from 0 to full: white, red, green, blue, cyan, magenta, yellow, and white in sixteen steps.
Painter ramp_bands(const Canvas &canvas) {
    return [=](int x, int y) -> Rgb {
        const int band = static_cast<int>(int64_t{y} * 8 / canvas.height);
        const int last = std::max(canvas.width - 1, 1);
        const int64_t smooth = int64_t{x} * canvas.max / last;
        const int64_t steps = int64_t{x} * 16 / canvas.width * canvas.max / 15;
        const int64_t level = band == 7 ? steps : smooth;
        constexpr int CHANNELS[8] = {7, 4, 2, 1, 3, 5, 6, 7}; // 4 red, 2 green, 1 blue
        const int on = CHANNELS[band];
        return {on & 4 ? level : 0, on & 2 ? level : 0, on & 1 ? level : 0};
    };
}

Painter checker(const Canvas &canvas) {
    return [=](int x, int y) {
        const int64_t column = int64_t{x} * 1000 / canvas.period;
        const int64_t row = int64_t{y} * 1000 / canvas.period;
        return grey((column + row) % 2 == 0 ? canvas.max : 0);
    };
}

// The frequency grows with the distance from the centre and reaches half a cycle a pixel at the nearer
// border, where neighbouring pixels alternate: phase r^2 / (4 R) turns.
Painter zone_plate(const Canvas &canvas) {
    const int64_t radius = std::max(std::min(canvas.width, canvas.height) / 2, 1);
    return [=](int x, int y) {
        const int64_t dx = x - canvas.width / 2;
        const int64_t dy = y - canvas.height / 2;
        const int64_t squared = dx * dx + dy * dy;
        return grey(
            wave(static_cast<uint32_t>((static_cast<uint64_t>(squared) << 30) / radius + QUARTER_TURN)));
    };
}

// A dark square on light, turned by the angle; every edge is a straight ramp one pixel wide.
Painter slanted_edge(const Canvas &canvas) {
    const int64_t cosine = sine_q30(phase_of_degrees(canvas.angle) + QUARTER_TURN);
    const int64_t sinus = sine_q30(phase_of_degrees(canvas.angle));
    const int64_t half = (int64_t{std::min(canvas.width, canvas.height)} << 30) * 3 / 10;
    return [=](int x, int y) {
        const int64_t dx = 2 * x + 1 - canvas.width; // half pixels
        const int64_t dy = 2 * y + 1 - canvas.height;
        const int64_t u = std::abs(dx * cosine + dy * sinus) / 2;
        const int64_t v = std::abs(dy * cosine - dx * sinus) / 2;
        const int64_t outside = (std::max(u, v) - half) >> 14; // distance from the edge in 1/65536 pixel
        return grey(mix(FULL / 8, FULL * 3 / 4, ramp(outside, -32768, 32768)));
    };
}

Painter stripes(const Canvas &canvas) {
    const int64_t cosine = sine_q30(phase_of_degrees(canvas.angle) + QUARTER_TURN);
    const int64_t sinus = sine_q30(phase_of_degrees(canvas.angle));
    return [=](int x, int y) { return grey(wave(wave_phase(x * cosine + y * sinus, canvas.period))); };
}

// Warp and weft: red thread along the columns, blue along the rows, green the mean of the two. Both run from
// a fifth of a cycle a pixel on one side to half a cycle on the other, where a mosaic can no longer hold
// them.
Painter fabric(const Canvas &canvas) {
    const auto chirp = [](int64_t along, int64_t length, int64_t across) {
        // In 1/65536 turn: 0.2 along + 0.15 along^2 / length, and a slow lean across.
        const int64_t turns =
            (along << 16) / 5 + (along * along << 16) / length * 3 / 20 + (across << 16) / 47;
        return wave(static_cast<uint32_t>(turns << 16));
    };
    return [=](int x, int y) -> Rgb {
        const int64_t red = chirp(x, canvas.width, y);
        const int64_t blue = chirp(y, canvas.height, x);
        return {red, (red + blue) / 2, blue};
    };
}

// Single pixels on a quarter of full scale, bright and dark by turns. An odd distance meets every colour
// site.
Painter impulses(const Canvas &canvas) {
    const int distance = static_cast<int>(std::max<int64_t>(canvas.period / 1000, 1));
    return [=](int x, int y) {
        if (x % distance != distance / 2 || y % distance != distance / 2)
            return grey(canvas.max / 4);
        return grey(x / distance / 2 % 2 == 0 ? canvas.max : 0);
    };
}

// All hues from left to right, five bands of rising saturation, brightness in fine vertical stripes: the
// stripes ask for moire suppression, which must leave the protected hues alone.
Painter protected_hues(const Canvas &canvas) {
    constexpr int64_t SATURATIONS[5] = {FULL / 32, FULL / 16, FULL / 8, FULL / 4, FULL * 7 / 10};
    return [=](int x, int y) {
        const int64_t hue = int64_t{x} * 2880 / canvas.width;
        const int64_t saturation = SATURATIONS[int64_t{y} * 5 / canvas.height];
        const int64_t light = wave(wave_phase(int64_t{x} << 30, canvas.period));
        return colour_of_hue(hue, saturation, mix(FULL * 3 / 10, FULL * 9 / 10, light));
    };
}

Painter noise(const Canvas &canvas) {
    return [=](int x, int y) {
        const uint64_t bits = random_bits(canvas.seed, static_cast<uint64_t>(y) * canvas.width + x);
        return grey(static_cast<int64_t>(bits >> 32 & canvas.max));
    };
}

} // namespace

Rgb colour_of_hue(int64_t hue, int64_t saturation, int64_t value) {
    const int64_t low = value - value * saturation / FULL;
    const int64_t within = hue % 480 * 65536 / 480; // in the sixth of the circle
    const int64_t rising = mix(low, value, within);
    const int64_t falling = mix(value, low, within);
    switch (hue / 480 % 6) {
    case 0:
        return {value, rising, low};
    case 1:
        return {falling, value, low};
    case 2:
        return {low, value, rising};
    case 3:
        return {low, falling, value};
    case 4:
        return {rising, low, value};
    default:
        return {value, low, falling};
    }
}

const std::vector<Chart> &charts() {
    // clang-format off
    static const std::vector<Chart> LIST = {
        // name, description, painter, in samples, period, angle, noise
        {"scene", "test card that provokes moire: rings, cloth, roof, edges, patches, skin, text, a little noise", paint_scene, false, 0, -1, 4000},
        {"zone-plate", "grey rings up to half a cycle a pixel at the nearer border", zone_plate, false, 0, -1, 0},
        {"slanted-edge", "dark square on light, turned by --angle (5)", slanted_edge, false, 0, 5000, 0},
        {"ramp", "bands from 0 to full: white, red, green, blue, cyan, magenta, yellow, 16 grey steps", ramp_bands, true, 0, -1, 0},
        {"flat", "one colour, --rgb R,G,B in samples (middle grey)", flat, true, 0, -1, 0},
        {"checker", "black and white squares of --period pixels (8)", checker, true, 8000, -1, 0},
        {"stripes", "grey sine stripes of --period pixels (2.5) across the direction --angle (10)", stripes, false, 2500, 10000, 0},
        {"fabric", "red and blue threads crossing, two chirps up to half a cycle a pixel", fabric, false, 0, -1, 0},
        {"impulses", "single bright and dark pixels, --period apart (17), on a quarter of full scale", impulses, true, 17000, -1, 0},
        {"protected-hues", "all hues, five saturations, under stripes of --period pixels (2.5)", protected_hues, false, 2500, -1, 0},
        {"noise", "every sample random over the whole range, by --seed", noise, true, 0, -1, 0},
    };
    // clang-format on
    return LIST;
}

} // namespace cfatool
