#include <doctest/doctest.h>

#include "cmodel/cfa/src/stages.h"
#include "tests/support/planes.h"

using namespace cfa;

namespace {

struct Planes {
    Plane Diff0H, SigH, SigV;

    Planes(const Plane &raw, const Plane &GH, const Plane &GV)
        : Diff0H(raw, 1), SigH(raw.width(), raw.height(), 1, -7), SigV(raw.width(), raw.height(), 1, -7) {
        const Plane d0v(raw, 1), d3h(raw, 1), d3v(raw, 1);
        cfa_CalVarOfColorDiffAtRB(raw, GH, GV, Diff0H, d0v, d3h, d3v, SigH, SigV, 0);
    }
};

} // namespace

TEST_CASE("cfa_CalVarOfColorDiffAtRB: a single difference, by hand") {
    const Plane zero(9, 9), none(9, 9, 3);
    Plane peak(9, 9, 3);
    peak.set(4, 4, 1, 1); // blue
    const Planes p(zero, peak, none);
    CHECK(p.SigH(4, 4) == 1 + 4 + 8 * 4 + 4 + 1); // in the centre, one from a sum of 1, itself four
    CHECK(p.SigH(4, 2) == 1 + 4 + 8 + 4 + 1 * 4); // at the end of the centre line
    CHECK(p.SigH(2, 4) == 1 + 2 + 1);             // in the middle of an outer line of three
    CHECK(p.SigH(5, 5) == 0);                     // red: a row apart, no weight
    CHECK(p.SigH(3, 3) == 0);
    CHECK(p.SigH(4, 3) == -7); // green: left alone
    expect_plane("SigV", p.SigV, [](int y, int x, int) { return y % 2 == x % 2 ? 0 : -7; });
    expect_plane("transposed", Planes(zero, none, peak).SigV,
                 [&](int y, int x, int) { return p.SigH(x, y); });
    peak.set(4, 4, 1, 1 << 26); // 42 times that wraps below 0
    CHECK(Planes(zero, peak, none).SigH(4, 4) == 0);

    // A sample below 0: the estimates beside, below and diagonally are truncated toward zero.
    Plane raw(9, 9);
    raw.set(4, 4, 0, -1);
    const Planes below(raw, none, none);
    expect_plane("Diff0H", below.Diff0H, [](int y, int x, int) { return y == 4 && x == 4 ? 1 : 0; });
    CHECK(below.SigH(4, 4) == 42);
    CHECK(below.SigV(4, 4) == 42);
}
