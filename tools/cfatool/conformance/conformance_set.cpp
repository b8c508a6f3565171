// The cases of the conformance set, and their input files.
#include "tools/cfatool/conformance/conformance_set.h"

#include <cstring>

#include "tools/cfatool/base/files.h"
#include "tools/cfatool/base/integer_math.h"
#include "tools/cfatool/base/trouble.h"
#include "tools/cfatool/charts/chart_file.h"
#include "tools/cfatool/registers/registers.h"

namespace cfatool {
namespace {

const Chart &chart_of(const std::string &name) {
    for (const Chart &chart : charts())
        if (name == chart.name)
            return chart;
    throw Trouble("conformance: no chart '" + name + "'");
}

void write_mosaic(const ConformanceCase &c, const std::string &path) {
    const Chart &chart = chart_of(c.chart);
    MosaicForm form;
    form.width = c.width;
    form.height = c.height;
    form.bayer = c.bayer;
    form.bits = c.bits;
    form.noise = default_noise(chart, form);
    form.seed = c.seed;
    const int64_t level = form.max() / 3;
    Canvas canvas;
    canvas.seed = c.seed;
    canvas.period = chart.period;
    canvas.angle = std::max<int64_t>(chart.angle, 0);
    canvas.colour = {level, level + 1, 2 * level};
    write_chart(path, chart, form, canvas);
}

/// Whether a register set gives this register a value, and which.
bool chosen_value(const ConformanceCase &c, const cfa::RegisterInfo &info, uint64_t index, int64_t &value) {
    const bool is_enable = std::strcmp(info.key, "reg_cfa_enable") == 0;
    const bool ends_in_enable = std::string(info.key).ends_with("_enable");
    const bool forces = std::strstr(info.key, "force_dir") != nullptr;
    if (is_enable || c.registers == RegisterSet::bypass) {
        value = c.registers != RegisterSet::bypass;
        return is_enable;
    }
    if (c.registers == RegisterSet::everything) {
        const bool strength = std::strcmp(info.key, "reg_cfa_shpn_gain_value") == 0;
        value = strength ? 40 : 1;
        return strength || (ends_in_enable && !forces);
    }
    const uint64_t random = random_bits(c.seed, index);
    value = cfa::register_min(info.bits, info.is_signed) +
            static_cast<int64_t>((random & 0xFFFFFFFF) % (uint64_t{1} << info.bits));
    return c.registers == RegisterSet::all || (c.registers == RegisterSet::some && random >> 62 == 0);
}

std::string registers_text(const ConformanceCase &c) {
    const cfa::RegisterTable &table = cfa::cfa_reg_hw_table();
    std::string text = std::string("[") + table.name + "]\n";
    uint64_t index = 0;
    for (const cfa::RegisterInfo &info : table.registers) {
        int64_t value = 0;
        if (chosen_value(c, info, index++, value))
            text += std::string(info.key) + " = " + std::to_string(value) + "\n";
    }
    return text;
}

} // namespace

std::vector<ConformanceCase> conformance_cases() {
    using enum RegisterSet;
    // Charts at the default registers, the four patterns in turn.
    std::vector<ConformanceCase> cases;
    for (const char *chart : {"scene", "zone-plate", "slanted-edge", "ramp", "flat", "checker", "stripes",
                              "fabric", "impulses", "protected-hues", "noise"})
        cases.push_back({std::string("defaults_") + chart, chart, 64, 48,
                         static_cast<uint32_t>(cases.size() % 4), 12, defaults, cases.size() + 1});
    for (uint32_t bayer = 0; bayer < 4; ++bayer)
        cases.push_back({"everything_scene_id" + std::to_string(bayer), "scene", 96, 64, bayer, 12,
                         everything, bayer + 1});
    const char *const charts_in_turn[] = {"noise", "zone-plate", "fabric", "impulses"};
    for (uint64_t i = 0; i < 8; ++i) {
        const std::string chart = charts_in_turn[i % 4];
        const auto bayer = static_cast<uint32_t>((i + i / 4) % 4);
        cases.push_back({"some_" + std::to_string(i) + "_" + chart, chart, 61, 43, bayer, 12, some, 100 + i});
        cases.push_back({"all_" + std::to_string(i) + "_" + chart, chart, 37, 29, bayer, 12, all, 200 + i});
    }
    // Forms: smallest, narrow, wide, other depths, 4 x 4 patterns, bypass.
    cases.push_back({"smallest", "noise", 4, 3, 0, 12, everything, 301});
    cases.push_back({"narrow", "noise", 4, 67, 1, 12, everything, 302});
    cases.push_back({"flat_and_wide", "noise", 521, 3, 2, 12, everything, 303});
    cases.push_back({"wide", "fabric", 259, 19, 3, 12, everything, 304});
    cases.push_back({"8_bits", "scene", 64, 48, 0, 8, everything, 305});
    cases.push_back({"10_bits", "noise", 33, 21, 1, 10, some, 306});
    cases.push_back({"16_bits", "noise", 33, 21, 2, 16, all, 307});
    cases.push_back({"20_bits", "noise", 33, 21, 3, 20, everything, 308});
    cases.push_back({"4x4_pattern_id8", "scene", 48, 40, 8, 12, everything, 309});
    cases.push_back({"4x4_pattern_id13", "noise", 35, 27, 13, 12, all, 310});
    cases.push_back({"bypass", "scene", 40, 30, 0, 12, bypass, 311});
    return cases;
}

void write_conformance_case(const ConformanceCase &c, const std::string &folder) {
    write_mosaic(c, folder + "/raw.ppm");
    write_whole_file(folder + "/cfa.ini", registers_text(c));
    write_whole_file(folder + "/cmodel_top.ini",
                     "[cmodel_top]\nreg_img_bayerid = " + std::to_string(c.bayer) + "\n");
}

} // namespace cfatool
