#include <algorithm>
#include <string>

#include <doctest/doctest.h>

#include "cmodel/cfa/src/stages.h"
#include "cmodel/common/curve.h"
#include "tests/support/planes.h"
#include "tests/support/registers.h"

namespace {

// The weight of one pixel; max and min are low-passed.
int32_t weight(const Plane &gh, const Plane &gv, const Plane &max, const Plane &min, int y, int x) {
    const auto curve = [](const std::string &name, int32_t v) {
        const auto part = [&](const char *what) { return reg(("reg_cfa_ymoire_" + name + what).c_str()); };
        return CM_LUT3(v, part("_th"), part("_low"), part("_high"), part("_slope"), 6);
    };
    int32_t range[3], vertical = 0, horizontal = 0;
    for (int c = 0; c < 3; c++)
        range[c] = max(y, x, c) - min(y, x, c);
    for (int i = 0; i < 20; i++) {
        const int along = i / 5 - 2, across = i % 5 - 2;
        vertical += absolute(gh(y + along, x + across, 1) - gh(y + along + 1, x + across, 1));
        horizontal += absolute(gv(y + across, x + along, 1) - gv(y + across, x + along + 1, 1));
    }
    const int32_t detail =
        reg("reg_cfa_ymoire_ref_maxg_only") == 1 ? range[1] : *std::max_element(range, range + 3);
    const int32_t w1 = curve("detail", std::min(detail >> 4, 255));
    const int32_t ratio =
        (std::max(vertical, horizontal) << 8) / std::max(20 * (range[1] + reg("reg_cfa_ymoire_np")), 1);
    const int32_t w2 = curve("edge", std::min(ratio, 255));
    return std::min(curve("lut", (w1 * w2) >> 8), 255);
}

int32_t removed(const Plane &rgb, const Plane &avg, int32_t w, int y, int x, int c) {
    const int32_t lpf_w = reg("reg_cfa_ymoire_lpf_w"), dc_w = reg("reg_cfa_ymoire_dc_w");
    const auto mix = [](int32_t of_256, int32_t a, int32_t b) {
        return (of_256 * a + (256 - of_256) * b + 128) >> 8;
    };
    const int32_t luma = (avg(y, x, 0) + 2 * avg(y, x, 1) + avg(y, x, 2) + 2) >> 2;
    const int32_t low_pass = (weighted(rgb, y, x, "... 121 ...", c) + 2) >> 2;
    return limited(mix(w, mix(dc_w, avg(y, x, c), mix(lpf_w, low_pass, luma)), rgb(y, x, c)), 4095);
}

const char *const binomial = "121 242 121";

} // namespace

TEST_CASE("cfa_LpfFrame: truncated binomial of each channel") {
    Plane src(5, 4, 3), dst(src, 3);
    src.set(1, 2, 1, 47);
    cfa_LpfFrame(src, dst);
    CHECK(dst(1, 2, 1) == 11); // 188 / 16
    CHECK(dst(0, 2, 1) == 11); // the row above and, mirrored, the row below: twice 94 / 16
    CHECK(dst(1, 1, 1) == 5);
    CHECK(dst(2, 3, 1) == 2);
    const Plane noise = Noise(4).plane(6, 5, 3, -50, 4095), low(noise, 3);
    cfa_LpfFrame(noise, low);
    expect_plane("noise", low, [&](int y, int x, int c) { return weighted(noise, y, x, binomial, c) >> 4; });
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
    // A falling output curve: 256 + (256 * -32 + 32 >> 6).
    cfa_reg.hw.reg_cfa_ymoire_lut_low = 256;
    cfa_reg.hw.reg_cfa_ymoire_lut_high = 0;
    cfa_reg.hw.reg_cfa_ymoire_lut_slope = -32;
    cfa_CalYMoireWgt(stripes, flat, flat, flat, wgt);
    CHECK(wgt(0, 0) == 128);
    // A rising one with a falling slope goes below 0 and stays there.
    cfa_reg.hw.reg_cfa_ymoire_lut_high = 300;
    cfa_reg.hw.reg_cfa_ymoire_lut_slope = -96;
    cfa_CalYMoireWgt(stripes, flat, flat, flat, wgt);
    CHECK(wgt(0, 0) == -128);
}

TEST_CASE_FIXTURE(FreshRegisters, "cfa_DeYMoire: disabled, it copies; flat, it changes nothing") {
    const Plane rgb = Noise(1).plane(5, 4, 3, -9, 70000), zero(rgb, 3), out(rgb, 3);
    cfa_DeYMoire(rgb, zero, zero, zero, zero, zero, out);
    expect_plane("copy", out, [&](int y, int x, int c) { return rgb(y, x, c); });
    cfa_reg.hw.reg_cfa_ymoire_enable = 1;
    cfa_DeYMoire(rgb, zero, zero, zero, zero, zero, out);
    expect_plane("weight 0", out, [&](int y, int x, int c) { return limited(rgb(y, x, c), 4095); });
}

TEST_CASE_FIXTURE(FreshRegisters, "cfa_DeYMoire: every pixel, with registers of all kinds") {
    Noise noise(41);
    for (uint32_t run = 0; run < 40; run++) {
        CAPTURE(run);
        randomize_registers(run, "ymoire");
        cfa_reg.hw.reg_cfa_ymoire_enable = 1;
        const bool plain = run % 4 == 0; // slopes that fit: nothing wraps
        if (plain) {
            cfa_reg.hw.reg_cfa_ymoire_detail_slope = 500;
            cfa_reg.hw.reg_cfa_ymoire_edge_slope = 2000;
            cfa_reg.hw.reg_cfa_ymoire_lut_slope = 64;
        }
        const int32_t highest[] = {4095, 300, 1, 1 << 24};
        const int width = run % 2 == 0 ? 7 : 4, height = run % 2 == 0 ? 6 : 3;
        const auto plane = [&](int32_t low, int32_t high) {
            return noise.plane(width, height, 3, low, high);
        };
        const int32_t high = highest[plain ? 0 : run / 4 % 4];
        const Plane rgb = plane(0, high), avg = plane(0, high), max = plane(high / 2, high),
                    min = plane(0, high / 2);
        const Plane gh = plane(0, high), gv = plane(0, high);
        const Plane max_lpf(rgb, 3), min_lpf(rgb, 3), wgt(rgb, 1), out(rgb, 3);
        cfa_LpfFrame(max, max_lpf);
        cfa_LpfFrame(min, min_lpf);
        cfa_CalYMoireWgt(gh, gv, max_lpf, min_lpf, wgt);
        expect_plane("wgt", wgt, [&](int y, int x, int) { return weight(gh, gv, max_lpf, min_lpf, y, x); });
        cfa_DeYMoire(rgb, avg, max, min, gh, gv, out);
        expect_plane("out", out, [&](int y, int x, int c) { return removed(rgb, avg, wgt(y, x), y, x, c); });
    }
}
