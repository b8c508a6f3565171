#include <doctest/doctest.h>

#include "cmodel/cfa/src/stages.h"
#include "tests/support/planes.h"
#include "tests/support/registers.h"

using namespace cfa;

TEST_CASE("cfa_LpfFrame: truncated binomial of each channel") {
    Plane src(5, 4, 3), dst(src, 3);
    src.set(1, 2, 1, 47);
    src.set(1, 2, 2, -1);
    cfa_LpfFrame(src, dst);
    CHECK(dst(1, 2, 1) == 11); // 188 / 16
    CHECK(dst(0, 2, 1) == 11); // the row above and, mirrored, the row below: twice 94 / 16
    CHECK(dst(1, 1, 1) == 5);
    CHECK(dst(2, 3, 1) == 2);
    CHECK(dst(1, 2, 2) == -1); // -4 >> 4
    CHECK(dst(1, 2, 0) == 0);
}

TEST_CASE_FIXTURE(FreshRegisters, "cfa_CalYMoireWgt: by hand") {
    // Stripes of 100 along the rows: 20 differences of 100. dG 800: detail 50 gives 50 * 4 = 200; the ratio
    // is 2000 * 256 / (20 * 816) = 31, below 160: weight 0.
    Plane stripes(6, 6, 3), flat(6, 6, 3), max(6, 6, 3, 800), wgt(6, 6);
    for (int y = 1; y < 6; y += 2)
        for (int x = 0; x < 6; x++)
            stripes.set(y, x, 1, 100);
    CHECK(cfa_CalYMoireWgt(stripes, flat, max, flat, wgt) == 0);
    CHECK(wgt(3, 3) == 0);
    // With the knee at 0 the edge weight is 31 * 4 = 124, the product 200 * 124 >> 8 = 96, doubled.
    cfa_reg.hw.reg_cfa_ymoire_edge_th = 0;
    cfa_CalYMoireWgt(stripes, flat, max, flat, wgt);
    CHECK(wgt(3, 3) == 192);
    // Vertical differences of the vertical prediction are not read.
    cfa_CalYMoireWgt(flat, stripes, max, flat, wgt);
    CHECK(wgt(3, 3) == 0);
    // No range and no noise offset: the ratio saturates. Every weight 256: limited to 255.
    cfa_reg.hw.reg_cfa_ymoire_np = 0;
    cfa_reg.hw.reg_cfa_ymoire_detail_low = 256;
    cfa_CalYMoireWgt(stripes, flat, flat, flat, wgt);
    CHECK(wgt(0, 0) == 255);
}

TEST_CASE_FIXTURE(FreshRegisters, "cfa_DeYMoire: by hand") {
    auto &r = cfa_reg.hw;
    const Plane rgb(4, 3, 3, 1000), zero(rgb, 3), out(rgb, 3), deep(4, 3, 3, 70000);
    cfa_DeYMoire(deep, zero, zero, zero, zero, zero, out);
    expect_plane("disabled: a copy", out, [](int, int, int) { return 70000; });
    r.reg_cfa_ymoire_enable = 1;
    cfa_DeYMoire(deep, zero, zero, zero, zero, zero, out);
    expect_plane("weight 0", out, [](int, int, int) { return 4095; });

    Plane columns = rgb, avg = zero;
    for (int y = 0; y < 3; y++) {
        columns.set(y, 0, 0, 900), columns.set(y, 2, 0, 1203);
        for (int x = 0; x < 4; x++)
            avg.set(y, x, 0, 600), avg.set(y, x, 1, 700), avg.set(y, x, 2, 801);
    }
    r.reg_cfa_ymoire_lpf_w = 64, r.reg_cfa_ymoire_dc_w = 200;
    // Both first curves stay at 256, below their knees; the output curve adds 256 * slope >> 6.
    r.reg_cfa_ymoire_detail_th = r.reg_cfa_ymoire_edge_th = 255;
    r.reg_cfa_ymoire_detail_low = r.reg_cfa_ymoire_edge_low = r.reg_cfa_ymoire_lut_low = 256;
    // Low-passed 1026 1000 1000, each with the average's luma of 700: 782 775 775; with the average colour:
    // 640 716 795. Of these and of 1000, half, or three halves of 1000 less a half: weights below 0 stay.
    struct {
        int32_t limit, slope, rgb[3];
    } const rows[] = {{0, -32, {820, 858, 898}}, {300, -96, {1180, 1142, 1103}}};
    for (const auto &row : rows) {
        CAPTURE(row.slope);
        r.reg_cfa_ymoire_lut_high = row.limit;
        r.reg_cfa_ymoire_lut_slope = row.slope;
        cfa_DeYMoire(columns, avg, zero, zero, zero, zero, out);
        for (int c = 0; c < 3; c++)
            CHECK(out(1, 1, c) == row.rgb[c]);
    }
}
