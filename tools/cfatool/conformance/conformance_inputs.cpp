// The input files of a conformance case, made from its recipe.
#include <cstring>
#include <map>
#include <sstream>

#include "tools/cfatool/base/files.h"
#include "tools/cfatool/base/integer_math.h"
#include "tools/cfatool/base/trouble.h"
#include "tools/cfatool/charts/chart_file.h"
#include "tools/cfatool/conformance/conformance_set.h"
#include "tools/cfatool/registers/registers.h"

namespace cfatool {
namespace {

constexpr uint64_t TILES = uint64_t{1} << 40;     // counters of tiles, apart from those of pixels
constexpr uint64_t REGISTERS = uint64_t{1} << 41; // and of registers

// One tile of a patchwork: its texture and four levels of it.
struct Tile {
    uint64_t kind;
    int64_t level[4];

    Tile(uint64_t seed, uint64_t counter, int64_t max) : kind(random_bits(seed, TILES + 5 * counter) % 14) {
        for (uint64_t k = 0; k < 4; ++k)
            level[k] = static_cast<int64_t>(random_bits(seed, TILES + 5 * counter + 1 + k) %
                                            (static_cast<uint64_t>(max) + 1));
    }

    // A sample, not yet limited. REQUIRES x, y >= 0.
    int64_t sample(int64_t y, int64_t x, uint64_t random, int64_t max) const {
        const auto up_to = [random](int64_t n) { return static_cast<int64_t>(random % (n + 1)); };
        const int64_t own = level[y % 2 * 2 + x % 2];
        const int64_t step = max / 4095 + 1;
        switch (kind) {
        case 0: // a colour of its own for every site
            return own;
        case 1: // the same, a little noisy
            return own + (up_to(80) - 40) * step;
        case 2:
            return up_to(max);
        case 3:
            return up_to(1);
        case 4:
            return max - up_to(1);
        case 5:
            return up_to(1) * max;
        case 6: // impulses
            return up_to(20) == 0 ? static_cast<int64_t>(random >> 8) % (max + 1) : level[0];
        case 7: // stripes in some direction, hardly noisy
            return level[(x * (level[2] % 5) + y * (level[3] % 5)) % (2 + level[2] % 3) == 0] + up_to(4) - 2;
        case 8: // checker
            return level[(x + y) % 2];
        case 9: // ramp
            return level[0] + (x * (level[1] % 61 - 30) + y * (level[2] % 61 - 30)) * step + up_to(3);
        case 10: // rings
            return (x * x + y * y * (1 + level[1] % 3)) * (1 + level[0] % 200) * step / 64 % (max + 1);
        case 11: // round numbers
            return up_to(2 + level[0] % 7) << level[1] % 11;
        case 12: // flat but for single steps
            return level[0] + (up_to(23) == 0);
        default: // full of holes
            return up_to(2) == 0 ? 0 : static_cast<int64_t>(random >> 8) % (max + 1);
        }
    }
};

// Tiles of 5 to 16 pixels a side; a texture is one tile.
Painter patchwork(const ConformanceCase &c, int64_t max) {
    const bool whole = std::strcmp(c.chart, "texture") == 0;
    const uint64_t seed = c.seed;
    const int64_t side_x = whole ? c.width : 5 + static_cast<int64_t>(random_bits(seed, TILES - 1) % 12);
    const int64_t side_y = whole ? c.height : 5 + static_cast<int64_t>(random_bits(seed, TILES - 2) % 12);
    const int64_t columns = c.width / side_x + 1;
    const int64_t width = c.width;
    return [=](int x, int y) -> Rgb {
        const Tile tile(seed, static_cast<uint64_t>(y / side_y * columns + x / side_x), max);
        const uint64_t random = random_bits(seed, static_cast<uint64_t>(y * width + x)) >> 8;
        const int64_t sample = tile.sample(y, x, random, max);
        return {sample, sample, sample};
    };
}

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
    const Painter paint = patchwork(c, form.max());
    MosaicWriter writer(path, form);
    std::vector<Rgb> row(static_cast<size_t>(c.width));
    for (int y = 0; y < c.height; ++y) {
        for (int x = 0; x < c.width; ++x)
            row[static_cast<size_t>(x)] = paint(x, y);
        writer.write_row(row);
    }
    writer.commit();
}

bool switches(const cfa::RegisterInfo &info) {
    return std::string(info.key).ends_with("_enable") && std::strstr(info.key, "force_dir") == nullptr;
}

// An end, one beside it, a value of any magnitude, a round one, or any at all.
int64_t drawn_value(uint64_t random, int64_t low, int64_t high) {
    const auto take = [&random](uint64_t n) { // one of n, of bits not used yet
        const uint64_t drawn = random % n;
        random /= n;
        return static_cast<int64_t>(drawn);
    };
    const bool upper = take(2) != 0;
    switch (take(7)) {
    case 0:
        return upper ? high : low;
    case 1:
        return upper ? high - 1 : low + 1;
    case 2: {
        const int64_t v = take(uint64_t{1} << take(19));
        return std::clamp(upper ? v : -v, low, high);
    }
    case 3: {
        const int64_t v = (1 + take(3)) << take(16);
        return std::clamp(upper ? v : -v, low, high);
    }
    default:
        return low + take(static_cast<uint64_t>(high - low + 1));
    }
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

// Drawn slopes lead from their level to their limit.
void let_slopes_agree(Values &values) {
    for (const cfa::RegisterInfo &slope : cfa::cfa_reg_hw_table().registers) {
        if (slope.curve.role != cfa::CurveRole::slope)
            continue;
        const auto of_curve = [&](cfa::CurveRole role) {
            for (const cfa::RegisterInfo &info : cfa::cfa_reg_hw_table().registers)
                if (std::strcmp(info.curve.name, slope.curve.name) == 0 && info.curve.role == role)
                    return values[info.key];
            return int64_t{0};
        };
        const bool rises = of_curve(cfa::CurveRole::y0) <= of_curve(cfa::CurveRole::y1);
        int64_t &v = values[slope.key];
        if (rises ? v < 0 : v > 0)
            v = std::min<int64_t>(-v, cfa::register_max(slope.bits, true));
    }
}

std::string registers_text(const ConformanceCase &c) {
    const cfa::RegisterTable &table = cfa::cfa_reg_hw_table();
    Values values;
    uint64_t index = 0;
    for (const cfa::RegisterInfo &info : table.registers)
        choose_value(c, info, index++, values);
    if (c.registers == RegisterSet::drawn)
        let_slopes_agree(values);
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
