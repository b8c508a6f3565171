#include "cmodel/cfa/src/lines/frame_rows.h"

#include <string>

#include <doctest/doctest.h>

#include "cmodel/cfa/src/cfa_model.h"
#include "cmodel/cfa/src/kit/debug_image.h"
#include "cmodel/cfa/src/lines/conditions.h"
#include "cmodel/cfa/src/reg_parse/cfa_reg.h"
#include "cmodel/cmodel_top/src/reg_parse/cmodel_top_reg.h"
#include "tests/support/equality.h"
#include "tests/support/registers.h"
#include "tests/support/support.h"
#include "tests/support/tool.h"

using namespace cfa;

namespace {

void set(const std::string &key, int32_t v) {
    cfa_reg_hw_table().find(("reg_cfa_" + key).c_str())->store(cfa_reg.hw, v);
}

// Engine and model agree, or the engine refuses and leaves the outputs untouched.
void expect(const Plane &raw, bool served) {
    const Equality result = compare_engine_with_model(raw);
    CHECK(result.served == served);
    CHECK_MESSAGE(result.difference.empty(), result.difference);
}

} // namespace

TEST_CASE_FIXTURE(FreshRegisters, "engine and model: random pictures and registers, all the smallest sizes") {
    int served = 0;
    const auto compare = [&](uint32_t seed, PictureSize size) {
        const Equality result = compare_engine_with_model(seed, size);
        served += result.served;
        REQUIRE_MESSAGE(result.difference.empty(), result.difference);
    };
    for (int i = 0; i < 12 * 21; ++i)
        compare(1000000 + i, {4 + i % 21, 3 + i / 21});
    const uint32_t pictures = rounds(3000);
    for (uint32_t seed = 0; seed < pictures; ++seed)
        compare(seed, small_size(seed));
    for (uint32_t seed = 0; seed < pictures / 1000; ++seed)
        compare(seed, large_size(seed));
    CHECK(served == static_cast<int>(12 * 21 + pictures + pictures / 1000));
}

TEST_CASE_FIXTURE(FreshRegisters, "engine and model: at limits that random registers seldom meet") {
    for (uint32_t seed = 0; seed < static_cast<uint32_t>(rounds(1000)); ++seed) {
        const Equality result = compare_at_limits(seed);
        REQUIRE(result.served);
        REQUIRE_MESSAGE(result.difference.empty(), result.difference);
    }
}

TEST_CASE_FIXTURE(
    FreshRegisters,
    "engine and model: gradient ratios that are whole numbers, or that a float rounds up to one") {
    const std::pair<const char *, int> weight_falls_with_the_ratio[] = {
        {"ymoire_enable", 1},       {"cmoire_enable", 0},       {"ymoire_detail_low", 256},
        {"ymoire_detail_slope", 0}, {"ymoire_edge_th", 0},      {"ymoire_edge_low", 255},
        {"ymoire_edge_high", 0},    {"ymoire_edge_slope", -64}, {"ymoire_lut_high", 511},
        {"ymoire_lut_slope", 64}};
    for (const auto &[key, v] : weight_falls_with_the_ratio)
        set(key, v);
    const auto two_valued = [](Noise noise, int32_t contrast) {
        Plane raw(24, 16);
        for (int i = 0; i < 24 * 16; ++i)
            raw.set(i / 24, i % 24, 0, noise.in(0, 1) * contrast);
        return raw;
    };
    for (const uint32_t seed : {80, 3689, 5237, 14249}) { // that contain one
        Noise noise(seed);
        const int32_t contrast = noise.in(30000, 65535);
        expect(two_valued(noise, contrast), true);
    }
    set("ymoire_np", 0); // ratios of small numbers, whole ones among them
    Plane raw = two_valued(Noise(1), 4000);
    raw.set(15, 23, 0, 65535);
    expect(raw, true);
}

TEST_CASE_FIXTURE(FreshRegisters, "the engine takes samples of 16 bits alone, wherever they stand") {
    for (const PictureSize size : {PictureSize{37, 9}, {601, 500}}) {
        const int last = size.width * size.height - 1;
        const Plane raw = Noise(3).plane(size.width, size.height, 1, 0, 4095);
        for (const int at : {0, last / 2, last - 1, last})
            for (const int32_t sample : {4095, 4096, -1, -257, 65535, 1 << 16}) {
                INFO(size.width, " x ", size.height, ": ", sample, " at ", at);
                Plane changed(raw);
                changed.set(at / size.width, at % size.width, 0, sample);
                expect(changed, 0 <= sample && sample <= 65535);
            }
    }
}

TEST_CASE_FIXTURE(FreshRegisters, "the engine takes 2 x 2 patterns, 4 x 3 and larger") {
    const Plane raw = Noise(5).plane(13, 8, 1, 0, 4095);
    for (int id = 15; id >= 0; --id) {
        cmodel_top_reg.hw.reg_img_bayerid = id;
        expect(raw, id < 4);
    }
    for (const auto &[width, height] : {std::pair{3, 3}, {4, 2}, {0, 100}, {4, 3}, {5, 3}, {4, 4}})
        CHECK((cfa_lines_excludes(width, height) == nullptr) == (width >= 4 && height >= 3));
}

TEST_CASE_FIXTURE(
    FreshRegisters,
    "engine and model: the steepest slopes, on wide rows where one that is read contradicts its levels") {
    const Plane raw = Noise(7).plane(22, 11, 1, 0, 4095);
    for (const std::string curve : {"ymoire_detail", "ymoire_edge", "ymoire_lut", "cmoire_sat",
                                    "cmoire_ptclr", "cmoire_pd", "cmoire_edge"}) {
        const bool luma = curve[0] == 'y';
        const int32_t steepest = luma ? 16383 : 131071;
        struct {
            int32_t level, limit, slope;
            bool wide;
        } const rows[] = {{10, 200, 0, false},  {10, 200, steepest, false},  {10, 200, -1, true},
                          {200, 10, 0, false},  {200, 10, -steepest, false}, {200, 10, steepest, true},
                          {100, 100, 1, false}, {100, 100, -steepest, true}};
        for (const auto &row : rows) {
            INFO(curve, ": ", row.level, " to ", row.limit, " by ", row.slope);
            set(curve + (luma ? "_low" : "_y0"), row.level);
            set(curve + (luma ? "_high" : "_y1"), row.limit);
            set(curve + (luma ? "_slope" : "_slp0"), row.slope);
            for (const bool enabled : {true, false}) {
                set(curve.substr(0, 6) + "_enable", enabled);
                CHECK(cfa_lines_need_wide_rows(4095) == (row.wide && enabled));
                expect(raw, true);
            }
        }
        INIT_CFA_REG("NULL");
    }
}

TEST_CASE_FIXTURE(FreshRegisters,
                  "engine and model log the strength of the sharpening alike, when it is on") {
    const Plane raw(8, 6, 1, 100), rgb(raw, 3), dc(raw, 1), gain(raw, 1);
    set("shpn_gain_value", 100);
    for (const bool enabled : {false, true}) {
        set("shpn_enable", enabled);
        take_log();
        cfa_model(raw, rgb, dc, gain);
        const auto from_model = take_log();
        CHECK(cfa_lines(raw, rgb, dc, gain));
        CHECK(take_log() == from_model);
        REQUIRE(from_model.size() == enabled);
        if (enabled)
            CHECK_MESSAGE(matches(from_model[0], "INFO cfa_hw:[0-9]+: reg_cfa_shpn_gain_value = 100"),
                          from_model[0]);
    }
}
