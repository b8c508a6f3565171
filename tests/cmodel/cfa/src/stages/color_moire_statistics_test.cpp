#include <algorithm>
#include <string>

#include <doctest/doctest.h>

#include "cmodel/cfa/src/kit/fixed_point.h"
#include "cmodel/cfa/src/stages.h"
#include "cmodel/common/curve.h"
#include "tests/support/planes.h"
#include "tests/support/registers.h"

namespace {

int32_t cmoire(const std::string &name) {
    return reg(("reg_cfa_cmoire_" + name).c_str());
}

int32_t curve(const std::string &name, int32_t x) {
    return CM_LUT3_CLIP(x, cmoire(name + "_x0"), cmoire(name + "_y0"), cmoire(name + "_y1"),
                        cmoire(name + "_slp0"), 10);
}

int32_t color_distance(int32_t r, int32_t g, int32_t b) {
    const int32_t red = absolute(r - g), blue = absolute(b - g);
    const int32_t saturation = (123 * std::max(red, blue) + 51 * std::min(red, blue) + 64) >> 7;
    uint32_t hue = 0, sat = 0, val = 0;
    rgb2hsv(r, g, b, hue, sat, val, 3, 0, 0);
    int32_t distance = 4095;
    for (const char *i : {"1", "2", "3"})
        if (cmoire(std::string("protclr") + i + "_enable") == 1) {
            const int32_t d = absolute(static_cast<int32_t>(hue) - cmoire(std::string("protclr") + i));
            distance = std::min({distance, d, 2880 - d});
        }
    return (curve("sat", saturation) * curve("ptclr", distance)) >> 12;
}

// The registers of the kernels, by their last digit.
const char *const k0[5] = {"21012", "21012", "21012", "21012", "21012"};
const char *const k45[5] = {"24678", "41357", "63036", "75314", "87642"};

// |response| of a plane's green to a kernel, transposed or mirrored left to right.
int32_t response(const Plane &G, const char *const kernel[5], const char *group, bool transposed,
                 bool mirrored, int y, int x) {
    int32_t sum = 0;
    for (int r = 0; r < 5; r++)
        for (int c = 0; c < 5; c++) {
            const char digit = transposed ? kernel[c][r] : kernel[r][mirrored ? 4 - c : c];
            sum += cmoire(std::string("edge_") + group + digit) * G(y + r - 2, x + c - 2, 1);
        }
    return absolute(sum);
}

int32_t edge_spread(const Plane &gh, const Plane &gv, int32_t green, int y, int x) {
    const auto diagonal = [&](bool mirrored) {
        return (response(gv, k45, "d45c", false, mirrored, y, x) +
                response(gh, k45, "d45c", false, mirrored, y, x)) >>
               13;
    };
    const int32_t e[4] = {limited(response(gv, k0, "d0c", false, false, y, x) >> 12, 4095),
                          limited(response(gh, k0, "d0c", true, false, y, x) >> 12, 4095),
                          limited(diagonal(false), 4095), limited(diagonal(true), 4095)};
    const int32_t mean = (e[0] + e[1] + e[2] + e[3]) >> 2;
    int32_t spread = 0;
    for (int32_t response : e)
        spread += absolute(response - mean);
    int32_t gain = 1024;
    if (cmoire("lumagain_enable") == 1)
        gain = std::clamp((cmoire("lumatg") * get_inv(green) + 16) >> 5, 1024, 4095);
    return curve("edge", limited((spread * gain + 512) >> 10, 4095));
}

struct Weights {
    Plane cdist, edge;

    Weights(const Plane &avg, const Plane &gh, const Plane &gv) : cdist(avg, 1), edge(avg, 1) {
        cfa_CalColorMoireSts(avg, gh, gv, cdist, edge);
    }
};

} // namespace

