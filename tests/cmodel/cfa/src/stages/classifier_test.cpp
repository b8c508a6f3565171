#include <algorithm>

#include <doctest/doctest.h>

#include "cmodel/cfa/src/kit/fixed_point.h"
#include "cmodel/cfa/src/stages.h"
#include "tests/support/planes.h"

namespace {

struct Planes {
    Plane LH, LV, LMax, RatioH, RatioV;

    Planes(const Plane &raw, uint32_t id)
        : LH(raw, 1), LV(raw, 1), LMax(raw, 1), RatioH(raw, 1), RatioV(raw, 1) {
        cfa_CalClassifier(raw, LH, LV, LMax, RatioH, RatioV, id);
    }
};

// One pixel along one direction: step i along it, j across it.
struct Slow {
    const Plane &raw;
    int y, x;
    bool vertical;

    int32_t P(int i, int j) const { return vertical ? raw(y + i, x + j) : raw(y + j, x + i); }
    int32_t step(int i0, int i1, int j) const { return absolute(P(i0, j) - P(i1, j)); }

    int32_t activity(bool red_blue) const {
        const int32_t own = step(0, -2, 0) + step(0, 2, 0);
        const int32_t diagonal = step(-1, 1, -1) + step(-1, 1, 1);
        const int32_t outer = step(-2, 0, -1) + step(0, 2, -1) + step(-2, 0, 1) + step(0, 2, 1);
        return (red_blue ? own >> 1 : own) + (diagonal >> 1) + step(-1, 1, 0) + (outer >> (red_blue ? 1 : 2));
    }
    int32_t ratio() const {
        const int32_t green = (P(-1, 0) + P(1, 0)) >> 1;
        const int32_t own = (P(-2, 0) + P(0, 0) + P(0, 0) + P(2, 0)) >> 2;
        return std::min(4095, (green * get_inv(own)) >> 3);
    }
};

} // namespace

TEST_CASE("cfa_CalClassifier: flat fields, a step, a green peak, no own colour") {
    const int32_t flat[][2] = {{100, 4087}, {2048, 3840}, {1, 4095}, {0, 0}}; // value, ratio
    for (const auto &row : flat) {
        const Planes p(Plane(6, 5, 1, row[0]), 0);
        expect_plane("LMax", p.LMax, [](int, int, int) { return 0; });
        expect_plane("RatioV", p.RatioV, [&](int y, int x, int) { return y % 2 == x % 2 ? row[1] : 0; });
    }
    // Columns 0 to 2 are 100, the others 200. Blue (2, 2) counts 50 + 100 + 100 + 2 * 100 / 2, green (3, 2)
    // 100 + 100 + 100 + 2 * 100 / 4, green (2, 1) 100 + 0 + 0 + 2 * 100 / 4.
    Plane raw(6, 6, 1, 100);
    for (int y = 0; y < 6; y++)
        for (int x = 3; x < 6; x++)
            raw.set(y, x, 0, 200);
    const Planes step(raw, 0);
    CHECK(step.LH(2, 2) == 350);
    CHECK(step.LH(3, 2) == 350);
    CHECK(step.LH(2, 1) == 150);
    CHECK(step.LMax(2, 2) == 350);
    expect_plane("LV", step.LV, [](int, int, int) { return 0; });

    const Planes no_blue(flat_colors(6, 6, 0, 100, 7, 0), 0);
    CHECK(no_blue.RatioH(2, 2) == 4095); // 7 * 32768 >> 3, limited
}

TEST_CASE("cfa_CalClassifier: every plane of every site") {
    for_each_mosaic([](const Plane &raw, uint32_t id) {
        const Planes p(raw, id);
        const auto red_blue = [id](int y, int x) { return code_at(y, x, id) == 0 || code_at(y, x, id) == 3; };
        const auto activity = [&](int y, int x, bool vertical) {
            return Slow{raw, y, x, vertical}.activity(red_blue(y, x));
        };
        const auto ratio = [&](int y, int x, bool vertical) {
            return red_blue(y, x) ? Slow{raw, y, x, vertical}.ratio() : 0;
        };
        expect_plane("LH", p.LH, [&](int y, int x, int) { return limited(activity(y, x, false), 32767); });
        expect_plane("LV", p.LV, [&](int y, int x, int) { return limited(activity(y, x, true), 32767); });
        expect_plane("LMax", p.LMax, [&](int y, int x, int) {
            return std::max(activity(y, x, false), activity(y, x, true));
        });
        expect_plane("RatioH", p.RatioH, [&](int y, int x, int) { return ratio(y, x, false); });
        expect_plane("RatioV", p.RatioV, [&](int y, int x, int) { return ratio(y, x, true); });
    });
}
