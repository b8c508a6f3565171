#include "tools/cfatool/compare/explain.h"

#include <algorithm>
#include <fmt/core.h>
#include <map>

#include "cmodel/cfa/src/cfa_hw.h"
#include "cmodel/cfa/src/kit/in_force.h"
#include "cmodel/cfa/src/stages.h"
#include "cmodel/common/color_id.h"
#include "tools/cfatool/base/trouble.h"
#include "tools/cfatool/runs/run_maker.h"

namespace cfatool {
namespace {

/// A plane that B does not have.
struct Missing {
    std::string plane;
};

/// B's planes as a stage reads them, and the ones that it fills.
class Bench {
  public:
    Bench(const RunFolder &a, const RunFolder &b, uint32_t bayer_id) : bayer(bayer_id), a_(a), b_(b) {}

    const FRAME *in(const char *name) {
        cfa::FramePtr &frame = in_[name];
        if (!frame)
            frame = load(name);
        return frame.get();
    }
    FRAME *out(const char *name) {
        const FRAME *const like = in("raw");
        const cfa::PlaneInfo *const info = cfa::find_plane(name);
        out_[name] = cfa::plane_like(like, FRAME_TYPE_IMG, static_cast<uint32_t>(info->channels), 12);
        return out_[name].get();
    }
    const FRAME *made(const std::string &name) const {
        const auto own = out_.find(name), taken = inner.planes.find(name);
        return own != out_.end()             ? own->second.get()
               : taken != inner.planes.end() ? taken->second.get()
                                             : nullptr;
    }

    const uint32_t bayer;
    TakenPlanes inner; // what a stage makes beside its arguments

  private:
    cfa::FramePtr load(const std::string &name) const {
        const RunPlane *file = b_.exact(name);
        if (file == nullptr && name == "raw")
            file = a_.exact(name);
        if (file == nullptr)
            throw Missing{name};
        const PlaneFile plane(file->path);
        const PlaneForm &form = plane.form();
        const auto size = [](int v) { return static_cast<uint32_t>(v); };
        cfa::FramePtr frame(cfa::new_frame(FRAME_TYPE_IMG,
                                           form.channels == 3 ? FRAME_FMT_RGB : FRAME_FMT_MONO,
                                           size(form.width), size(form.height), size(form.channels), 12));
        const std::vector<int32_t> samples = plane.read();
        std::copy(samples.begin(), samples.end(), frame->data);
        check(*frame, *file);
        return frame;
    }
    void check(const FRAME &frame, const RunPlane &file) const {
        const auto channels = static_cast<uint32_t>(file.plane != nullptr ? file.plane->channels : 1);
        const auto raw = in_.find("raw");
        const bool first = raw == in_.end() || !raw->second;
        cfa::refuse_small_picture(frame.width, frame.height);
        if (frame.channels != channels ||
            (!first && (frame.width != raw->second->width || frame.height != raw->second->height)))
            throw file_trouble(file.path, "is not of the size of the mosaic");
    }

