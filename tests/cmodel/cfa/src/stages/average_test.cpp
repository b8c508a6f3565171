#include <doctest/doctest.h>

#include "cmodel/cfa/src/stages.h"
#include "tests/support/planes.h"

using namespace cfa;

TEST_CASE("cfa_CalAvg: flat colours stay, but for the twelfths at green sites") {
    for (uint32_t id = 0; id < 4; id++) {
        CAPTURE(id);
        const Plane raw = flat_colors(6, 5, id, 3000, 4095, 402);
        const Plane avg(raw, 3);
        cfa_CalAvg(raw, avg, id);
        const int32_t at_red_blue[] = {3000, 4095, 402};
        const int32_t at_green[] = {2988, 4095, 400}; // (36000 * 85 + 512) >> 10, (4824 * 85 + 512) >> 10
        expect_plane("AvgRGB", avg, [&](int y, int x, int c) {
            return code_at(y, x, id) % 3 == 0 ? at_red_blue[c] : at_green[c];
        });
    }
    const Plane bright(4, 4, 1, 4095), avg(bright, 3);
    cfa_CalAvg(bright, avg, 0);
    CHECK(avg(0, 0, 0) == 4095);
    CHECK(avg(0, 1, 0) == 4079); // 4095 * 12 * 85 >> 10
    for (const auto &[sample, limit] : {std::pair{65535, 4095}, std::pair{-257, 0}}) {
        cfa_CalAvg(Plane(4, 4, 1, sample), avg, 0);
        expect_plane("limited", avg, [limit = limit](int, int, int) { return limit; });
    }
}

TEST_CASE("cfa_CalAvg: codes beyond 3 repeat the last values in scan order, 0 before the first") {
    Plane raw(5, 3), avg(raw, 3);
    raw.set(0, 1, 0, 800);
    cfa_CalAvg(raw, avg, 8); // red at (0, 1) and (2, 3), blue at (0, 3) and (2, 1), no other code below 4
    // Own colours: red 5 * 800 / 8, where column -1 is column 1; blue beside it 800 / 8; below it 2 * 800
    // / 8.
    const int32_t red[] = {0, 500, 500, 0, 0},
                  blue[] = {0, 0, 0, 100, 100, 100, 100, 100, 100, 100, 100, 200, 200, 0, 0};
    expect_plane("AvgRGB", avg, [&](int y, int x, int c) {
        return c == 2 ? blue[5 * y + x] : c == 0 && y == 0 ? red[x] : 0;
    });
}
