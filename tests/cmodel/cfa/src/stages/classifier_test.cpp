#include <doctest/doctest.h>

#include "cmodel/cfa/src/stages.h"
#include "tests/support/planes.h"

using namespace cfa;

namespace {

struct Planes {
    Plane LH, LV, LMax, RatioH, RatioV;

    Planes(const Plane &raw, uint32_t id)
        : LH(raw, 1), LV(raw, 1), LMax(raw, 1), RatioH(raw, 1), RatioV(raw, 1) {
        cfa_CalClassifier(raw, LH, LV, LMax, RatioH, RatioV, id);
    }
};

// Columns 0 to 2 are low, the others high; or rows.
Planes at_step(int32_t low, int32_t high, bool in_column = false) {
    Plane raw(6, 6, 1, low);
    for (int i = 0; i < 18; i++)
        in_column ? raw.set(3 + i % 3, i / 3, 0, high) : raw.set(i / 3, 3 + i % 3, 0, high);
    return {raw, 0};
}

} // namespace

TEST_CASE("cfa_CalClassifier: flat fields") {
    // Value and ratio; of a value below 1 the reciprocal is 32768.
    const int32_t flat[][2] = {{100, 4087}, {2048, 3840}, {1, 4095}, {0, 0}, {-257, -1052672}};
    for (const auto &row : flat) {
        const Planes p(Plane(6, 5, 1, row[0]), 0);
        expect_plane("LMax", p.LMax, [](int, int, int) { return 0; });
        expect_plane("RatioV", p.RatioV, [&](int y, int x, int) { return y % 2 == x % 2 ? row[1] : 0; });
    }
    const int32_t green[][2] = {{7, 4095}, {65536, -268435456}}; // over no blue: limited; 2^31 wraps
    for (const auto &row : green)
        CHECK(Planes(flat_colors(6, 6, 0, 100, row[0], 0), 0).RatioH(2, 2) == row[1]);
    Plane pit(6, 6); // one of two greens below 0: -257 >> 1 is -129
    pit.set(2, 1, 0, -257);
    pit.set(1, 4, 0, -257);
    CHECK(Planes(pit, 0).RatioH(2, 2) == -528384);
    CHECK(Planes(pit, 0).RatioV(2, 4) == -528384);
}

TEST_CASE("cfa_CalClassifier: a step") {
    // Blue (2, 2) counts 50 + 100 + 100 + 2 * 100 / 2, green (3, 2) 100 + 100 + 100 + 2 * 100 / 4,
    // green (2, 1) 100 + 0 + 0 + 2 * 100 / 4.
    const Planes step = at_step(100, 200);
    CHECK(step.LH(2, 2) == 350);
    CHECK(step.LH(3, 2) == 350);
    CHECK(step.LH(2, 1) == 150);
    expect_plane("LV", step.LV, [](int, int, int) { return 0; });

    // Only LH and LV are limited. Sums of two wrap: 2^29 - 2^30 + 2^30 - 2^30.
    struct {
        int32_t high, limited, largest;
    } const deep[] = {{65534, 32767, 229369}, {1 << 30, 0, 0}};
    for (const auto &row : deep) {
        CAPTURE(row.high);
        const Planes across = at_step(0, row.high), down = at_step(0, row.high, true);
        CHECK(across.LH(2, 2) == row.limited);
        CHECK(across.LMax(2, 2) == row.largest);
        CHECK(down.LV(2, 2) == row.limited);
        CHECK(down.LMax(2, 2) == row.largest);
    }
}
