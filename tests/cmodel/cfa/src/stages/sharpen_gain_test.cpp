#include <algorithm>

#include <doctest/doctest.h>

#include "cmodel/cfa/src/stages.h"
#include "tests/support/planes.h"
#include "tests/support/registers.h"
#include "tests/support/support.h"

using namespace cfa;

TEST_CASE_FIXTURE(FreshRegisters, "coring: small details are noise") {
    const Plane MF(7, 1, 1, {0, 8, 9, 11, -11, 4095, -4095}), HF(7, 1, 1, {16, -16, 20, 0, -19, 4095, -4095}),
        out(7, 1);
    sg_coring_proc(MF, HF, out);
    // Thresholds 8 and 16, weights a half each: 0, 0, (1 + 4) / 2, 3 / 2, -(3 + 3) / 2, (4087 + 4079) / 2.
    const int32_t want[] = {0, 0, 2, 1, -3, 4083, -4083};
    expect_plane("cored", out, [&](int, int x, int) { return want[x]; });
    cfa_reg.hw.reg_cfa_shpn_mf_blend_wgt = 255;
    sg_coring_proc(MF, HF, out);
    CHECK(out(0, 5) == 4095);
    CHECK(out(0, 6) == -4095);
}

TEST_CASE_FIXTURE(FreshRegisters, "gain map") {
    const Plane luma(6, 1, 1, {100, 100, 100, 0, 2, 4000}), cored(6, 1, 1, {0, 50, -50, 1, -1, 4095}),
        sg(6, 1);
    cfa_reg.hw.reg_cfa_shpn_max_gain = 3000;
    get_sharpen_gain(luma, cored, sg);
    // 50 * 327 >> 5 = 510, -511; luma raised to 3: 10922 >> 5 = 341, -342; 4095 * 9 >> 5 = 1151.
    const int32_t want[] = {1024, 1534, 513, 1365, 682, 2175};
    expect_plane("gain", sg, [&](int, int x, int) { return want[x]; });
    cfa_reg.hw.reg_cfa_shpn_min_gain = 600;
    cfa_reg.hw.reg_cfa_shpn_max_gain = 1400;
    get_sharpen_gain(luma, cored, sg);
    expect_plane("limited gain", sg, [&](int, int x, int) { return std::clamp(want[x], 600, 1400); });
}

TEST_CASE_FIXTURE(FreshRegisters, "detail added to the picture") {
    const Plane cored(4, 1, 1, {0, 31, -31, -4000});
    Plane rgb(4, 1, 3, {5, 6, 7, 4090, 100, 0, 4095, 20, 10, 4095, 1, 0});
    cfa_reg.hw.reg_cfa_shpn_gain_value = 16; // a half: (31 * 16 + 16) / 32 = 16
    take_log();
    apply_sharpen_gain_rgb(rgb, cored);
    const auto log = take_log();
    REQUIRE(log.size() == 1);
    CHECK(log[0].find("INFO cfa_hw:") == 0);
    CHECK(log[0].find(": reg_cfa_shpn_gain_value = 16") != std::string::npos);
    const int32_t want[] = {5, 6, 7, 4095, 116, 16, 4079, 4, 0, 2095, 0, 0};
    expect_plane("rgb", rgb, [&](int, int x, int c) { return want[3 * x + c]; });
}

TEST_CASE_FIXTURE(FreshRegisters, "sharpen_gain_main_proc: disabled, it gives gains of 1 and no record") {
    const Plane grey(5, 4, 1, 700), sg(5, 4, 1, 9), rgb(5, 4, 3, 700);
    take_log();
    sharpen_gain_main_proc(grey, rgb, sg);
    expect_plane("sg", sg, [](int, int, int) { return 1024; });
    CHECK(take_log().empty());
}
