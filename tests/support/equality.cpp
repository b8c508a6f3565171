#include "tests/support/equality.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>
#include <sstream>
#include <string_view>
#include <vector>

#include "cmodel/cfa/src/cfa_model.h"
#include "cmodel/cfa/src/kit/debug_image.h"
#include "cmodel/cfa/src/kit/in_force.h"
#include "cmodel/cfa/src/lines/frame_rows.h"
#include "cmodel/cfa/src/planes.h"
#include "cmodel/cfa/src/reg_parse/cfa_reg.h"
#include "cmodel/cmodel_top/src/reg_parse/cmodel_top_reg.h"
#include "tests/support/tool.h"

using namespace cfa;

namespace {

constexpr int32_t UNTOUCHED = -123456789;

// Neighbouring seeds give unrelated streams.
Noise noise_of(uint32_t seed, uint32_t purpose) {
    uint32_t h = seed * 2654435761u ^ purpose * 2246822519u;
    h = (h ^ h >> 15) * 2246822519u;
    h = (h ^ h >> 13) * 3266489917u;
    return Noise(h ^ h >> 16);
}

// A value of any magnitude: as many bits as drawn first. Thresholds near the data are small.
int32_t any_magnitude(Noise &noise, int32_t low, int32_t high) {
    const int32_t v = noise.in(0, (1 << noise.in(0, 18)) - 1);
    return std::clamp(noise.in(0, 1) != 0 ? -v : v, low, high);
}

// Products of such values meet their thresholds and halves exactly.
int32_t round_number(Noise &noise, int32_t low, int32_t high) {
    const int32_t v = noise.in(1, 3) << noise.in(0, 15);
    return std::clamp(noise.in(0, 1) != 0 ? -v : v, low, high);
}

int32_t draw_value(Noise &noise, int32_t low, int32_t high) {
    switch (noise.in(0, 6)) {
    case 0:
        return noise.in(0, 1) != 0 ? low : high;
    case 1:
        return std::clamp(noise.in(0, 1) != 0 ? low + 1 : high - 1, low, high);
    case 2:
        return any_magnitude(noise, low, high);
    case 3:
        return round_number(noise, low, high);
    default:
        return noise.in(low, high);
    }
}

// The slope, level and limit of one curve.
void let_slope_agree(const RegisterInfo &slope) {
    int32_t level = 0, limit = 0;
    for (const RegisterInfo &info : cfa_reg_hw_table().registers) {
        if (std::string_view(info.curve.name) == slope.curve.name && info.curve.role == CurveRole::y0)
            level = info.read(cfa_reg.hw);
        if (std::string_view(info.curve.name) == slope.curve.name && info.curve.role == CurveRole::y1)
            limit = info.read(cfa_reg.hw);
    }
    const int32_t v = slope.read(cfa_reg.hw);
    if (level <= limit ? v < 0 : v > 0)
        slope.store(cfa_reg.hw, std::min(-v, register_max(slope.bits, true)));
}

// What the samples of a mosaic are made from.
struct Draw {
    Noise noise;
    int32_t largest;     // of the depth
    int32_t values[4]{}; // 0 to the largest
    int32_t d[4]{};      // small numbers

