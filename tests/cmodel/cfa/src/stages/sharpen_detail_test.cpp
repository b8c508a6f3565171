#include <doctest/doctest.h>

#include "cmodel/cfa/src/stages.h"
#include "tests/support/planes.h"
#include "tests/support/registers.h"

using namespace cfa;

TEST_CASE("lumas and differences") {
    const Plane rgb(2, 1, 3, {1, 2, 2, 9000, 4000, 5000}), luma(2, 1);
    sg_get_rgb_luma(rgb, luma);
    CHECK(luma(0, 0) == 1); // 7 / 4
    CHECK(luma(0, 1) == 4095);
    const Plane a(1, 1, 1, 5), b(1, 1, 1, 4095), out(1, 1);
    sg_get_dalta_HF(a, b, out);
    CHECK(out(0, 0) == -4090);
    sg_get_delta_MF(b, a, out);
    CHECK(out(0, 0) == 4090);
}

TEST_CASE_FIXTURE(FreshRegisters, "spike removal: a sample is limited by the eight around it") {
    const int32_t block[9] = {5, 6, 7, 8, 100, 9, 4, 12, 11}, pit[9] = {5, 6, 7, 8, -1, 9, 4, 12, 11};
    CHECK(sg_SelMin(pit) == 4);
    CHECK(sg_SelMax(block) == 12);
    for (int i : {0, 1, 2, 3, 5, 6, 7, 8}) {
        int32_t spike[9] = {};
        spike[i] = 3;
        CHECK(sg_SelMax(spike) == 3);
        spike[i] = -3;
        CHECK(sg_SelMin(spike) == -3);
    }
    Plane in(4, 3, 1, 10), out(in, 1);
    in.set(1, 1, 0, 30), in.set(0, 3, 0, 20), in.set(2, 3, 0, -5);
    sg_preprocess(in, out);
    expect_plane("limited", out, [](int, int, int) { return 10; });
    cfa_reg.hw.reg_cfa_shpn_pre_proc_enable = 0;
    sg_preprocess(in, out);
    expect_plane("copied", out, [&](int y, int x, int) { return in(y, x); });
}
