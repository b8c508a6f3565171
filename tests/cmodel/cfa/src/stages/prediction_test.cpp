#include <algorithm>

#include <doctest/doctest.h>

#include "cmodel/cfa/src/stages.h"
#include "tests/support/planes.h"

namespace {

struct Planes {
    Plane GH, GV, GH_lp, GH_hp, GV_lp, GV_hp, MaxRGB, MinRGB;

    Planes(const Plane &raw, uint32_t id)
        : GH(raw, 3), GV(raw, 3), GH_lp(raw, 1), GH_hp(raw, 1), GV_lp(raw, 1), GV_hp(raw, 1), MaxRGB(raw, 3),
          MinRGB(raw, 3) {
        cfa_CalPredictPixel(raw, GH, GV, GH_lp, GH_hp, GV_lp, GV_hp, MaxRGB, MinRGB, id);
    }
};

// The formulas sample by sample; (ey, ex) is the unit step of the direction.
struct Slow {
    const Plane &raw;
    uint32_t id;
    int ey, ex;

    bool green_site(int y, int x) const { return code_at(y, x, id) == 1 || code_at(y, x, id) == 2; }
    int32_t lp(int y, int x) const {
        if (code_at(y, x, id) > 3)
            return 0; // untouched
        return green_site(y, x) ? raw(y, x) : (raw(y - ey, x - ex) + raw(y + ey, x + ex) + 1) >> 1;
    }
    int32_t hp(int y, int x) const {
        if (code_at(y, x, id) % 3 != 0 || code_at(y, x, id) > 3)
            return 0;
        return (2 * raw(y, x) - raw(y - 2 * ey, x - 2 * ex) - raw(y + 2 * ey, x + 2 * ex)) >> 2;
    }
    int32_t green(int y, int x) const {
        return green_site(y, x) ? raw(y, x) : limited(lp(y, x) + hp(y, x), 4095);
    }
    // Colour minus green at a position that may lie outside.
    int32_t difference(int y, int x) const {
        const int row = reflected(y, raw.height()), col = reflected(x, raw.width());
        return raw(row, col) - green(row, col);
    }
    int32_t color(int y, int x, int c) const {
        const int code = code_at(y, x, id);
        if (c == 1)
            return green(y, x);
        if (code == 0 || code == 3) {
            if (c == (code == 3 ? 0 : 2))
                return raw(y, x);
            int32_t sum = 0;
            for (int k = 0; k < 4; k++)
                sum += difference(y + k / 2 * 2 - 1, x + k % 2 * 2 - 1);
            return limited(green(y, x) + (sum >> 2), 4095);
        }
        const bool in_row = (c == 0) == (code != 1);
        const int32_t pair = in_row ? difference(y, x - 1) + difference(y, x + 1)
                                    : difference(y - 1, x) + difference(y + 1, x);
        return limited(raw(y, x) + (pair >> 1), 4095);
    }
};

// The samples of colour c around a site.
std::vector<int32_t> group(const Plane &raw, uint32_t id, int y, int x, int c) {
    const int code = code_at(y, x, id);
    if (code > 3)
        return {0}; // untouched
    if (code == 0 || code == 3) {
        if (c == 1)
            return picked(raw, y, x, ".1.1. 1.1.1 .1.1. 1.1.1 .1.1.");
        return picked(raw, y, x, c == (code == 3 ? 0 : 2) ? "..1.. ..... 1.1.1 ..... ..1.." : "1.1 ... 1.1");
    }
    if (c == 1)
        return picked(raw, y, x, "..1.. .1.1. 1.1.1 .1.1. ..1..");
    return picked(raw, y, x,
                  (c == 0) == (code == 2) ? ".1.1. ..... .1.1. ..... .1.1."
                                          : "..... 1.1.1 ..... 1.1.1 .....");
}

} // namespace

TEST_CASE("cfa_CalPredictPixel: flat colours, a peak, a pit") {
    for (uint32_t id = 0; id < 4; id++) {
        const Plane raw = flat_colors(5, 4, id, 3000, 1001, 402);
        const Planes p(raw, id);
        const int32_t want[] = {3000, 1001, 402};
        for (const Plane *plane : {&p.GH, &p.GV, &p.MaxRGB, &p.MinRGB})
            expect_plane("flat", *plane, [&](int, int, int c) { return want[c]; });
        expect_plane("GH_lp", p.GH_lp, [](int, int, int) { return 1001; });
        expect_plane("GV_hp", p.GV_hp, [](int, int, int) { return 0; });
    }
    Plane raw(7, 7, 1, 200); // id 0: (2, 2) and (4, 4) are blue
    raw.set(2, 2, 0, 300);
    raw.set(4, 4, 0, 199);
    raw.set(5, 2, 0, 5000); // green
    const Planes p(raw, 0);
    CHECK(p.GH_hp(2, 2) == 50);
    CHECK(p.GH(2, 2, 1) == 250);
    CHECK(p.GV_hp(4, 4) == -1);   // -2 >> 2 rounds down
    CHECK(p.GV_hp(2, 4) == 0);    // 1 >> 2
    CHECK(p.GH_hp(2, 0) == -50);  // at the border both neighbours are column 2: -200 >> 2
    CHECK(p.GV(5, 2, 1) == 5000); // green at a green site is not clipped
    CHECK(p.GV_lp(4, 2) == 2600);
}

TEST_CASE("cfa_CalPredictPixel: every plane of every site") {
    for_each_mosaic([](const Plane &raw, uint32_t id) {
        const Planes p(raw, id);
        const Slow h{raw, id, 0, 1}, v{raw, id, 1, 0};
        expect_plane("GH_lp", p.GH_lp, [&](int y, int x, int) { return h.lp(y, x); });
        expect_plane("GH_hp", p.GH_hp, [&](int y, int x, int) { return h.hp(y, x); });
        expect_plane("GV_lp", p.GV_lp, [&](int y, int x, int) { return v.lp(y, x); });
        expect_plane("GV_hp", p.GV_hp, [&](int y, int x, int) { return v.hp(y, x); });
        expect_plane("GH", p.GH, [&](int y, int x, int c) { return h.color(y, x, c); });
        expect_plane("GV", p.GV, [&](int y, int x, int c) { return v.color(y, x, c); });
        expect_plane("MaxRGB", p.MaxRGB, [&](int y, int x, int c) {
            const auto samples = group(raw, id, y, x, c);
            return *std::max_element(samples.begin(), samples.end());
        });
        expect_plane("MinRGB", p.MinRGB, [&](int y, int x, int c) {
            const auto samples = group(raw, id, y, x, c);
            return *std::min_element(samples.begin(), samples.end());
        });
    });
}
