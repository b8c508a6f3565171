// Panels with detail near the sampling limit.
#include <string>
#include <string_view>

#include "tools/cfatool/base/font.h"
#include "tools/cfatool/base/integer_math.h"
#include "tools/cfatool/charts/scene_panels.h"

namespace cfatool {
namespace {

/// 0..65536 along a sine.
int64_t swing(int64_t turns_q16) {
    return 32768 + sine(static_cast<uint32_t>(turns_q16 << 16));
}

/// x as a fraction 0..65536 of n.
int64_t part(int64_t x, int64_t n) {
    return x * 65536 / n;
}

// Weave of the tie: crimson with slanted stripes, two pixels a thread.
Rgb tie_colour(int u, int v) {
    const int64_t stripe = ramp(swing((int64_t{u} + v) * 65536 / 22), 30000, 36000);
    const int64_t thread = (u + v) % 2 == 0 ? 65536 : 54000;
    return shaded(mix(colour(0x9C1B2E), colour(0xE3B04B), stripe), thread);
}

// Blue stripes on white.
Rgb shirt_colour(int u, int v, int64_t push) {
    const int64_t place = int64_t{u} * 65536 + push + int64_t{v} * 3000;
    return mix(colour(0xF4F1EA), colour(0x3E66B8), swing(place * 10 / 27));
}

// Herringbone: columns of threads that climb and fall by turns, 2.83 pixels apart at 43 degrees, where red,
// green and blue sites alias into slow bands of false colour.
Rgb jacket_colour(int u, int v, int64_t push) {
    constexpr int64_t COSINE = 47930; // of 43 degrees, Q16
    constexpr int64_t SINE = 44695;
    const int64_t climb = u / 26 % 2 == 0 ? v : -v;
    const int64_t place = u * COSINE + climb * SINE + push;
    return mix(colour(0x20242C), colour(0xE0DCD4), swing(place * 100 / 283));
}

struct Folds {
    int64_t push;  // displacement, -65536..65536
    int64_t light; // about 65536
};

Folds folds_at(int64_t x, int64_t y) {
    const int64_t first = x * 3 / 2 + y / 3;
    const int64_t second = x * 7 / 4 - y * 4 / 5 + 20000;
    return {swing(first) + swing(second) - 65536,
            46000 + (swing(first + 16384) + swing(second + 16384)) / 6}; // lit where they rise
}

} // namespace

Panel rings_panel(int width, int height, uint64_t) {
    const int64_t radius = std::max(std::min(width, height) / 2, 1);
    return [=](int u, int v, const Rgb &) {
        const int64_t dx = u - width / 2;
        const int64_t dy = v - height / 2;
        const auto squared = static_cast<uint64_t>(dx * dx + dy * dy);
        const auto phase = static_cast<uint32_t>((squared << 30) / radius + QUARTER_TURN);
        const int64_t level = mix(FULL / 16, FULL * 15 / 16, 32768 + sine(phase));
        return Rgb{level, level, level};
    };
}

// A jacket in grey herringbone, threads 2.8 pixels apart on both diagonals; under it a shirt with blue
// stripes 2.7 pixels apart and a tie. Folds push the threads together and apart.
Panel cloth_panel(int width, int height, uint64_t) {
    return [=](int u, int v, const Rgb &) {
        const int64_t x = part(u, width);
        const int64_t y = part(v, height);
        const Folds folds = folds_at(x, y);
        const int64_t push = folds.push * width / 160; // in 1/65536 pixel
        const int64_t off = std::abs(x - 32768);       // from the middle
        const int64_t opening = 21000 - y * 3 / 8;     // half of the jacket's, narrowing downwards
        const int64_t knot = y < 6000 ? 3600 - y / 5 : 2300 + y / 14;
        if (off < knot && off < opening)
            return shaded(tie_colour(u, v), folds.light + 6000);
        if (off < opening) {
            const Rgb shirt = shaded(shirt_colour(u, v, push), folds.light + 4000);
            return off < knot + 1500 || off > opening - 1000 ? shaded(shirt, 44000) : shirt; // shadows
        }
        const bool lapel = off < opening + 8000 && y < 50000;
        return shaded(jacket_colour(lapel ? v : u, lapel ? u : v, push), folds.light - (lapel ? 0 : 5000));
    };
}

// Rows of tiles seen at a slant: they get finer towards the ridge, five to two and a half pixels, with
// staggered joints.
Panel roof_panel(int width, int height, uint64_t seed) {
    return [=](int u, int v, const Rgb &) {
        const int64_t down = 2 * height - v; // the ridge is at the top
        const int64_t row_turns = int64_t{height} * 65536 * 2 / 5 - down * down * 65536 / (10 * height);
        const int64_t row = row_turns >> 16;
        const int64_t joint = (int64_t{u} + row % 2 * 4) % 8 == 0 ? 36000 : 65536;
        const int64_t body = 30000 + swing(row_turns) * 35000 / 65536;
        const uint64_t tile = static_cast<uint64_t>(row * width + (u + row % 2 * 4) / 8);
        const int64_t tone = 58000 + static_cast<int64_t>(random_bits(seed, tile) & 0x3FFF);
        return shaded(shaded(shaded(colour(0xD8693C), tone), body), joint);
    };
}

// How many letters of a text that begins again behind a blank end with a word; at most `fit`.
int whole_words(std::string_view text, int fit) {
    const int period = static_cast<int>(text.size()) + 1;
    const auto inside = [&](int i) {
        return i % period != period - 1 && text[static_cast<size_t>(i % period)] != ' ';
    };
    while (fit > 0 && inside(fit))
        --fit;
    return fit;
}

// Lines of print on paper, each scale of the font twice, coloured inks among them.
Panel text_panel(int width, int height, uint64_t) {
    struct Line {
        int scale;
        uint32_t ink;
        const char *text;
    };
    static constexpr Line LINES[] = {
        {2, 0x1A1A1A, "COLOUR FILTER ARRAY"},
        {1, 0x1A1A1A, "0123456789 THE QUICK BROWN FOX JUMPS OVER THE LAZY DOG"},
        {1, 0xB01020, "RED INK 24680 PACK MY BOX WITH FIVE DOZEN LIQUOR JUGS"},
        {1, 0x1030B0, "BLUE INK 13579 HOW VEXINGLY QUICK DAFT ZEBRAS JUMP"},
        {3, 0x1A1A1A, "MOIRE 12 BIT"},
        {1, 0x107030, "GREEN INK 08642 SPHINX OF BLACK QUARTZ JUDGE MY VOW"},
    };
    const Rgb paper = colour(0xF3EEDF);
    return [=](int u, int v, const Rgb &) {
        int top = 4;
        for (int i = 0;; ++i) {
            const Line &line = LINES[i % 6];
            const int bottom = top + line.scale * 8;
            if (bottom + 2 > height)
                return paper;
            if (v >= top && v < bottom) {
                const int letters = whole_words(line.text, (width - 10) / (6 * line.scale));
                const int column = (u - 5) / line.scale;
                if (u < 5 || column >= 6 * letters)
                    return paper;
                return font_dot(line.text, column, (v - top) / line.scale) ? colour(line.ink) : paper;
            }
            top = bottom + 2 * line.scale;
        }
    };
}

// Line pairs, getting finer block by block to two pixels: black, red and blue on white, green on magenta.
Panel bars_panel(int width, int height, uint64_t) {
    static constexpr uint32_t INKS[4][2] = {
        {0x101010, 0xF0F0F0}, {0xD01818, 0xF0F0F0}, {0x1838D0, 0xF0F0F0}, {0x18A030, 0xD050C0}};
    static constexpr int64_t TENTHS[6] = {80, 50, 35, 28, 24, 20}; // of a pixel from line to line
    return [=](int u, int v, const Rgb &) {
        const uint32_t *ink = INKS[int64_t{v} * 4 / height];
        const int64_t turns = int64_t{u} * 655360 / TENTHS[int64_t{u} * 6 / width];
        return mix(colour(ink[0]), colour(ink[1]), swing(turns + 16384));
    };
}

} // namespace cfatool
