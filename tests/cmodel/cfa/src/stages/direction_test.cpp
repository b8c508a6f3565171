#include <algorithm>

#include <doctest/doctest.h>

#include "cmodel/cfa/src/stages.h"
#include "tests/support/planes.h"
#include "tests/support/registers.h"

namespace {

int32_t smaller(int32_t a, int32_t b) {
    return a == b ? 0 : a < b ? 1 : 2;
}

struct Evidence {
    Plane avg, LH, LV, SigH, SigV;

    Plane decided(uint32_t id) const {
        Plane dir(LH, 1);
        cfa_CalDirectionInfo(LH, avg, LH, LV, SigH, SigV, dir, id);
        return dir;
    }
};

// The votes as a table of nine voters in their order; the last four may vote by strength.
std::pair<int32_t, int32_t> votes(const Evidence &e, const Plane &dir, int y, int x, int32_t prior) {
    const auto by_activity = [&](int dx) { return e.LH(y + 1, x + dx) < e.LV(y + 1, x + dx) ? 1 : 2; };
    const auto strength = [&](int dy, int dx) {
        return std::max(e.LH(y + dy, x + dx), e.LV(y + dy, x + dx));
    };
    const int32_t d[9] = {dir(y - 1, x - 1), dir(y - 1, x),  dir(y - 1, x + 1),
                          dir(y, x - 1),     prior,          e.SigH(y, x + 1) < e.SigV(y, x + 1) ? 1 : 2,
                          by_activity(-1),   by_activity(0), by_activity(1)};
    const int32_t w[9] = {1, 2, 1, 2, 4, 1, 1, 2, 1};
    const int32_t s[9] = {0, 0, 0, 0, 0, strength(0, 1), strength(1, -1), strength(1, 0), strength(1, 1)};
    int32_t count[3] = {};
    for (int i = 0; i <= 5; i++)
        count[d[i]] += w[i];
    for (int i = 5; i <= 8; i++)
        if (s[i] >= reg("reg_cfa_vw_thd"))
            count[d[i]] += w[i];
    return {count[1], count[2]};
}

int32_t direction(const Evidence &e, const Plane &dir, uint32_t id, int y, int x) {
    const int code = code_at(y, x, id);
    if (code > 3)
        return 0;
    const bool green = code == 1 || code == 2;
    const int32_t lh = e.LH(y, x), lv = e.LV(y, x), sh = e.SigH(y, x), sv = e.SigV(y, x);
    const int32_t l_max = std::max(lh, lv), l_min = std::min(lh, lv);
    const int32_t s_max = std::max(sh, sv), s_min = std::min(sh, sv);

    if (l_max > reg(green ? "reg_cfa_edgee_thd2" : "reg_cfa_edgee_thd") * std::max(1, l_min >> 5))
        return green || l_max >= (l_min * reg("reg_cfa_edge_tol")) >> 8 ? smaller(lh, lv) : 0;

    const int32_t luma = (307 * e.avg(y, x, 0) + 615 * e.avg(y, x, 1) + 102 * e.avg(y, x, 2)) >> 10;
    const bool vote = green ? reg("reg_cfa_rb_vt_enable") == 1 && luma >= reg("reg_cfa_rbsig_luma_thd")
                            : int64_t{reg("reg_cfa_sige_thd")} * std::max(1, s_min >> 7) > s_max >> 2;
    if (!vote || y == 0 || x == 0 || x == e.LH.width() - 1)
        return smaller(sh, sv);
    if (s_max < (s_min * reg(green ? "reg_cfa_rbsig_tol" : "reg_cfa_gsig_tol")) >> 5)
        return 0;
    const auto [h, v] = votes(e, dir, y, x, smaller(sh, sv));
    return smaller(v, h);
}

void compare(const Evidence &e, uint32_t id) {
    Plane want(e.LH, 1);
    for (int y = 0; y < want.height(); y++)
        for (int x = 0; x < want.width(); x++)
            want.set(y, x, 0, direction(e, want, id, y, x));
    expect_plane("DirInfo", e.decided(id), [&](int y, int x, int) { return want(y, x); });
}

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

TEST_CASE_FIXTURE(FreshRegisters, "cfa_Vote and isAtBoundary: by hand") {
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

    const Plane plane(4, 3);
    for (int y = 0; y < 3; y++)
        for (int x = 0; x < 4; x++)
            CHECK(isAtBoundary(plane, x, y) == (x == 0 || x == 3 || y == 0 ? 1 : 0));
}

TEST_CASE_FIXTURE(FreshRegisters, "cfa_CalDirectionInfo: where one rule ends and the next begins") {
    const auto at_blue = [](int32_t lh, int32_t lv, int32_t sh, int32_t sv) {
        const auto plane = [](int32_t v) { return Plane(4, 4, 1, v); };
        return Evidence{Plane(4, 4, 3), plane(lh), plane(lv), plane(sh), plane(sv)}.decided(0)(2, 2);
    };
    // 200 * 1 against the larger activity; the variances say vertical.
    CHECK(at_blue(1, 201, 9000, 0) == 1);
    CHECK(at_blue(1, 200, 9000, 0) == 2);
    // Decisive, but for a tolerance of 512 not by twice the smaller activity.
    cfa_reg.hw.reg_cfa_edgee_thd = 0;
    cfa_reg.hw.reg_cfa_edge_tol = 512;
    CHECK(at_blue(100, 200, 0, 0) == 1);
    CHECK(at_blue(100, 199, 0, 0) == 0);
    CHECK(at_blue(50, 50, 9, 0) == 0);
    // 2 * 1 against a quarter of the larger variance: 2 is decisive, below it there is a vote.
    cfa_reg.hw.reg_cfa_edgee_thd = 4000;
    cfa_reg.hw.reg_cfa_sige_thd = 2;
    cfa_reg.hw.reg_cfa_gsig_tol = 4000;
    CHECK(at_blue(1, 1, 1, 8) == 1);
    CHECK(at_blue(1, 1, 1, 7) == 0); // the vote does not count: 7 < 4000 >> 5
    // The threshold's product has 64 bits: a vote, vertical by its neighbours.
    cfa_reg.hw.reg_cfa_sige_thd = 4095;
    cfa_reg.hw.reg_cfa_gsig_tol = 0;
    CHECK(at_blue(1, 1, 1 << 30, 1 << 30) == 2);
}

TEST_CASE_FIXTURE(FreshRegisters, "cfa_CalDirectionInfo: every rule") {
    const int32_t activities[] = {3, 300, 3000, 32767}, variances[] = {2, 300, 20000, 131071};
    Noise noise(36);
    for (uint32_t run = 0; run < 64; run++) {
        CAPTURE(run);
        if (run >= 16)
            randomize_registers(run, "reg_cfa_");
        if (run % 3 == 1) { // such that the vote is usual
            cfa_reg.hw.reg_cfa_edgee_thd = 4000;
            cfa_reg.hw.reg_cfa_edgee_thd2 = 4000;
            cfa_reg.hw.reg_cfa_rbsig_tol = 32 + noise.in(-1, 8);
            cfa_reg.hw.reg_cfa_gsig_tol = 32 + noise.in(-1, 8);
        }
        const int32_t l = activities[run % 4], s = variances[run / 4 % 4];
        const auto plane = [&](int32_t high) { return noise.plane(10, 8, 1, high / 2 * (run % 2), high); };
        compare({noise.plane(10, 8, 3, 0, 640), plane(l), plane(l), plane(s), plane(s)},
                run % 13 == 0 ? 8 : run % 4);
    }
}
