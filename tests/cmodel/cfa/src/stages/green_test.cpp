#include <doctest/doctest.h>

#include "cmodel/cfa/src/stages.h"
#include "tests/support/planes.h"
#include "tests/support/registers.h"

namespace {

// One red or blue site; the defaults make both candidates 1000 with a correction of 32 and 64.
struct Site {
    int32_t gh = 1, gv = 2, h_lp = 1000, h_hp = 32, v_lp = 1000, v_hp = 64, max = 4095, min = 0;
    int32_t sig_h = 0, sig_v = 0, l_max = 0, ratio_h = 0, ratio_v = 0, dir = 1;

    int32_t green() const {
        const auto one = [](int32_t v) { return Plane(1, 1, 1, v); };
        const auto three = [](int32_t v) { return Plane(1, 1, 3, {-5, v, -6}); };
        return cfa_CalGPixel(one(7), 0, 0, three(gh), three(gv), three(max), three(min), one(h_lp), one(h_hp),
                             one(v_lp), one(v_hp), one(sig_h), one(sig_v), one(l_max), one(ratio_h),
                             one(ratio_v), one(dir));
    }
};

} // namespace

TEST_CASE_FIXTURE(FreshRegisters, "cfa_CalGPixel: sharpened candidates") {
    Site site;
    CHECK(site.green() == 1008); // weight 8 of 32
    site.ratio_h = 511;
    CHECK(site.green() == 1008); // the last of entry 3
    site.ratio_h = 512;
    CHECK(site.green() == 1010);
    site.ratio_h = 4095;
    CHECK(site.green() == 1031);
    site.ratio_h = -128; // of a wrapped ratio the low five bits of the index count
    CHECK(site.green() == 1031);
    site.ratio_h = 0;
    site.h_hp = -1;
    CHECK(site.green() == 999); // -8 >> 5 rounds down
    site.h_hp = -4095 * 4;
    CHECK(site.green() == 0);
    site.min = 300;
    CHECK(site.green() == 300);
    site.max = 200; // the lower bound first, so that max wins
    CHECK(site.green() == 200);
    site = {};
    site.h_hp = 32000;
    CHECK(site.green() == 4095);
    site.l_max = 65535; // at the threshold: not sharpened
    CHECK(site.green() == 1);
    site.l_max = 65534;
    CHECK(site.green() == 4095);
}

TEST_CASE_FIXTURE(FreshRegisters, "cfa_CalGPixel: direction and blend") {
    Site site;
    const int32_t by_direction[] = {1012, 1008, 1016, 1016};
    for (int32_t dir = 0; dir < 4; dir++) {
        site.dir = dir;
        CHECK(site.green() == by_direction[dir]);
        cfa_reg.hw.reg_cfa_force_dir_enable = 1;
        cfa_reg.hw.reg_cfa_force_dir_sel = 3 - dir;
        CHECK(site.green() == by_direction[3 - dir]);
        cfa_reg.hw.reg_cfa_force_dir_enable = 0;
    }
    // Candidates 1008 and 3016. 16383: weights 1 and (16383 - 15) >> 5 = 511, reciprocal of 512.
    site.dir = 0;
    site.v_lp = 3000;
    site.sig_h = 16383;
    CHECK(site.green() == (1008 + 511 * 3016) / 512);
    // 16384: weights 1 and (16384 - 16) >> 7 = 127, reciprocal of 128.
    site.sig_h = 16384;
    CHECK(site.green() == (1008 + 127 * 3016) / 128);
    site.sig_h = 0;
    site.sig_v = 16384;
    CHECK(site.green() == (127 * 1008 + 3016) / 128);
}