    Draw(const Noise &seeded, int32_t largest_) : noise(seeded), largest(largest_) {
        for (int32_t &v : values)
            v = any();
        for (int32_t &v : d)
            v = in(0, 4095);
    }
    int32_t in(int32_t low, int32_t high) { return noise.in(low, high); }
    int32_t any() { return in(0, largest); }
    int32_t near(int32_t v, int32_t by) { return std::clamp(v + in(-by, by), 0, largest); }
};

// A sample at a place.
using Fill = int32_t (*)(Draw &n, int y, int x);

const Fill fills[] = {
    // random
    [](Draw &n, int, int) { return n.any(); },
    // 0 and 1
    [](Draw &n, int, int) { return n.in(0, 1); },
    // the two largest
    [](Draw &n, int, int) { return n.largest - n.in(0, 1); },
    // 0 or the largest
    [](Draw &n, int, int) { return n.in(0, 1) * n.largest; },
    // impulses
    [](Draw &n, int, int) { return n.in(0, 20) == 0 ? n.any() : n.values[0]; },
    // round numbers
    [](Draw &n, int, int) { return n.near(n.in(0, 2 + n.d[0] % 7) << n.d[1] % 15, 0); },
    // checker
    [](Draw &n, int y, int x) { return n.values[(x + y) % 2]; },
    // full checker
    [](Draw &n, int y, int x) { return (x + y) % 2 * n.largest; },
    // flat colors
    [](Draw &n, int y, int x) { return n.values[y % 2 * 2 + x % 2]; },
    // noisy colors
    [](Draw &n, int y, int x) { return n.near(n.values[y % 2 * 2 + x % 2], 40); },
    // ramp
    [](Draw &n, int y, int x) {
        return n.near(n.values[0] + x * (n.d[1] % 61 - 30) + y * (n.d[2] % 61 - 30), n.d[3] % 4);
    },
    // rings
    [](Draw &n, int y, int x) {
        return (x * x + y * y * (1 + n.d[1] % 3)) * (1 + n.d[0] % 200) / 64 % (n.largest + 1);
    },
    // stripes
    [](Draw &n, int y, int x) {
        const int phase = (x * (n.d[2] % 5) + y * (n.d[3] % 5)) % (2 + n.d[2] % 3);
        return n.near(n.values[phase == 0], 2);
    },
    // blocks
    [](Draw &n, int y, int x) {
        return n.near(n.values[(x / (3 + n.d[2] % 7) + y / (2 + n.d[3] % 7)) % 2], 3);
    },
};

// Twelve bits half of the time, beyond them a quarter, any number from one on.
int32_t draw_depth(Noise &noise) {
    const int kind = noise.in(0, 3);
    return kind < 2 ? 12 : kind == 2 ? noise.in(13, 16) : noise.in(1, 16);
}

struct Outputs {
    Plane rgb, dc, gain;
    explicit Outputs(const Plane &raw)
        : rgb(raw.width(), raw.height(), 3, UNTOUCHED), dc(raw.width(), raw.height(), 1, UNTOUCHED),
          gain(raw.width(), raw.height(), 1, UNTOUCHED) {}
};

// Adds a line on the first sample that differs.
void compare_plane(std::ostream &out, const char *name, const FRAME *want, const FRAME *got) {
    const size_t count = static_cast<size_t>(want->width) * want->height * want->channels;
    int differences = 0;
    size_t first = 0;
    for (size_t i = count; i-- > 0;)
        if (want->data[i] != got->data[i]) {
            differences++;
            first = i;
        }
    if (differences == 0)
        return;
    const size_t pixel = first / want->channels;
    out << name << ": y " << pixel / want->width << ", x " << pixel % want->width << ", channel "
        << first % want->channels << ", engine " << static_cast<int32_t>(got->data[first]) << ", model "
        << static_cast<int32_t>(want->data[first]) << "; " << differences << " differences\n";
}

void compare_outputs(std::ostream &out, const Outputs &want, const Outputs &got) {
    compare_plane(out, "rgb", want.rgb, got.rgb);
    compare_plane(out, "dc", want.dc, got.dc);
    compare_plane(out, "gain", want.gain, got.gain);
}

// Planes as text: sizes and samples.
class Recorder : public PlaneTaker {
  public:
    Recorder(const Plane &raw, uint32_t seed) : raw_(raw), noise_(seed) {
        for (const PlaneInfo &plane : planes())
            if (seed == 0 || noise_.in(0, 5) == 0)
                found[plane.name];
    }
    bool wants(const PlaneInfo &plane) const override { return found.contains(plane.name); }
    void take(const PlaneInfo &plane, const FRAME *frame) override {
        for (int y = 0; y < raw_.height() && wants(plane); ++y)
            for (int x = 0; x < raw_.width(); ++x)
                for (int c = 0; c < plane.channels; ++c)
                    found[plane.name].push_back(value(frame, y, x, c));
    }
    void row(const PlaneInfo &plane, int y, const SplitRow<int16_t> *channels) override {
        add(plane, y, channels);
    }
    void row(const PlaneInfo &plane, int y, const SplitRow<int32_t> *channels) override {
        add(plane, y, channels);
    }

    std::map<std::string, std::vector<int32_t>> found;

