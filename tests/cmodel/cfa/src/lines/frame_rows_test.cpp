#include "cmodel/cfa/src/lines/frame_rows.h"

#include <string>
#include <string_view>

#include <doctest/doctest.h>

#include "cmodel/cfa/src/cfa_hw.h"
#include "cmodel/cfa/src/cfa_model.h"
#include "cmodel/cfa/src/kit/debug_image.h"
#include "cmodel/cfa/src/reg_parse/cfa_reg.h"
#include "cmodel/cmodel_top/src/reg_parse/cmodel_top_reg.h"
#include "tests/support/equality.h"
#include "tests/support/registers.h"
#include "tests/support/support.h"

using namespace cfa;

namespace {

// Both register blocks at their resets, before and after.
struct FreshBlocks : FreshRegisters {
    FreshBlocks() { INIT_CMODEL_TOP_REG("NULL"); }
    ~FreshBlocks() { INIT_CMODEL_TOP_REG("NULL"); }
};

void set(const char *key, int32_t v) {
    cfa_reg_hw_table().find(key)->store(cfa_reg.hw, v);
}

void expect_equal(const Equality &result, bool served) {
    CHECK(result.served == served);
    CHECK_MESSAGE(result.difference.empty(), result.difference);
}

// What the engine refuses it leaves untouched, and comes out of cfa_hw as the model computes it.
void expect_refused(const Plane &raw) {
    expect_equal(compare_engine_with_model(raw), false);
    const Plane rgb(raw, 3), dc(raw, 1), gain(raw, 1), want_rgb(raw, 3), want_dc(raw, 1), want_gain(raw, 1);
    cfa_hw(raw, rgb, dc, gain);
    cfa_model(raw, want_rgb, want_dc, want_gain);
    expect_plane("rgb", rgb, want_rgb);
    expect_plane("dc", dc, want_dc);
    expect_plane("gain", gain, want_gain);
}

} // namespace

TEST_CASE_FIXTURE(FreshBlocks,
                  "engine and model: random pictures, random registers, all the smallest sizes") {
    int served = 0;
    const auto compare = [&](uint32_t seed, PictureSize size) {
        const Equality result = compare_engine_with_model(seed, size);
        served += result.served;
        if (!result.difference.empty())
            FAIL(result.difference);
    };
    const int sizes = 12 * 21, pictures = 3000;
    for (int i = 0; i < sizes; i++)
        compare(1000000 + static_cast<uint32_t>(i), {4 + i % 21, 3 + i / 21});
    for (uint32_t seed = 0; seed < pictures; seed++)
        compare(seed, small_size(seed));
    CHECK(served > (sizes + pictures) * 9 / 10);
}

TEST_CASE_FIXTURE(FreshBlocks, "engine and model: a larger picture with every feature on") {
    for (const char *key : {"reg_cfa_ymoire_enable", "reg_cfa_cmoire_enable", "reg_cfa_shpn_enable"})
        set(key, 1);
    set("reg_cfa_shpn_gain_value", 100);
    const char *fill;
    for (uint32_t seed = 0; seed < 4; seed++) {
        cmodel_top_reg.hw.reg_img_bayerid = static_cast<int32_t>(seed);
        expect_equal(compare_engine_with_model(draw_mosaic(seed, {301, 97}, fill)), true);
    }
}

TEST_CASE_FIXTURE(FreshBlocks, "samples inside and outside the bound, wherever they stand") {
    const Plane raw = Noise(3).plane(37, 9, 1, 0, 4095);
    for (const auto &[y, x] : {std::pair{0, 0}, std::pair{4, 18}, std::pair{8, 35}, std::pair{8, 36}}) {
        Plane changed(raw);
        changed.set(y, x, 0, 4095);
        expect_equal(compare_engine_with_model(changed), true);
        for (const int32_t beyond : {4096, -257, 65535, -1, 1 << 27}) {
            changed.set(y, x, 0, beyond);
            expect_refused(changed);
        }
    }
}

TEST_CASE_FIXTURE(FreshBlocks, "sizes: what a single reflection serves, and no smaller") {
    for (const auto &[width, height, served] :
         {std::tuple{4, 3, true}, {5, 3, true}, {4, 4, true}, {3, 3, false}, {4, 2, false}, {2, 100, false}})
        if (served)
            expect_equal(compare_engine_with_model(Noise(4).plane(width, height, 1, 0, 4095)), true);
        else
            CHECK(!compare_engine_with_model(Plane(width, height, 1, 100)).served);
}

TEST_CASE_FIXTURE(FreshBlocks, "pattern ids: the four Bayer patterns, no other") {
    const Plane raw = Noise(5).plane(13, 8, 1, 0, 4095);
    for (int id = 0; id < 16; id++) {
        cmodel_top_reg.hw.reg_img_bayerid = id;
        if (id < 4)
            expect_equal(compare_engine_with_model(raw), true);
        else
            expect_refused(raw);
    }
}

TEST_CASE_FIXTURE(FreshBlocks, "debug images are the model's") {
    const TempFolder folder;
    std::snprintf(dbg_path, sizeof dbg_path, "%s", folder.path.c_str());
    dump_dbg_img = true;
    expect_refused(Noise(6).plane(9, 7, 1, 0, 4095));
    dump_dbg_img = false;
    CHECK(read_file(folder / "dbg_img_GH.ppm").starts_with("P5"));
}

TEST_CASE_FIXTURE(FreshBlocks,
                  "slopes: with their levels, or none; against them only where nobody reads them") {
    const Plane raw = Noise(7).plane(22, 11, 1, 0, 4095);
    const auto run = [&](const std::string &curve, const char *feature) {
        const bool luma = curve.starts_with("ymoire");
        const auto put = [&](const char *role, int32_t v) { set(("reg_cfa_" + curve + role).c_str(), v); };
        const int32_t steepest = luma ? 16383 : 131071;
        struct {
            int32_t level, limit, slope;
            bool inside;
        } const cases[] = {{10, 200, 0, true},      {10, 200, 1, true},  {10, 200, steepest, true},
                           {10, 200, -1, false},    {200, 10, 0, true},  {200, 10, -1, true},
                           {200, 10, 1, false},     {100, 100, 0, true}, {100, 100, 1, true},
                           {0, 511, -5, false},     {511, 0, 5, false},  {200, 10, -steepest, true},
                           {0, 511, steepest, true}};
        for (const auto &row : cases) {
            INFO(curve, ": ", row.level, " to ", row.limit, " by ", row.slope);
            put(luma ? "_low" : "_y0", row.level), put(luma ? "_high" : "_y1", row.limit);
            put(luma ? "_slope" : "_slp0", row.slope);
            set(feature, 1);
            expect_equal(compare_engine_with_model(raw), row.inside);
            set(feature, 0);
            expect_equal(compare_engine_with_model(raw), true);
        }
        INIT_CFA_REG("NULL");
    };
    for (const char *curve : {"ymoire_detail", "ymoire_edge", "ymoire_lut"})
        run(curve, "reg_cfa_ymoire_enable");
    for (const char *curve : {"cmoire_sat", "cmoire_ptclr", "cmoire_pd", "cmoire_edge"})
        run(curve, "reg_cfa_cmoire_enable");
}
