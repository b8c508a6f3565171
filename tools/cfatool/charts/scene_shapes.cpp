// Panels of edges and colours.
#include "tools/cfatool/base/integer_math.h"
#include "tools/cfatool/charts/scene_panels.h"

namespace cfatool {
namespace {

/// A ball lit from the upper left, standing on a table.
struct Ball {
    int64_t x, y, radius; // pixels
    Rgb tone;
};

/// Light on the ball at (dx, dy) from its centre: how far the surface looks towards the lamp, 65536 at most.
int64_t lambert(int64_t dx, int64_t dy, int64_t radius) {
    const int64_t x = dx * 65536 / radius;
    const int64_t y = dy * 65536 / radius;
    const int64_t z = integer_sqrt(std::max<int64_t>((int64_t{1} << 32) - x * x - y * y, 0));
    return std::max<int64_t>((-x * 30000 - y * 38000 + z * 44000) >> 16,
                             0); // the lamp's direction, length 65536
}

Rgb ball_colour(const Ball &ball, int64_t dx, int64_t dy) {
    const int64_t lit = lambert(dx, dy, ball.radius);
    const Rgb body = shaded(ball.tone, 16000 + lit * 52000 / 65536);
    return mix(body, colour(0xFFF4E4), ramp(lit, 60500, 67000) * 3 / 5); // a soft highlight
}

} // namespace

// Thirty-six pairs of spokes; towards the middle they are finer than the pixels.
Panel star_panel(int width, int height, uint64_t) {
    constexpr int64_t SPOKES = 36;
    const int64_t radius = std::max(std::min(width, height) / 2, 1);
    return [=](int u, int v, const Rgb &behind) {
        const int64_t dx = 2 * u + 1 - width; // half pixels
        const int64_t dy = 2 * v + 1 - height;
        const int64_t distance = integer_sqrt((dx * dx + dy * dy) << 10); // in 1/64 pixel
        const int64_t wave = sine(direction(dx, dy) * static_cast<uint32_t>(SPOKES));
        const int64_t sharp = wave * distance / (64 * SPOKES); // crosses the edge within one pixel
        const int64_t spoke = ramp(sharp, -16384, 16384);
        const Rgb star = mix(colour(0x101418), colour(0xF0F0EC), spoke);
        return mix(star, behind, ramp(distance, (radius - 1) << 6, radius << 6));
    };
}

Panel square_panel(int width, int height, uint64_t) {
    constexpr int64_t COSINE = 65287; // of 5 degrees
    constexpr int64_t SINE = 5712;
    const int64_t half = int64_t{std::min(width, height)} * 65536 * 3 / 10;
    return [=](int u, int v, const Rgb &) {
        const int64_t dx = 2 * u + 1 - width; // half pixels
        const int64_t dy = 2 * v + 1 - height;
        const int64_t a = std::abs(dx * COSINE + dy * SINE) / 2;
        const int64_t b = std::abs(dy * COSINE - dx * SINE) / 2;
        return mix(colour(0x2A2D33), colour(0xD9D9D4), ramp(std::max(a, b) - half, -32768, 32768));
    };
}

Panel balls_panel(int width, int height, uint64_t) {
    const int64_t radius = std::max(std::min(width * 3 / 20, height * 2 / 5), 1);
    const int64_t y = height * 27 / 50;
    const std::vector<Ball> balls = {{width * 9 / 50, y, radius, colour(0xF2C4A0)},
                                     {width / 2, y, radius, colour(0xC68A5E)},
                                     {width * 41 / 50, y, radius, colour(0x7A4A32)}};
    return [=](int u, int v, const Rgb &) {
        const int64_t table = ramp(v, height * 11 / 20, height * 13 / 20 + 1);
        Rgb pixel = mix(colour(0xBFD0D8), colour(0x8C7A66), table);
        for (const Ball &ball : balls) {
            const int64_t dx = u - ball.x;
            const int64_t dy = v - ball.y;
            const int64_t sx =
                (dx - ball.radius / 3) * 64 / ball.radius; // shadow: a flat ellipse at its foot
            const int64_t sy = (dy - ball.radius * 17 / 20) * 64 * 4 / ball.radius;
            pixel = mix(shaded(pixel, 34000), pixel, ramp(integer_sqrt(sx * sx + sy * sy), 20, 80));
        }
        for (const Ball &ball : balls) {
            const int64_t dx = u - ball.x;
            const int64_t dy = v - ball.y;
            const int64_t distance = integer_sqrt((dx * dx + dy * dy) << 12); // in 1/64 pixel
            pixel = mix(ball_colour(ball, dx, dy), pixel,
                        ramp(distance, (ball.radius - 1) << 6, ball.radius << 6));
        }
        return pixel;
    };
}

Panel patches_panel(int width, int height, uint64_t) {
    static constexpr uint32_t COLOURS[3][6] = {
        {0xE01010, 0x10B020, 0x1030E0, 0x10C8D8, 0xD81CB8, 0xF0E010},
        {0xF08010, 0x7020A0, 0x80C810, 0x804020, 0x106070, 0xF080A0},
        {0x600808, 0x085010, 0x081868, 0xB8DCE8, 0xE8D0E4, 0xF4F0C0},
    };
    return [=](int u, int v, const Rgb &) {
        return colour(COLOURS[int64_t{v} * 3 / height][int64_t{u} * 6 / width]);
    };
}

Panel ramps_panel(int width, int height, uint64_t) {
    return [=](int u, int v, const Rgb &) {
        const int band = static_cast<int>(int64_t{v} * 3 / height);
        if (band == 2)
            return colour_of_hue(int64_t{u} * 2880 / width, FULL * 9 / 10, FULL * 9 / 10);
        const int64_t smooth = int64_t{u} * FULL / std::max(width - 1, 1);
        const int64_t steps = int64_t{u} * 11 / width * FULL / 10;
        const int64_t level = band == 0 ? smooth : steps;
        return Rgb{level, level, level};
    };
}

} // namespace cfatool
