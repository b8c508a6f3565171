#include "cmodel/cfa/src/stages.h"

#include <doctest/doctest.h>

#include "cmodel/cfa/src/reg_parse/cfa_reg.h"
#include "tests/support/planes.h"
#include "tests/support/registers.h"

using namespace cfa;

TEST_CASE_FIXTURE(FreshRegisters, "cfa_Vote: by hand, mirrored outside") {
    const Plane dir(3, 3, 1, {0, 2, 1, 1, 2, 1, 0, 2, 1});
    const Plane SigH(3, 3), SigV(3, 3, 1, {0, 1, 0, 0, 0, 1, 0, 1, 0});
    // Strong from 1500 on: (0, 1), (1, 0), (1, 1), (2, 2).
    const Plane LH(3, 3, 1, {0, 0, 0, 1500, 1, 0, 0, 0, 2000}),
        LV(3, 3, 1, {0, 2000, 0, 1500, 1500, 1499, 0, 0, 7});
    struct {
        int y, x;
        int32_t prior, h, v;
    } const rows[] = {
        // above, left, prior; right; below
        {1, 1, 1, 1 + 2 + 4 + 1, 2 + 1},
        {0, 0, 0, 2 + (1 + 1) + (1 + 1), (1 + 1) + 2 + 2}, // row -1 is 1, column -1 is 1; no prior
        {2, 2, 2, 2 + 1 + (1 + 1), (1 + 1) + 2 + 4}};      // row 3 is 1, column 3 is 1
    for (const auto &row : rows) {
        INFO("y ", row.y, ", x ", row.x);
        int32_t h = 100, v = 200; // counts are added to
        cfa_Vote(row.x, row.y, row.prior, &h, &v, SigH, SigV, LH, LV, dir);
        CHECK(h == 100 + row.h);
        CHECK(v == 200 + row.v);
    }
}

TEST_CASE_FIXTURE(FreshRegisters, "cfa_CalDirectionInfo: products that wrap, and the one that does not") {
    cfa_reg.hw.reg_cfa_edge_tol = 512;
    cfa_reg.hw.reg_cfa_sige_thd = 4095;
    cfa_reg.hw.reg_cfa_gsig_tol = 1024;
    cfa_reg.hw.reg_cfa_rbsig_tol = cfa_reg.hw.reg_cfa_rbsig_luma_thd = 0;
    // 200 * (a >> 5) wraps to less than a, 512 * a to 0: decisive.
    constexpr int32_t a = 3 << 28;
    struct {
        int column; // 2: blue, 1: green
        int32_t lh, lv, sh, sv, red, green, direction;
    } const rows[] = {{2, a, a + 1, 9, 0, 0, 0, 1},
                      {2, a, a, 9, 0, 0, 0, 0},
                      {1, a, a, 9, 0, 0, 0, 0},
                      {2, 1, 1, 1 << 30, 1 << 30, 0, 0, 2}, // 4095 * 2^23 in 64 bits: a vote, ties vertical
                      {2, 1, 1, 1 << 22, 1 << 22, 0, 0, 2}, // 1024 * 2^22 wraps to 0: the vote counts
                      {1, 1, 1, 1, 1, 0, 0, 2},             // a luma of 0 votes
                      {1, 1, 1, 1, 1, 1 << 21, 1 << 21, 0}, // 2^31 wraps: too dark to vote
                      {1, 1, 1, 1, 1, -1, 0, 0}};           // -307 >> 10 rounds down
    for (const auto &row : rows) {
        INFO("column ", row.column, ", ", row.lh, " ", row.sh, " ", row.red);
        const auto plane = [](int32_t v) { return Plane(4, 4, 1, v); };
        Plane avg(4, 4, 3, row.green), dir(4, 4);
        avg.set(2, row.column, 0, row.red);
        cfa_CalDirectionInfo(dir, avg, plane(row.lh), plane(row.lv), plane(row.sh), plane(row.sv), dir, 0);
        CHECK(dir(2, row.column) == row.direction);
    }
}
