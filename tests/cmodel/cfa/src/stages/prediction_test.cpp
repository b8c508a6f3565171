#include <doctest/doctest.h>

#include "cmodel/cfa/src/stages.h"
#include "tests/support/planes.h"

using namespace cfa;

namespace {

struct Planes {
    Plane GH, GV, GH_lp, GH_hp, GV_lp, GV_hp, MaxRGB, MinRGB;

    Planes(const Plane &raw, uint32_t id)
        : GH(raw, 3), GV(raw, 3), GH_lp(raw, 1), GH_hp(raw, 1), GV_lp(raw, 1), GV_hp(raw, 1), MaxRGB(raw, 3),
          MinRGB(raw, 3) {
        cfa_CalPredictPixel(raw, GH, GV, GH_lp, GH_hp, GV_lp, GV_hp, MaxRGB, MinRGB, id);
    }
};

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

TEST_CASE("cfa_CalPredictPixel: samples below 0 and beyond 12 bits") {
    Plane raw(7, 7, 1, 200);
    raw.set(2, 3, 0, -256); // green
    raw.set(4, 4, 0, -257); // blue
    raw.set(4, 2, 0, 65535);
    const Planes p(raw, 0);
    CHECK(p.GH_lp(2, 2) == -28); // -55 >> 1 rounds down
    CHECK(p.GV_lp(3, 3) == -28);
    CHECK(p.GH(2, 2, 1) == 0);
    CHECK(p.MinRGB(2, 2, 1) == -256);
    CHECK(p.MaxRGB(4, 4, 2) == 65535);
    CHECK(p.GV(4, 4, 2) == -257); // own colours are not limited
    CHECK(p.GV(4, 2, 2) == 65535);
    CHECK(p.GV(4, 2, 1) == 4095);
    CHECK(p.GV(4, 2, 0) == 4095);
    CHECK(p.GV(4, 3, 2) == 4095); // 200 + (65535 - 4095 - 257) / 2
    CHECK(p.GV(4, 5, 2) == 71);   // 200 + (-257 >> 1)
    // The pit lifts the green of (2, 4) by 457 >> 2: 200 + ((-257 + 200 - 314) >> 2).
    CHECK(p.GV(3, 5, 2) == 107);
}
