#include "tests/support/equality.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>
#include <sstream>
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

void draw_registers(uint32_t seed) {
    cfatool::draw_registers(seed, cfa_reg, cmodel_top_reg);
}

Plane drawn_mosaic(uint32_t seed, PictureSize size) {
    return Plane(cfatool::draw_mosaic(seed, size));
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
    const Plane raw = drawn_mosaic(seed, size);
    const int threads = 1 + static_cast<int>(seed / 16 % 2);
    Equality result = compare_engine_with_model(raw, static_cast<Beside>(seed % 3), threads);
    if (result.difference.empty() && seed % static_cast<uint32_t>(stride(16)) == 0) // many files
        result = compare_engine_with_model(raw, Beside::images, threads);
    if (!result.difference.empty())
        result.difference = "seed " + std::to_string(seed) + ", " + std::to_string(size.width) + " x " +
                            std::to_string(size.height) + "\n" + result.difference;
    return result;
}

Equality compare_at_limits(uint32_t seed) {
    Equality result =
        compare_engine_with_model(Plane(cfatool::draw_at_limits(seed, cfa_reg, cmodel_top_reg)));
    if (!result.difference.empty())
        result.difference = "limits, seed " + std::to_string(seed) + "\n" + result.difference;
    return result;
}