    const RunFolder &a_, &b_;
    std::map<std::string, cfa::FramePtr> in_, out_;
};

struct StageCall {
    const char *stage;
    void (*run)(Bench &p);
};

// clang-format off
constexpr StageCall CALLS[] = {
    {"cfa_CalAvg", [](Bench &p) { cfa_CalAvg(p.in("raw"), p.out("AvgRGB"), p.bayer); }},
    {"cfa_CalPredictPixel", [](Bench &p) { cfa_CalPredictPixel(p.in("raw"), p.out("GH"), p.out("GV"), p.out("GH_lp"), p.out("GH_hp"), p.out("GV_lp"), p.out("GV_hp"),
                                                               p.out("MaxRGB"), p.out("MinRGB"), p.bayer); }},
    {"cfa_CalClassifier", [](Bench &p) { cfa_CalClassifier(p.in("raw"), p.out("LH"), p.out("LV"), p.out("LMax"), p.out("RatioH"), p.out("RatioV"), p.bayer); }},
    {"cfa_CalVarOfColorDiffAtG", [](Bench &p) { cfa_CalVarOfColorDiffAtG(p.in("raw"), p.in("GH"), p.in("GV"), p.out("SigH"), p.out("SigV"), p.bayer); }},
    {"cfa_CalVarOfColorDiffAtRB", [](Bench &p) {
         const FRAME *const raw = p.in("raw");
         cfa::FramePtr scratch[4];
         for (cfa::FramePtr &plane : scratch)
             plane = cfa::plane_like(raw, FRAME_TYPE_IMG, 1, 16);
         cfa_CalVarOfColorDiffAtRB(raw, p.in("GH"), p.in("GV"), scratch[0].get(), scratch[1].get(), scratch[2].get(), scratch[3].get(), p.out("SigH"), p.out("SigV"), p.bayer); }},
    {"cfa_CalDirectionInfo", [](Bench &p) { cfa_CalDirectionInfo(p.in("raw"), p.in("AvgRGB"), p.in("LH"), p.in("LV"), p.in("SigH"), p.in("SigV"), p.out("DirInfo"), p.bayer); }},
    {"cfa_CalRGB", [](Bench &p) { cfa_CalRGB(p.in("raw"), p.out("cfa_RGB"), p.in("GH"), p.in("GV"), p.in("GH_lp"), p.in("GV_lp"), p.in("GH_hp"), p.in("GV_hp"), p.in("MaxRGB"), p.in("MinRGB"),
                                             p.in("SigH"), p.in("SigV"), p.in("LMax"), p.in("RatioH"), p.in("RatioV"), p.in("DirInfo"), p.bayer); }},
    {"cfa_DeYMoire", [](Bench &p) { cfa_DeYMoire(p.in("cfa_RGB"), p.in("AvgRGB"), p.in("MaxRGB"), p.in("MinRGB"), p.in("GH"), p.in("GV"), p.out("YMoire")); }},
    {"cfa_CalYMoireWgt", [](Bench &p) { cfa_CalYMoireWgt(p.in("GH"), p.in("GV"), p.in("MaxRGB_lpf"), p.in("MinRGB_lpf"), p.out("MoireWgt")); }},
    {"cfa_CalColorMoireSts", [](Bench &p) { cfa_CalColorMoireSts(p.in("AvgRGB"), p.in("GH"), p.in("GV"), p.out("cdist_wt"), p.out("edge_wt")); }},
    {"cfa_CalPhaseDifference", [](Bench &p) { cfa_CalPhaseDifference(p.in("raw"), p.in("GH"), p.in("GV"), p.out("pd_wt")); }},
    {"cfa_DeColorMoire", [](Bench &p) { cfa_DeColorMoire(p.in("YMoire"), p.out("CMOut"), p.in("pd_wt"), p.in("cdist_wt"), p.in("edge_wt")); }},
    {"gen_MaxRGB_1ch", [](Bench &p) { gen_MaxRGB_1ch(p.in("MaxRGB"), p.out("MaxRGB1")); }},
    {"gen_dst_dc", [](Bench &p) { gen_dst_dc(p.in("MaxRGB1"), p.out("out_dc")); }},
    {"sg_get_bayer_luma", [](Bench &p) { sg_get_bayer_luma(p.in("raw"), p.out("bayer_luma")); }},
    {"sg_get_rgb_luma", [](Bench &p) { sg_get_rgb_luma(p.in("CMOut"), p.out("rgb_luma")); }},
    {"sg_preprocess", [](Bench &p) { sg_preprocess(p.in("bayer_luma"), p.out("spike_removed")); }},
    {"sg_get_dalta_HF", [](Bench &p) { sg_get_dalta_HF(p.in("rgb_luma"), p.in("spike_removed"), p.out("HF")); }},
    {"sg_get_bayer_luma_lpf", [](Bench &p) { sg_get_bayer_luma_lpf(p.in("bayer_luma"), p.out("lpf")); }},
    {"sg_get_delta_MF", [](Bench &p) { sg_get_delta_MF(p.in("spike_removed"), p.in("lpf"), p.out("MF")); }},
    {"sg_coring_proc", [](Bench &p) { sg_coring_proc(p.in("MF"), p.in("HF"), p.out("cored")); }},
    {"sharpen_gain_main_proc", [](Bench &p) {
         get_sharpen_gain(p.in("rgb_luma"), p.in("cored"), p.out("out_sg"));
         FRAME *const rgb = p.out("out_rgb");
         copy_to_dst(p.in("CMOut"), rgb);
         apply_sharpen_gain_rgb(rgb, p.in("cored")); }},
};
// clang-format on

/// The first sample of these sites that is not as B has it; "" if there is none.
std::string first_difference(const FRAME *model, const FRAME *b, const PlanePart &part, uint32_t bayer) {
    for (int y = 0; y < cfa::height_of(b); ++y)
        for (int x = 0; x < cfa::width_of(b); ++x)
            for (int c = 0; c < static_cast<int>(b->channels); ++c) {
                const int32_t want = cfa::value(model, y, x, c), got = cfa::value(b, y, x, c);
                if (want != got && sites_contain(part.sites, x, y, bayer))
                    return fmt::format("x {}, y {}{}: the model {}, B {}", x, y,
                                       b->channels > 1 ? fmt::format(", channel {}", channel_name(3, c)) : "",
                                       want, got);
            }
    return "";
}

Explanation explain_stage(Bench &bench, const StageCall &call, const RunVerdict &verdict,
                          const StageVerdict &stage) {
    Explanation explanation;
    explanation.stage = call.stage;
    try {
        call.run(bench);
        // The removal contains the weight, which is a stage of its own.
        const FRAME *const weight =
            call.stage == std::string("cfa_DeYMoire") ? bench.made("MoireWgt") : nullptr;
        const bool other_weight =
            weight != nullptr && !first_difference(weight, bench.in("MoireWgt"), {}, bench.bayer).empty();
        for (const size_t place : stage.planes) {
            const PlanePart &part = verdict.planes[place].part;
            if (other_weight && part.name == "YMoire") {
                explanation.result = Explanation::Result::not_apart;
                return explanation;
            }
            explanation.plane = part.name + sites_text(part.sites);
            explanation.detail =
                first_difference(bench.made(part.name), bench.in(part.name.c_str()), part, bench.bayer);
            explanation.result = Explanation::Result::itself;
            if (!explanation.detail.empty())
                return explanation;
        }
        explanation.result = Explanation::Result::input_only;
    } catch (const Missing &missing) {
        explanation.result = Explanation::Result::no_planes;
        explanation.plane = missing.plane;
    }
    return explanation;
}

} // namespace

std::vector<Explanation> explain(const RunFolder &a, const RunFolder &b, const RunVerdict &verdict) {
    const Registers defaults;
    const Registers &registers = b.registers() != nullptr   ? *b.registers()
                                 : a.registers() != nullptr ? *a.registers()
                                                            : defaults;
    std::vector<Explanation> explanations;
    for (const StageVerdict &stage : verdict.stages) {
        const bool in_question = stage.verdict == Verdict::differs_here ||
                                 stage.verdict == Verdict::suspect ||
                                 stage.verdict == Verdict::differs_by_input;
        const auto call = std::find_if(std::begin(CALLS), std::end(CALLS),
                                       [&](const StageCall &c) { return c.stage == stage.stage; });
        if (!in_question || call == std::end(CALLS))
            continue;
        Bench bench(a, b, static_cast<uint32_t>(std::max(verdict.bayer, 0)));
        const cfa::BoundRegisters bound(registers.block, registers.top, &bench.inner);
        explanations.push_back(explain_stage(bench, *call, verdict, stage));
    }
    return explanations;
}

std::string explanation_text(const Explanation &e) {
    switch (e.result) {
    case Explanation::Result::input_only:
        return fmt::format("{}: right for B's own input; only its input is wrong", e.stage);
    case Explanation::Result::itself:
        return fmt::format("{}: wrong itself: on B's own input, {} at {}", e.stage, e.plane, e.detail);
    case Explanation::Result::not_apart:
        return fmt::format("{}: cannot be judged: it contains cfa_CalYMoireWgt, which is wrong", e.stage);
    default:
        return fmt::format("{}: cannot be run again: B has no exact {}", e.stage, e.plane);
    }
}

} // namespace cfatool
