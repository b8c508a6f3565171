// The input files of a conformance case, made from its recipe.
#include <cstring>
#include <map>
#include <sstream>

#include "tools/cfatool/base/files.h"
#include "tools/cfatool/base/integer_math.h"
#include "tools/cfatool/base/trouble.h"
#include "tools/cfatool/charts/chart_file.h"
#include "tools/cfatool/conformance/conformance_set.h"
#include "tools/cfatool/random/patchwork.h"
#include "tools/cfatool/random/values.h"
#include "tools/cfatool/registers/registers.h"

namespace cfatool {
namespace {

constexpr uint64_t REGISTERS = uint64_t{1} << 41; // counters of registers, apart from those of pixels

const Chart *chart_of(const ConformanceCase &c) {
    for (const Chart &chart : charts())
        if (std::strcmp(c.chart, chart.name) == 0)
            return &chart;
    return nullptr;
}

void write_mosaic(const ConformanceCase &c, const std::string &path) {
    MosaicForm form;
    form.width = c.width;
    form.height = c.height;
    form.bayer = c.bayer;
    form.bits = c.bits;
    form.seed = c.seed;
    if (const Chart *const chart = chart_of(c)) {
        form.noise = default_noise(*chart, form);
        const int64_t level = form.max() / 3;
        Canvas canvas;
        canvas.seed = c.seed;
        canvas.period = chart->period;
        canvas.angle = std::max<int64_t>(chart->angle, 0);
        canvas.colour = {level, level + 1, 2 * level};
        write_chart(path, *chart, form, canvas);
        return;
    }
    form.full = form.max();
    const bool whole = std::strcmp(c.chart, "texture") == 0;
    const Patchwork patchwork(c.seed, c.width, c.height, form.max(),
                              whole ? Patchwork::Tiles::whole : Patchwork::Tiles::small,
                              Patchwork::RECORDED_TEXTURES);
    MosaicWriter writer(path, form);
    std::vector<Rgb> row(static_cast<size_t>(c.width));
    for (int y = 0; y < c.height; ++y) {
        for (int x = 0; x < c.width; ++x) {
            const int64_t sample = patchwork(y, x);
            row[static_cast<size_t>(x)] = {sample, sample, sample};
        }
        writer.write_row(row);
    }
    writer.commit();
}

bool switches(const cfa::RegisterInfo &info) {
    return std::string(info.key).ends_with("_enable") && std::strstr(info.key, "force_dir") == nullptr;
}

using Values = std::map<std::string, int64_t>;

// What the register set gives to one register, if anything.
void choose_value(const ConformanceCase &c, const cfa::RegisterInfo &info, uint64_t index, Values &values) {
    using enum RegisterSet;
    const uint64_t random = random_bits(c.seed, REGISTERS + index);
    const int64_t low = cfa::register_min(info.bits, info.is_signed);
    const int64_t high = cfa::register_max(info.bits, info.is_signed);
    if (c.registers == everything && (switches(info) || std::strstr(info.key, "gain_value") != nullptr))
        values[info.key] = info.bits == 1 ? 1 : 40;
    else if (c.registers == drawn)
        values[info.key] = drawn_value(random, low, high);
    else if (c.registers == all || (c.registers == some && random >> 62 == 0))
        values[info.key] = low + static_cast<int64_t>((random & 0xFFFFFFFF) % (uint64_t{1} << info.bits));
}

std::string registers_text(const ConformanceCase &c) {
    const cfa::RegisterTable &table = cfa::cfa_reg_hw_table();
    Values values;
    uint64_t index = 0;
    for (const cfa::RegisterInfo &info : table.registers)
        choose_value(c, info, index++, values);
    if (c.registers == RegisterSet::drawn)
        let_slopes_agree([&](const cfa::RegisterInfo &info) { return values[info.key]; },
                         [&](const cfa::RegisterInfo &info, int64_t v) { values[info.key] = v; });
    values["reg_cfa_enable"] = c.registers != RegisterSet::bypass;
    std::istringstream settings(c.settings);
    for (std::string setting; settings >> setting;) {
        const size_t equals = setting.find('=');
        values["reg_cfa_" + setting.substr(0, equals)] = std::stoll(setting.substr(equals + 1));
    }
    std::string text = std::string("[") + table.name + "]\n";
    for (const cfa::RegisterInfo &info : table.registers)
        if (values.contains(info.key))
            text += std::string(info.key) + " = " + std::to_string(values[info.key]) + "\n";
    return text;
}

} // namespace

void write_conformance_case(const ConformanceCase &c, const std::string &folder) {
    write_mosaic(c, folder + "/raw.ppm");
    write_whole_file(folder + "/cfa.ini", registers_text(c));
    write_whole_file(folder + "/cmodel_top.ini",
                     "[cmodel_top]\nreg_img_bayerid = " + std::to_string(c.bayer) + "\n");
}

} // namespace cfatool