  private:
    template <class T> void add(const PlaneInfo &plane, int y, const SplitRow<T> *channels) {
        std::vector<int32_t> &samples = found.at(plane.name);
        samples.resize(static_cast<size_t>(y * raw_.width() * plane.channels),
                       UNTOUCHED); // rows come in order
        for (int x = 0; x < raw_.width(); ++x)
            for (int c = 0; c < plane.channels; ++c)
                samples.push_back(channels[c].half[x % 2][x / 2]);
    }
    const Plane &raw_;
    Noise noise_;
};

// What one way leaves beside the outputs, by name.
struct Found {
    std::map<std::string, std::vector<int32_t>> planes;
    std::map<std::string, std::string> images;
};

Found run_beside(const Plane &raw, Beside beside, const std::function<void()> &way) {
    if (beside == Beside::nothing) {
        way();
        return {};
    }
    if (beside == Beside::images) {
        const TempFolder folder;
        std::snprintf(dbg_path, sizeof dbg_path, "%s", folder.path.c_str());
        dump_dbg_img = true;
        way();
        dump_dbg_img = false;
        Found found;
        for (const auto &entry : std::filesystem::directory_iterator(folder.path))
            found.images[entry.path().filename()] = read_file(entry.path());
        return found;
    }
    Recorder recorder(raw,
                      beside == Beside::planes ? 0 : 1 + static_cast<uint32_t>(raw.width() + raw.height()));
    const BoundRegisters bound(cfa_reg, cmodel_top_reg, &recorder);
    way();
    return {recorder.found, {}};
}

template <class T> void compare_found(std::ostream &out, const std::map<std::string, T> &want,
                                      const std::map<std::string, T> &got) {
    for (const auto &[name, found] : want) {
        const auto other = got.find(name);
        if (other == got.end() || other->second.size() != found.size())
            out << name << ": of another size\n";
        else if (other->second != found)
            out << name << ": differs first at element "
                << std::mismatch(found.begin(), found.end(), other->second.begin()).first - found.begin()
                << "\n";
    }
    if (got.size() != want.size())
        out << got.size() << " planes or images, not " << want.size() << "\n";
}

// The registers that are not as reset.
std::string registers_text() {
    std::ostringstream out;
    out << "id " << cmodel_top_reg.hw.reg_img_bayerid;
    for (const RegisterInfo &info : cfa_reg_hw_table().registers)
        if (info.read(cfa_reg.hw) != info.reset)
            out << ", " << info.key << " = " << info.read(cfa_reg.hw);
    return out.str();
}

} // namespace

PictureSize small_size(uint32_t seed) {
    Noise noise = noise_of(seed, 1);
    if (noise.in(0, 9) == 0) // whole vectors and blocks, and a little less or more
        return {64 * noise.in(1, 10) + noise.in(-5, 5), noise.in(3, 8)};
    const int width = 4 + noise.in(0, noise.in(0, 3) == 0 ? 90 : 24);
    return {width, 3 + noise.in(0, noise.in(0, 3) == 0 ? 40 : 16)};
}

PictureSize large_size(uint32_t seed) {
    Noise noise = noise_of(seed, 1);
    const int shape = noise.in(0, 9);
    if (shape == 0)
        return {16384 - noise.in(0, 3), noise.in(3, 20)};
    if (shape == 1)
        return {noise.in(4, 9), noise.in(2000, 9000)};
    const int width = noise.in(200, 700);
    return {width, noise.in(100, 500)};
}

void draw_registers(uint32_t seed) {
    Noise noise = noise_of(seed, 2);
    INIT_CFA_REG("NULL");
    INIT_CMODEL_TOP_REG("NULL");
    cmodel_top_reg.hw.reg_img_bayerid = noise.in(0, 3);
    const int mode = noise.in(0, 3); // 0: switches only; 1: some registers; else all
    for (const RegisterInfo &info : cfa_reg_hw_table().registers) {
        const bool drawn = info.bits == 1 || mode >= 2 || (mode == 1 && noise.in(0, 3) == 0);
        const int32_t low = register_min(info.bits, info.is_signed);
        const int32_t high = register_max(info.bits, info.is_signed);
        if (drawn)
            info.store(cfa_reg.hw, mode == 3 ? draw_value(noise, low, high) : noise.in(low, high));
    }
    cfa_reg.hw.reg_cfa_enable = 1;
    if (noise.in(0, 2) != 0)
        cfa_reg.hw.reg_cfa_force_dir_enable = 0;
    if (noise.in(0, 2) != 0)
        for (const RegisterInfo &info : cfa_reg_hw_table().registers)
            if (info.curve.role == CurveRole::slope)
                let_slope_agree(info);
}

Plane draw_mosaic(uint32_t seed, PictureSize size) {
    Noise noise = noise_of(seed, 3);
    const Fill fill = fills[noise.in(0, std::size(fills) - 1)];
    Draw draw(noise, (1 << draw_depth(noise)) - 1);
    Plane raw(size.width, size.height);
    for (int y = 0; y < size.height; y++)
        for (int x = 0; x < size.width; x++)
            raw.set(y, x, 0, fill(draw, y, x));
    return raw;
}

