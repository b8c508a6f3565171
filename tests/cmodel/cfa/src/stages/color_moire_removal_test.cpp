#include <doctest/doctest.h>

#include "cmodel/cfa/src/stages.h"
#include "tests/support/planes.h"
#include "tests/support/registers.h"

using namespace cfa;

TEST_CASE_FIXTURE(FreshRegisters, "cfa_DeColorMoire: by hand") {
    Plane rgb(8, 4, 3), full(8, 4, 1, 4095), none(8, 4), edge(8, 4), out(8, 4, 3);
    for (int i = 0; i < 32; i++)
        for (int c = 0; c < 3; c++)
            rgb.set(i / 8, i % 8, c, 1000 * (c + 1));
    edge.set(2, 4, 0, 4095);
    // All weights 4095: the mix and its product lose one each, w = 4093; 1000 * 4093 >> 12 = 999 of 1000 to
    // go, -1000 rounds down to -1000; of these 255/256.
    cfa_DeColorMoire(rgb, out, full, full, full);
    const int32_t want[] = {1995, 2000, 2004};
    expect_plane("full", out, [&](int, int, int c) { return want[c]; });
    // Without phase difference the edge weight stays where it is, but for the 1-2-1 smoothing; with it, it
    // spreads to 3 columns and 1 row. The mix is 4094; a quarter, half and three quarters of it pull by 1023,
    // 2046 and 3070 of 4096, then by 255/256; the whole as above.
    struct {
        const Plane &pd;
        int y, x, red, blue;
    } const rows[] = {{none, 2, 4, 1497, 2502}, {none, 2, 3, 1248, 2751}, {none, 2, 2, 1000, 3000},
                      {none, 1, 4, 1000, 3000}, {full, 2, 4, 1995, 2004}, {full, 1, 1, 1746, 2253},
                      {full, 1, 0, 1497, 2502}, {full, 0, 4, 1000, 3000}};
    for (const auto &row : rows) {
        INFO("phase difference ", row.pd(0, 0), ", y ", row.y, ", x ", row.x);
        cfa_DeColorMoire(rgb, out, row.pd, full, edge);
        CHECK(out(row.y, row.x, 0) == row.red);
        CHECK(out(row.y, row.x, 2) == row.blue);
    }
    const auto unchanged = [&](const char *name, const Plane &cdist, const Plane &edge_wt) {
        cfa_DeColorMoire(rgb, out, full, cdist, edge_wt);
        expect_plane(name, out, [&](int y, int x, int c) { return rgb(y, x, c); });
    };
    unchanged("negative", full, Plane(8, 4, 1, -4096)); // the maximum starts from 0
    unchanged("protected", none, full);
    cfa_reg.hw.reg_cfa_cmoire_strth = 0;
    unchanged("no strength", full, full);
    const Plane deep(8, 4, 3, 70000);
    cfa_DeColorMoire(deep, out, full, full, full);
    expect_plane("limited", out, [](int, int, int) { return 4095; });
    cfa_reg.hw.reg_cfa_cmoire_enable = 0;
    cfa_DeColorMoire(deep, out, full, full, full);
    expect_plane("copy", out, [](int, int, int) { return 70000; });
}
