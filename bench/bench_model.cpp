// The model in memory: each stage alone on the planes that the stages before it made, and the whole.
#include <algorithm>
#include <memory>
#include <string>

#include "bench/bench_data.h"
#include "cmodel/cfa/src/cfa_hw.h"
#include "cmodel/cfa/src/cfa_model.h"
#include "cmodel/cfa/src/lines/frame_rows.h"
#include "cmodel/cfa/src/stages.h"
#include "cmodel/common/frame.h"

using namespace cfa;

namespace {

// A frame that stages take as it is.
class Plane {
  public:
    explicit Plane(uint32_t channels)
        : frame_(CM_NewFRAME(FRAME_TYPE_RAW, channels == 3 ? FRAME_FMT_RGB : FRAME_FMT_MONO, bench_width,
                             bench_height, channels, 12)) {}
    operator FRAME *() const { return frame_.get(); }

  private:
    FramePtr frame_;
};

Plane raw_plane() {
    Plane raw(1);
    std::copy(bench_mosaic().begin(), bench_mosaic().end(), static_cast<FRAME *>(raw)->data);
    return raw;
}

// The planes of the pipeline, named as in cfa_model.
struct Planes {
    Plane raw = raw_plane();
    Plane AvgRGB{3}, GH{3}, GV{3}, MaxRGB{3}, MinRGB{3}, cfa_RGB{3}, YMoire{3}, CMOut{3}, out_rgb{3};
    Plane GH_lp{1}, GH_hp{1}, GV_lp{1}, GV_hp{1}, LV{1}, LH{1}, RatioV{1}, RatioH{1}, LMax{1};
    Plane SigH{1}, SigV{1}, Diff0H{1}, Diff0V{1}, Diff3H{1}, Diff3V{1}, DirInfo{1};
    Plane cdist_wt{1}, edge_wt{1}, pd_wt{1}, MaxRGB1{1}, out_dc{1}, out_sg{1};
};

struct Stage {
    const char *name;
    void (*run)(const Planes &p);
};

// In pipeline order, pattern id 0. The direction stage wants its plane zeroed;
// that is a hundredth of its time.
const Stage stages[] = {
    {"cfa_CalAvg", [](const Planes &p) { cfa_CalAvg(p.raw, p.AvgRGB, 0); }},
    {"cfa_CalPredictPixel",
     [](const Planes &p) {
         cfa_CalPredictPixel(p.raw, p.GH, p.GV, p.GH_lp, p.GH_hp, p.GV_lp, p.GV_hp, p.MaxRGB, p.MinRGB, 0);
     }},
    {"cfa_CalClassifier",
     [](const Planes &p) { cfa_CalClassifier(p.raw, p.LH, p.LV, p.LMax, p.RatioH, p.RatioV, 0); }},
    {"cfa_CalVarOfColorDiffAtG",
     [](const Planes &p) { cfa_CalVarOfColorDiffAtG(p.raw, p.GH, p.GV, p.SigH, p.SigV, 0); }},
    {"cfa_CalVarOfColorDiffAtRB",
     [](const Planes &p) {
         cfa_CalVarOfColorDiffAtRB(p.raw, p.GH, p.GV, p.Diff0H, p.Diff0V, p.Diff3H, p.Diff3V, p.SigH, p.SigV,
                                   0);
     }},
    {"cfa_CalDirectionInfo",
     [](const Planes &p) {
         std::fill_n(static_cast<FRAME *>(p.DirInfo)->data, static_cast<size_t>(bench_pixels), 0u);
         cfa_CalDirectionInfo(p.raw, p.AvgRGB, p.LH, p.LV, p.SigH, p.SigV, p.DirInfo, 0);
     }},
    {"cfa_CalRGB",
     [](const Planes &p) {
         cfa_CalRGB(p.raw, p.cfa_RGB, p.GH, p.GV, p.GH_lp, p.GV_lp, p.GH_hp, p.GV_hp, p.MaxRGB, p.MinRGB,
                    p.SigH, p.SigV, p.LMax, p.RatioH, p.RatioV, p.DirInfo, 0);
     }},
    {"cfa_DeYMoire",
     [](const Planes &p) { cfa_DeYMoire(p.cfa_RGB, p.AvgRGB, p.MaxRGB, p.MinRGB, p.GH, p.GV, p.YMoire); }},
    {"cfa_CalColorMoireSts",
     [](const Planes &p) { cfa_CalColorMoireSts(p.AvgRGB, p.GH, p.GV, p.cdist_wt, p.edge_wt); }},
    {"cfa_CalPhaseDifference", [](const Planes &p) { cfa_CalPhaseDifference(p.raw, p.GH, p.GV, p.pd_wt); }},
    {"cfa_DeColorMoire",
     [](const Planes &p) { cfa_DeColorMoire(p.YMoire, p.CMOut, p.pd_wt, p.cdist_wt, p.edge_wt); }},
    {"copy_to_dst", [](const Planes &p) { copy_to_dst(p.CMOut, p.out_rgb); }},
    {"gen_MaxRGB_1ch", [](const Planes &p) { gen_MaxRGB_1ch(p.MaxRGB, p.MaxRGB1); }},
    {"gen_dst_dc", [](const Planes &p) { gen_dst_dc(p.MaxRGB1, p.out_dc); }},
    {"sharpen_gain_main_proc", [](const Planes &p) { sharpen_gain_main_proc(p.raw, p.out_rgb, p.out_sg); }},
};

// Kept from one benchmark to the next, with what each stage found: 540 MB.
const Planes &planes() {
    static const std::unique_ptr<const Planes> made = [] {
        auto p = std::make_unique<const Planes>();
        for (const Stage &stage : stages)
            stage.run(*p);
        return p;
    }();
    return *made;
}

void model_stage(benchmark::State &state, const Stage &stage) {
    set_bench_registers(true);
    const Planes &p = planes();
    for (auto _ : state)
        stage.run(p);
    count_pixels(state, bench_pixels);
}

using Block = void (*)(const FRAME *raw, FRAME *out_rgb, FRAME *out_dc, FRAME *out_sg);

void on_frames(benchmark::State &state, Block block, bool all_features) {
    set_bench_registers(all_features);
    const Plane raw = raw_plane(), rgb(3), dc(1), gain(1);
    for (auto _ : state)
        block(raw, rgb, dc, gain);
    count_pixels(state, bench_pixels);
}

void lines_on_frames(const FRAME *raw, FRAME *out_rgb, FRAME *out_dc, FRAME *out_sg) {
    cfa_lines(raw, out_rgb, out_dc, out_sg);
}

} // namespace

void register_model_benches() {
    using benchmark::RegisterBenchmark;
    const auto unit = benchmark::kMillisecond;
    RegisterBenchmark("engine_on_frames/default", on_frames, lines_on_frames, false)->Unit(unit);
    RegisterBenchmark("engine_on_frames/all_features", on_frames, lines_on_frames, true)->Unit(unit);
    RegisterBenchmark("model/default", on_frames, cfa_model, false)->Unit(unit);
    RegisterBenchmark("model/all_features", on_frames, cfa_model, true)->Unit(unit);
    for (const Stage &stage : stages)
        RegisterBenchmark((std::string("stage/") + stage.name).c_str(), model_stage, stage)->Unit(unit);
}