Equality compare_engine_with_model(const Plane &raw, Beside beside, int threads) {
    const Outputs untouched(raw), got(raw), want(raw);
    bool served = false;
    Found from_model;
    const Found from_engine =
        run_beside(raw, beside, [&] { served = cfa_lines(raw, got.rgb, got.dc, got.gain, threads); });
    if (served)
        from_model = run_beside(raw, beside, [&] { cfa_model(raw, want.rgb, want.dc, want.gain); });
    std::ostringstream out;
    compare_outputs(out, served ? want : untouched, got);
    if (served) {
        compare_found(out, from_model.planes, from_engine.planes);
        compare_found(out, from_model.images, from_engine.images);
    }
    if (!out.str().empty())
        out << (served ? "" : "refused, but written\n") << registers_text() << "\n";
    return {served, out.str()};
}

Equality compare_engine_with_model(uint32_t seed, PictureSize size) {
    draw_registers(seed);
    const Plane raw = draw_mosaic(seed, size);
    const int threads = 1 + static_cast<int>(seed / 16 % 2);
    Equality result = compare_engine_with_model(raw, static_cast<Beside>(seed % 3), threads);
    if (result.difference.empty() && seed % static_cast<uint32_t>(stride(16)) == 0) // many files
        result = compare_engine_with_model(raw, Beside::images, threads);
    if (!result.difference.empty())
        result.difference = "seed " + std::to_string(seed) + ", " + std::to_string(size.width) + " x " +
                            std::to_string(size.height) + "\n" + result.difference;
    return result;
}

namespace {

void set(const std::string &key, int32_t v) {
    cfa_reg_hw_table().find(("reg_cfa_" + key).c_str())->store(cfa_reg.hw, v);
}

struct Contrast {
    int32_t largest = 4095;  // of the samples
    bool two_valued = false; // 0 or the largest, nothing between
};

Contrast draw_limits(Noise &noise, uint32_t kind) {
    switch (kind) {
    case 0: // the phase difference limited to 12 bits, before a curve whose knee lies there
        set("cmoire_sat_y1", 4095), set("cmoire_sat_slp0", 0);
        set("cmoire_ptclr_y0", 4095), set("cmoire_ptclr_slp0", 0);
        set("cmoire_pd_x0", noise.in(3900, 4095)), set("cmoire_pd_slp0", 1024 * noise.in(1, 40));
        set("cmoire_edge_x0", noise.in(0, 2000));
        return {};
    case 1: // the sharpening detail limited to 12 bits
        set("shpn_enable", 1), set("shpn_gain_value", noise.in(1, 30));
        set("shpn_hf_blend_wgt", 255), set("shpn_mf_blend_wgt", 255), set("shpn_core_value", 0);
        set("cmoire_enable", 0);
        return {};
    case 2: // luma-moire curves: a knee one step below the largest detail, or no detail curve and an odd
            // slope
        set("ymoire_enable", 1), set("ymoire_lpf_w", noise.in(0, 255)), set("ymoire_dc_w", noise.in(0, 255));
        set("ymoire_lut_high", 511), set("ymoire_lut_slope", 2 * noise.in(16, 64) + 1);
        set("ymoire_edge_th", 0), set("ymoire_edge_slope", 64 * noise.in(1, 4));
        if (noise.in(0, 1) != 0)
            set("ymoire_detail_th", 254), set("ymoire_detail_slope", 16383);
        else
            set("ymoire_detail_low", 256), set("ymoire_detail_slope", 0);
        return {4095, noise.in(0, 1) == 0};
    default: // blends of variances about 16384
        set("force_dir_enable", 1), set("cmoire_enable", 0);
        return {noise.in(500, 1600), false};
    }
}

} // namespace

Equality compare_at_limits(uint32_t seed) {
    Noise noise = noise_of(seed, 4);
    INIT_CFA_REG("NULL");
    INIT_CMODEL_TOP_REG("NULL");
    const Contrast contrast = draw_limits(noise, seed % 4);
    Plane raw(noise.in(20, 40), noise.in(12, 24));
    for (int y = 0; y < raw.height(); ++y)
        for (int x = 0; x < raw.width(); ++x) {
            const bool extreme = contrast.two_valued || noise.in(0, 3) == 0;
            raw.set(y, x, 0, extreme ? noise.in(0, 1) * contrast.largest : noise.in(0, contrast.largest));
        }
    Equality result = compare_engine_with_model(raw);
    if (!result.difference.empty())
        result.difference = "limits, seed " + std::to_string(seed) + "\n" + result.difference;
    return result;
}
