// The DC image, the copy and the sharpen gain on what the stages before them never leave.
#include <doctest/doctest.h>

#include "cmodel/cfa/src/reg_parse/cfa_reg.h"
#include "cmodel/cfa/src/stages.h"
#include "tests/support/planes.h"
#include "tests/support/registers.h"

using namespace cfa;

TEST_CASE(
    "copy_to_dst: a smaller frame is addressed with its own size, mirrored; nothing outside is written") {
    Plane src(5, 4, 3);
    for (int i = 0; i < 60; ++i)
        src.set(i / 15, i / 3 % 5, i % 3, 100 * (i / 15) + 10 * (i / 3 % 5) + i % 3);
    // The last of the samples that fall on a pixel: rows 0 1 0 1 of two, columns 0 1 2 1 0 of three.
    struct {
        int width, height;
        int32_t pixels[6];
    } const rows[] = {{3, 2, {240, 230, 220, 340, 330, 320}}, {1, 1, {340}}, {2, 1, {340, 330}}};
    for (const auto &row : rows) {
        INFO(row.width, " x ", row.height);
        const Plane around(8, 8, 3, -7);
        FRAME dst = *static_cast<FRAME *>(around);
        dst.width = row.width, dst.height = row.height, dst.data += 60;
        copy_to_dst(src, &dst);
        expect_plane("around", around, [&](int y, int x, int c) {
            const int i = 24 * y + 3 * x + c - 60;
            return i >= 0 && i < 3 * row.width * row.height ? row.pixels[i / 3] + c : -7;
        });
    }
}

TEST_CASE_FIXTURE(FreshRegisters, "maxima, low-passes, lumas and spikes below 0") {
    const Plane rgb(2, 2, 3, {-3, -1, -2, -1, 5, 0, -1, 0, 0, 0, 0, 0});
    Plane out(2, 2), below(5, 5, 1, -5), impulse(5, 5);
    const auto expect = [](const Plane &got, int32_t first, int32_t second, int32_t third) {
        CHECK(got(0, 0) == first);
        CHECK(got(0, 1) == second);
        CHECK(got(1, 0) == third);
    };
    gen_MaxRGB_1ch(rgb, out);
    expect(out, -1, 5, 0);
    sg_get_rgb_luma(rgb, out);
    expect(out, -2, 2, -1); // -7 >> 2, 9 >> 2, -1 >> 2
    sg_get_delta_MF(Plane(2, 2, 1, -257), Plane(2, 2, 1, 4095), out);
    expect(out, -4352, -4352, -4352);
    impulse.set(2, 2, 0, -1);
    gen_dst_dc(impulse, impulse);
    CHECK(impulse(2, 2) == -1); // -4 >> 4
    sg_preprocess(below, below);
    CHECK(below(2, 2) == -5);
    const int32_t peak[9] = {-3, -4, -4, -4, 9, -4, -4, -4, -4}, pit[9] = {-3, 0, 0, 0, -9, 0, 0, 0, 0};
    CHECK(sg_SelMax(peak) == -3); // the centre does not count
    CHECK(sg_SelMin(pit) == -3);
}

TEST_CASE_FIXTURE(FreshRegisters, "details, gains and strengths whose products wrap") {
    const auto one = [](int32_t v) { return Plane(1, 1, 1, v); };
    auto &r = cfa_reg.hw;
    const Plane out(1, 1), rgb(1, 1, 3, 67108873);
    r.reg_cfa_shpn_core_value = 0, r.reg_cfa_shpn_mf_blend_wgt = 128;
    sg_coring_proc(one(-(1 << 24)), one(0), out);
    CHECK(out(0, 0) == 1 << 24); // -2^31 is its own magnitude: -(-2^31 >> 7), not above the limit
    sg_coring_proc(one(-5000), one(0), out);
    CHECK(out(0, 0) == -4095);
    r.reg_cfa_shpn_min_y = r.reg_cfa_shpn_min_gain = 0;
    get_sharpen_gain(one(0), one(65536), out);
    CHECK(out(0, 0) == 0); // 2^16 * 2^15 wraps below 0
    r.reg_cfa_shpn_gain_value = 128;
    apply_sharpen_gain_rgb(rgb, one(1 << 24));
    CHECK(rgb(0, 0) == 10); // 2^31 + 16 wraps, / 32 is -67108863.5: toward zero
}
