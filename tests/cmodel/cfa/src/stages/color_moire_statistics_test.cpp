#include <doctest/doctest.h>

#include "cmodel/cfa/src/stages.h"
#include "tests/support/planes.h"
#include "tests/support/registers.h"

using namespace cfa;

namespace {

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
