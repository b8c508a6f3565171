#include <doctest/doctest.h>

#include "cmodel/cfa/src/stages.h"
#include "tests/support/planes.h"
#include "tests/support/registers.h"

using namespace cfa;

namespace {

struct Evidence {
    Plane avg, LH, LV, SigH, SigV;

    Plane decided(uint32_t id) const {
        Plane dir(LH, 1);
        cfa_CalDirectionInfo(LH, avg, LH, LV, SigH, SigV, dir, id);
        return dir;
    }
};

} // namespace

TEST_CASE_FIXTURE(FreshRegisters, "cfa_CalDirectionInfo: a flat picture") {
    const Plane zero(5, 4);
    const Evidence bright{Plane(5, 4, 3, 320), zero, zero, zero, zero};
    const Evidence dark{Plane(5, 4, 3, 319), zero, zero, zero, zero};
    // The right neighbour's tie votes vertical, and so do all who follow; the last row is no boundary.
    expect_plane("bright", bright.decided(0),
                 [](int y, int x, int) { return y == 0 || x == 0 || x == 4 ? 0 : 2; });
    expect_plane("dark", dark.decided(0), [](int y, int x, int) {
        return y == 0 || x == 0 || x == 4 || y % 2 != x % 2 ? 0 : 2; // greens do not vote
    });
}

TEST_CASE_FIXTURE(FreshRegisters, "cfa_Vote: by hand") {
    // Above 1 2 1, left 1; right by variance 1, below by activity 2 2 1, all but the left one strong.
    const Plane dir(3, 3, 1, {1, 2, 1, 1, 0, 0, 0, 0, 0});
    const Plane SigH(3, 3, 1, {0, 0, 0, 0, 9, 5, 0, 0, 0}), SigV(3, 3, 1, {0, 0, 0, 0, 0, 6, 0, 0, 0});
    const Plane LH(3, 3, 1, {0, 0, 0, 0, 0, 1500, 1499, 1500, 7}),
        LV(3, 3, 1, {0, 0, 0, 0, 0, 0, 1499, 3, 2000});
    int32_t h = 100, v = 200; // counts are added to
    cfa_Vote(1, 1, 2, &h, &v, SigH, SigV, LH, LV, dir);
    CHECK(h == 100 + 1 + 1 + 2 + 1 + 1 + 1); // above left and right, left, right twice, below right
    CHECK(v == 200 + 2 + 4 + 2);             // above, the prior, below
    cfa_Vote(1, 1, 0, &h, &v, SigH, SigV, LH, LV, dir);
    CHECK(v == 208 + 4); // a prior of 0 adds nothing
}

TEST_CASE_FIXTURE(FreshRegisters, "cfa_CalDirectionInfo: where one rule ends and the next begins") {
    const auto at = [](int x, int32_t lh, int32_t lv, int32_t sh, int32_t sv, int32_t luma) {
        const auto plane = [](int32_t v) { return Plane(4, 4, 1, v); };
        return Evidence{Plane(4, 4, 3, luma), plane(lh), plane(lv), plane(sh), plane(sv)}.decided(0)(2, x);
    };
    const auto at_blue = [&](auto... evidence) { return at(2, evidence..., 0); };
    const auto at_green = [&](auto... evidence) { return at(1, evidence..., 320); };
    // 200 * 1 against the larger activity; the variances say vertical.
    CHECK(at_blue(1, 201, 9000, 0) == 1);
    CHECK(at_blue(1, 200, 9000, 0) == 2);
    CHECK(at_green(1, 201, 9000, 0) == 1);
    CHECK(at_green(1, 200, 9000, 0) == 2);
    // Decisive, but for a tolerance of 512 not by twice the smaller activity.
    cfa_reg.hw.reg_cfa_edgee_thd = 0;
    cfa_reg.hw.reg_cfa_edge_tol = 512;
    CHECK(at_blue(100, 200, 0, 0) == 1);
    CHECK(at_blue(100, 199, 0, 0) == 0);
    CHECK(at_blue(50, 50, 9, 0) == 0);
    cfa_reg.hw.reg_cfa_edgee_thd2 = 0; // greens have no such tolerance
    CHECK(at_green(100, 101, 0, 0) == 1);
    CHECK(at_green(50, 50, 9, 0) == 0);
    cfa_reg.hw.reg_cfa_edgee_thd2 = 4000;
    // 2 * 1 against a quarter of the larger variance: 2 is decisive, below it there is a vote.
    cfa_reg.hw.reg_cfa_edgee_thd = 4000;
    cfa_reg.hw.reg_cfa_sige_thd = 2;
    cfa_reg.hw.reg_cfa_gsig_tol = 4000;
    CHECK(at_blue(1, 1, 1, 8) == 1);
    CHECK(at_blue(1, 1, 1, 7) == 0); // the vote does not count: 7 < 4000 >> 5
    cfa_reg.hw.reg_cfa_rbsig_tol = 4000;
    CHECK(at_green(1, 1, 1, 125) == 1);
    CHECK(at_green(1, 1, 1, 124) == 0);
    CHECK(at(1, 1, 1, 1, 124, 319) == 1); // too dark to vote
    cfa_reg.hw.reg_cfa_rb_vt_enable = 0;
    CHECK(at_green(1, 1, 1, 124) == 1);
    // The threshold's product has 64 bits: a vote, vertical by its neighbours.
    cfa_reg.hw.reg_cfa_sige_thd = 4095;
    cfa_reg.hw.reg_cfa_gsig_tol = 0;
    CHECK(at_blue(1, 1, 1 << 30, 1 << 30) == 2);
}
