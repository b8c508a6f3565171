#include <doctest/doctest.h>

#include "cmodel/cfa/src/stages.h"
#include "tests/support/planes.h"

namespace {

struct Planes {
    Plane SigH, SigV;

    Planes(const Plane &raw, const Plane &GH, const Plane &GV, uint32_t id)
        : SigH(raw.width(), raw.height(), 1, -7), SigV(raw.width(), raw.height(), 1, -7) {
        const Plane d0h(raw, 1), d0v(raw, 1), d3h(raw, 1), d3v(raw, 1);
        cfa_CalVarOfColorDiffAtRB(raw, GH, GV, d0h, d0v, d3h, d3v, SigH, SigV, id);
    }
};

constexpr int mask[5][5] = {
    {0, 1, 1, 1, 0}, {0, 0, 0, 0, 0}, {1, 4, 8, 4, 1}, {0, 0, 0, 0, 0}, {0, 1, 1, 1, 0}};

// Estimate of the colour of code `own` inside the plane.
int32_t estimate(const Plane &raw, uint32_t id, int own, int y, int x) {
    const int code = code_at(y, x, id);
    if (code == own)
        return raw(y, x);
    if (code == (own == 0 ? 1 : 2))
        return (raw(y, x - 1) + raw(y, x + 1)) / 2;
    if (code == (own == 0 ? 2 : 1))
        return (raw(y - 1, x) + raw(y + 1, x)) / 2;
    return code > 3 ? 0 : (raw(y - 1, x - 1) + raw(y - 1, x + 1) + raw(y + 1, x - 1) + raw(y + 1, x + 1)) / 4;
}

// The masked measure with sums and counts per line; the vertical one transposes the whole window.
int32_t measure(const Plane &raw, const Plane &G, uint32_t id, int y, int x, bool vertical) {
    const int own = code_at(y, x, id);
    int32_t diff[5][5], sum[5] = {}, count[5] = {}, total = 0;
    for (int line = 0; line < 5; line++)
        for (int k = 0; k < 5; k++) {
            const int row = reflected(y + (vertical ? k : line) - 2, raw.height());
            const int col = reflected(x + (vertical ? line : k) - 2, raw.width());
            diff[line][k] = absolute(G(row, col, 1) - estimate(raw, id, own, row, col));
            if (mask[line][k] != 0) {
                sum[line] += diff[line][k];
                count[line]++;
            }
        }
    for (int line = 0; line < 5; line++)
        for (int k = 0; k < 5; k++)
            total += mask[line][k] * absolute(sum[line] - diff[line][k] * count[line]);
    return limited(total, 131071);
}

} // namespace

TEST_CASE("cfa_CalVarOfColorDiffAtRB: a single difference of 1, by hand") {
    const Plane raw(9, 9);
    Plane GH(9, 9, 3), GV(9, 9, 3);
    GH.set(4, 4, 1, 1); // blue under pattern 0
    const Planes p(raw, GH, GV, 0);
    CHECK(p.SigH(4, 4) == 1 + 4 + 8 * 4 + 4 + 1); // in the centre, one from a sum of 1, itself four
    CHECK(p.SigH(4, 2) == 1 + 4 + 8 + 4 + 1 * 4); // at the end of the centre line
    CHECK(p.SigH(2, 4) == 1 + 2 + 1);             // in the middle of an outer line of three
    CHECK(p.SigH(5, 5) == 0);                     // red: a row apart, no weight
    CHECK(p.SigH(3, 3) == 0);
    CHECK(p.SigH(4, 3) == -7); // green: left alone
    expect_plane("SigV", p.SigV, [](int y, int x, int) { return y % 2 == x % 2 ? 0 : -7; });
}

TEST_CASE("cfa_CalVarOfColorDiffAtRB: every site") {
    for_each_mosaic([](const Plane &raw, uint32_t id) {
        Noise noise(id);
        for (int32_t range : {1, 100, 4095}) { // around a flat 2000 as well, so that not all is limited
            const Plane source = range == 100 ? noise.plane(raw.width(), raw.height(), 1, 1990, 2010) : raw;
            const int32_t low = range == 100 ? 2000 : 0;
            const Plane GH = noise.plane(raw.width(), raw.height(), 3, low, low + range);
            const Plane GV = noise.plane(raw.width(), raw.height(), 3, low, low + range);
            const Planes p(source, GH, GV, id);
            const auto want = [&](const Plane &G, int y, int x, bool vertical) {
                const int code = code_at(y, x, id);
                return code == 0 || code == 3 ? measure(source, G, id, y, x, vertical) : -7;
            };
            expect_plane("SigH", p.SigH, [&](int y, int x, int) { return want(GH, y, x, false); });
            expect_plane("SigV", p.SigV, [&](int y, int x, int) { return want(GV, y, x, true); });
        }
    });
}
