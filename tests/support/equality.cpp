#include "tests/support/equality.h"

#include <algorithm>
#include <sstream>

#include "cmodel/cfa/src/cfa_model.h"
#include "cmodel/cfa/src/lines/frame_rows.h"
#include "cmodel/cfa/src/reg_parse/cfa_reg.h"
#include "cmodel/cmodel_top/src/reg_parse/cmodel_top_reg.h"
#include "tests/support/beside.h"
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
    if (served)
        compare_found(out, from_model, from_engine);
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
