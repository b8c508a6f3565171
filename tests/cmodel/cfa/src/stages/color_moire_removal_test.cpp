#include <algorithm>

#include <doctest/doctest.h>

#include "cmodel/cfa/src/stages.h"
#include "tests/support/planes.h"
#include "tests/support/registers.h"

namespace {

int32_t removed(const Plane &rgb, const Plane &pd, const Plane &cdist, const Plane &edge, int y, int x,
                int c) {
    const auto mix = [&](int column) {
        const int col = reflected(column, rgb.width());
        int32_t widest = 0;
        for (int i = 0; i < 21; i++)
            widest = std::max(widest, edge(y + i / 7 - 1, col + i % 7 - 3));
        return (widest * pd(y, col) + (4095 - pd(y, col)) * edge(y, col)) >> 12;
    };
    const int32_t smooth_mix = (mix(x - 1) + 2 * mix(x) + mix(x + 1) + 2) >> 2;
    const int32_t w = (smooth_mix * ((weighted(cdist, y, x, "121 242 121") + 8) >> 4)) >> 12;
    const int32_t v = rgb(y, x, c);
    const int32_t full = v + (((rgb(y, x, 1) - v) * w) >> 12);
    return limited(v + (((full - v) * reg("reg_cfa_cmoire_strth") + 128) >> 8), 4095);
}

} // namespace

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
    // spreads to 3 columns and 1 row.
    cfa_DeColorMoire(rgb, out, none, full, edge);
    CHECK(out(2, 4, 0) > 1490);
    CHECK(out(2, 3, 0) > 1240);
    CHECK(out(2, 2, 0) == 1000);
    CHECK(out(1, 4, 0) == 1000);
    cfa_DeColorMoire(rgb, out, full, full, edge);
    CHECK(out(1, 1, 0) > 1700);
    CHECK(out(1, 0, 0) > 1490);
    CHECK(out(0, 4, 0) == 1000);
    cfa_DeColorMoire(rgb, out, full, full, Plane(8, 4, 1, -4096)); // the maximum starts from 0
    expect_plane("negative", out, [&](int y, int x, int c) { return rgb(y, x, c); });
    cfa_DeColorMoire(rgb, out, full, none, full);
    expect_plane("protected", out, [&](int y, int x, int c) { return rgb(y, x, c); });
    cfa_reg.hw.reg_cfa_cmoire_strth = 0;
    cfa_DeColorMoire(rgb, out, full, full, full);
    expect_plane("no strength", out, [&](int y, int x, int c) { return rgb(y, x, c); });
    cfa_reg.hw.reg_cfa_cmoire_strth = 255;
    cfa_reg.hw.reg_cfa_cmoire_enable = 0;
    const Plane deep(8, 4, 3, 70000);
    cfa_DeColorMoire(deep, out, full, full, full);
    expect_plane("copy", out, [](int, int, int) { return 70000; });
}

TEST_CASE_FIXTURE(FreshRegisters, "cfa_DeColorMoire: every pixel") {
    Noise noise(44);
    for (uint32_t run = 0; run < 16; run++) {
        CAPTURE(run);
        cfa_reg.hw.reg_cfa_cmoire_strth = run < 4 ? 255 : noise.in(0, 255);
        const int width = run % 2 == 0 ? 9 : 4, height = run % 2 == 0 ? 6 : 3;
        const auto plane = [&](int channels, int32_t low, int32_t high) {
            return noise.plane(width, height, channels, low, high);
        };
        const bool odd = run % 4 == 3; // weights as curves with the wrong slopes give them, and deep colours
        const Plane rgb = plane(3, 0, odd ? 70000 : run == 4 ? 1 : 4095), pd = plane(1, 0, 4095);
        const Plane cdist = plane(1, run < 2 ? 4000 : 0, 4095);
        const Plane edge = plane(1, odd ? -90000 : 0, odd ? 90000 : run < 2 ? 1 : 4095);
        const Plane out(rgb, 3);
        cfa_DeColorMoire(rgb, out, pd, cdist, edge);
        expect_plane("out", out, [&](int y, int x, int c) { return removed(rgb, pd, cdist, edge, y, x, c); });
    }
}