TEST_CASE_FIXTURE(FreshRegisters, "cfa_CalColorMoireSts: colour distance by hand") {
    const auto cdist = [](int32_t r, int32_t g, int32_t b) {
        Plane avg(4, 3, 3, g);
        avg.set(1, 2, 0, r);
        avg.set(1, 2, 2, b);
        return Weights(avg, avg, avg).cdist(1, 2);
    };
    CHECK(cdist(900, 900, 900) == 4094);  // grey: hue 0 is 560 away, both curves are at 4095
    CHECK(cdist(800, 1000, 800) == 0);    // green: hue 960 is protected
    CHECK(cdist(1100, 800, 800) == 3493); // saturation 288: 4095 + (88 * -6988 >> 10) = 3494
    CHECK(cdist(1000, 900, 800) == 2575); // hue 238 is 322 from 560: 302 * 8736 >> 10 = 2576
    CHECK(cdist(3000, 1000, 1000) == 0);  // saturated
    cfa_reg.hw.reg_cfa_cmoire_protclr3_enable = 1;
    cfa_reg.hw.reg_cfa_cmoire_protclr3 = 10;
    CHECK(cdist(1000, 800, 808) == 84); // hue 2860 is 30 from 10, around the circle: 10 * 8736 >> 10 = 85
    cfa_reg.hw.reg_cfa_cmoire_protclr1_enable = 0;
    cfa_reg.hw.reg_cfa_cmoire_protclr2_enable = 0;
    cfa_reg.hw.reg_cfa_cmoire_protclr3_enable = 0;
    CHECK(cdist(800, 1000, 800) == 3602); // nothing is protected: saturation 272 gives 3603
}

TEST_CASE_FIXTURE(FreshRegisters, "cfa_CalColorMoireSts: edge spread by hand") {
    // One bright column of 1000 in GV: e0 = 5 * 308 * 1000 >> 12 = 375 on it; no other response is set off by
    // GV alone but the diagonals, each |sum of the middle column| = (-201 - 112 + 492 - 112 - 201) * 1000
    // >> 13.
    Plane GV(7, 7, 3), GH(7, 7, 3), avg(7, 7, 3, 480);
    for (int y = 0; y < 7; y++)
        GV.set(y, 3, 1, 1000);
    cfa_reg.hw.reg_cfa_cmoire_edge_slp0 = 1024; // weight = 1 + spread - 10
    cfa_reg.hw.reg_cfa_cmoire_lumatg = 482;
    const Weights w(avg, GH, GV);
    const int32_t e0 = 375, e45 = 134 * 1000 >> 13; // 16
    const int32_t mean = (e0 + 0 + 2 * e45) >> 2;   // 101
    const int32_t spread = e0 - mean + mean + 2 * (mean - e45);
    CHECK(w.edge(3, 3) == spread - 9);                                  // gain (482 * 68 + 16) / 32 = 1024
    CHECK(Weights(Plane(7, 7, 3, 240), GH, GV).edge(3, 3) == 1091 - 9); // (482 * 136 + 16) / 32 = 2049
    CHECK(Weights(Plane(7, 7, 3, 0), GH, GV).edge(3, 3) == (spread * 4095 + 512) / 1024 - 9); // limited
    cfa_reg.hw.reg_cfa_cmoire_lumagain_enable = 0;
    CHECK(Weights(Plane(7, 7, 3, 0), GH, GV).edge(3, 3) == spread - 9);
    CHECK(Weights(avg, GH, GH).edge(3, 3) == 1);
}

TEST_CASE_FIXTURE(FreshRegisters, "cfa_CalColorMoireSts: every pixel, with registers of all kinds") {
    Noise noise(42);
    for (uint32_t run = 0; run < 24; run++) {
        CAPTURE(run);
        if (run >= 6)
            randomize_registers(run, "cmoire");
        const int32_t grey = noise.in(0, 3000), range[] = {4095, 400, 1, 4095, 4095, 1 << 26};
        const int width = run % 2 == 0 ? 8 : 4, height = run % 2 == 0 ? 7 : 3;
        const Plane avg =
            noise.plane(width, height, 3, run % 6 < 2 ? 0 : grey, run % 6 < 2 ? 4095 : grey + 400);
        const Plane gh = noise.plane(width, height, 3, 0, range[run % 6]),
                    gv = noise.plane(width, height, 3, 0, range[run % 6]);
        const Weights w(avg, gh, gv);
        expect_plane("cdist_wt", w.cdist, [&](int y, int x, int) {
            return color_distance(avg(y, x, 0), avg(y, x, 1), avg(y, x, 2));
        });
        expect_plane("edge_wt", w.edge,
                     [&](int y, int x, int) { return edge_spread(gh, gv, avg(y, x, 1), y, x); });
    }
}
