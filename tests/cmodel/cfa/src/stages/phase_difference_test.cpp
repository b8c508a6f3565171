#include <algorithm>

#include <doctest/doctest.h>

#include "cmodel/cfa/src/stages.h"
#include "cmodel/common/curve.h"
#include "tests/support/planes.h"
#include "tests/support/registers.h"

namespace {

constexpr int k1[5] = {1, 1, 0, -1, -1};
constexpr int k2[5] = {1, -4, 6, -4, 1};

// First difference of green along (ey, ex), then the fourth difference across it, where the first is
// mirrored.
int32_t residue(const Plane &G, int y, int x, int ey, int ex) {
    int32_t fourth = 0;
    for (int j = -2; j <= 2; j++) {
        const int row = reflected(y + j * ex, G.height()), col = reflected(x + j * ey, G.width());
        int32_t first = 0;
        for (int i = -2; i <= 2; i++)
            first += k1[i + 2] * G(row + i * ey, col + i * ex, 1);
        fourth += k2[j + 2] * first;
    }
    return limited((absolute(fourth) + 8) >> 4, 4095);
}

Plane weight(const Plane &gh, const Plane &gv) {
    Plane wt(gh, 1);
    cfa_CalPhaseDifference(wt, gh, gv, wt);
    return wt;
}

} // namespace

TEST_CASE_FIXTURE(FreshRegisters, "cfa_CalPhaseDifference: an impulse by hand") {
    const Plane flat(9, 9, 3, 500);
    Plane gh = flat;
    gh.set(4, 4, 1, 1300);
    gh.set(4, 4, 0, 4095); // not read
    const Plane wt = weight(gh, flat);
    // H1 is 800 one and two columns off the impulse; down those columns 6, 4 and 1 times 800, over 16: 300,
    // 200, 50, and 123/128 of it: 288, 192, 48. The curve rises from 150.
    for (int x : {2, 3, 5, 6}) {
        CAPTURE(x);
        CHECK(wt(4, x) == 4095);
        CHECK(wt(3, x) == 3439); // 42 * 83865 >> 10
        CHECK(wt(2, x) == 0);
        CHECK(wt(7, x) == 0);
    }
    CHECK(wt(4, 4) == 0);
    expect_plane("transposed",
                 weight(flat,
                        [&] { // the impulse in GV gives the transposed picture
                            Plane gv = flat;
                            gv.set(4, 4, 1, 1300);
                            return gv;
                        }()),
                 [&](int y, int x, int) { return wt(x, y); });
    expect_plane("constant", weight(flat, flat), [](int, int, int) { return 0; });
    Plane ramp(9, 9, 3);
    for (int i = 0; i < 81; i++)
        ramp.set(i / 9, i % 9, 1, 400 * (i % 9));
    expect_plane("ramp along the row", weight(ramp, flat), [](int, int, int) { return 0; });
}

TEST_CASE_FIXTURE(FreshRegisters, "cfa_CalPhaseDifference: every pixel") {
    Noise noise(43);
    const int32_t highest[] = {4095, 300, 12, 1 << 28};
    for (uint32_t run = 0; run < 16; run++) {
        CAPTURE(run);
        randomize_registers(run, "cmoire_pd");
        if (run % 2 == 0) // a curve that shows every magnitude
            cfa_reg.hw.reg_cfa_cmoire_pd_x0 = 0, cfa_reg.hw.reg_cfa_cmoire_pd_y0 = 0,
            cfa_reg.hw.reg_cfa_cmoire_pd_y1 = 4095, cfa_reg.hw.reg_cfa_cmoire_pd_slp0 = 700;
        const int width = run % 3 == 0 ? 4 : 9, height = run % 3 == 0 ? 3 : 8;
        const Plane gh = noise.plane(width, height, 3, 0, highest[run / 2 % 4]);
        const Plane gv = noise.plane(width, height, 3, 0, highest[run / 2 % 4]);
        expect_plane("pd_wt", weight(gh, gv), [&](int y, int x, int) {
            const int32_t a = residue(gv, y, x, 1, 0), b = residue(gh, y, x, 0, 1);
            return CM_LUT3_CLIP((123 * std::max(a, b) + 51 * std::min(a, b) + 64) >> 7,
                                reg("reg_cfa_cmoire_pd_x0"), reg("reg_cfa_cmoire_pd_y0"),
                                reg("reg_cfa_cmoire_pd_y1"), reg("reg_cfa_cmoire_pd_slp0"), 10);
        });
    }
}
