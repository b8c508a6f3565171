#include "cmodel/cfa/src/lines/engine.h"

#include <algorithm>
#include <optional>

#include "cmodel/cfa/src/kit/debug_image.h"
#include "cmodel/cfa/src/kit/in_force.h"
#include "cmodel/cfa/src/lines/debug_rows.h"
#include "cmodel/cfa/src/planes.h"
#include "cmodel/cfa/src/stages.h"

namespace cfa::CFA_ROWS {

namespace {

using E = LineEngine;
using S = EngineSettings;

constexpr int LAST_LAG = 5;

} // namespace

LineEngine::LineEngine(int width, int height, const EngineSettings &settings, RowSource<Sample> &source,
                       RowSink<Sample> &sink, RowTaker *taker, int threads)
    : width_(width), height_(height), n_(padded_half(width)), settings_(settings), source_(source),
      sink_(sink), taker_(taker), threads_(threads) {
    for (int parity = 0; parity < 2; ++parity) {
        std::fill_n(forced_.write(0, parity), n_, settings.forced_direction);
        direction_.write(1, parity); // stands above the first row, which does not vote
        std::fill_n(gain_.write(0, parity), n_, Sample{1024});
        std::fill_n(zeros_.write(0, parity), n_, Sample{0});
    }
}

// The stages of a part that the settings ask for, and behind each the taps of the planes that are wanted.
std::vector<LineEngine::Step> LineEngine::steps(Part part) const {
    // Lag: how many rows a stage runs behind the input. Stages of one lag run in this order.
    // clang-format off
    static constexpr Stage SCHEDULE[] = {
        // stage                      lag  only if                    reads (rows around its own)
        {&E::read,                     0, nullptr},
        {&E::average,                  2, nullptr},                // raw +-2
        {&E::predict_greens,           2, nullptr},                // raw +-2
        {&E::find_largest,             2, nullptr},                // raw +-2
        {&E::find_green_extremes,      2, &S::green_ranges},       // raw +-2, green_v
        {&E::find_color_extremes,      2, &S::color_ranges},       // raw +-2
        {&E::measure_rows,             2, &S::weighs_color},       // green_h
        {&E::predict_colors,           3, nullptr},                // raw, difference +-1
        {&E::measure_green_distances,  3, &S::uses_variance},      // raw +-1, distance_h
        {&E::write_dc,                 3, nullptr},                // largest +-1
        {&E::weigh_luma_moire,         4, &S::luma_moire},         // extremes +-1, greens +-2
        {&E::weigh_color_moire,        4, &S::weighs_color},       // average, greens +-2
        {&E::weigh_phase_difference,   4, &S::weighs_color},       // green_v +-2, first_h +-2
        {&E::cast_votes,               4, &S::decides_direction},  // activity
        {&E::low_pass_mosaic,          4, &S::sharpens},           // raw +-1
        {&E::measure_variance,         5, &S::uses_variance},      // colours, distances +-2
        {&E::decide_direction,         5, &S::decides_direction},  // variance, activity, votes +-1, directions -1
        {&E::reconstruct,              5, nullptr},                // raw +-1, candidates, colours
        {&E::remove_luma,              5, &S::luma_moire},         // rgb, average, luma weight
        {&E::remove_color,             5, &S::color_moire},        // rgb, weights +-1
        {&E::sharpen,                  5, &S::sharpens},           // rgb, mosaic luma +-1
        {&E::write_row,                LAST_LAG, nullptr},         // rgb, gain
    };
    // clang-format on
    std::vector<Step> steps;
    bool cut = false; // on two threads the two parts take about as long
    for (const Stage &stage : SCHEDULE) {
        cut |= stage.compute == &E::cast_votes;
        if (part != (cut ? Part::back : Part::front) && part != Part::all)
            continue;
        if (stage.only_if == nullptr || settings_.*stage.only_if)
            steps.push_back({stage.lag, stage.compute, nullptr, nullptr});
        if (taker_ == nullptr)
            continue;
        for (const Tap &tap : taps())
            if (tap.behind == stage.compute && wanted(*taker_, tap.plane))
                steps.push_back({stage.lag, nullptr, tap.row, find_plane(tap.plane)});
    }
    return steps;
}

void LineEngine::run() {
    if (settings_.sharpens)
        log_sharpening_strength(settings_.sharpen.gain);
    const int last = height_ + LAST_LAG;
    if (threads_ == 1) {
        const std::vector<Step> all = steps(Part::all);
        for (int t = 0; t < last; ++t)
            run(all, t);
        return;
    }
    const std::vector<Step> front = steps(Part::front), back = steps(Part::back);
    run_side_by_side(
        last, [&](int t) { run(front, t); }, [&](int t) { run(back, t); });
}

void LineEngine::run(const std::vector<Step> &steps, int t) {
    for (const Step &step : steps) {
        const int y = t - step.lag;
        if (y < 0 || y >= height_)
            continue;
        if (step.compute != nullptr)
            (this->*step.compute)(y);
        else
            take(step, y);
    }
}

void LineEngine::take(const Step &step, int y) {
    std::visit([&](const auto &channels) { taker_->row(*step.plane, y, channels.data()); },
               step.row(*this, y));
}

void LineEngine::read(int y) {
    source_.read(y, raw_.write(y, 0), raw_.write(y, 1));
    raw_.mirror(y);
}

FiveSamples LineEngine::along_row(const Lines &plane, int y, int parity) {
    const Sample *const own = plane.half(y, parity);
    const Sample *const left = plane.left(y, parity);
    return {{own - 1, left, own, left + 1, own + 1}};
}

FiveSamples LineEngine::along_column(const Lines &plane, int y, int parity) {
    return {{plane.half(y - 2, parity), plane.half(y - 1, parity), plane.half(y, parity),
             plane.half(y + 1, parity), plane.half(y + 2, parity)}};
}

void LineEngine::write_dc(int y) {
    for (int parity = 0; parity < 2; ++parity)
        binomial_3x3_u12(sight<1>(largest_, y, parity), dc_.write(0, parity), n_);
    sink_.dc(y, {{dc_.half(0, 0), dc_.half(0, 1)}});
}

void LineEngine::low_pass_mosaic(int y) {
    for (int parity = 0; parity < 2; ++parity)
        binomial_3x3_u12(sight<1>(raw_, y, parity), mosaic_luma_.write(y, parity), n_);
    mosaic_luma_.mirror(y);
}

void LineEngine::sharpen(int y) {
    for (int parity = 0; parity < 2; ++parity) {
        Sample *const detail = detail_.write(0, parity);
        Sample *const luma = rgb_luma_.write(0, parity);
        sharpen_detail(sight<1>(mosaic_luma_, y, parity), rgb_[0].half(0, parity), rgb_[1].half(0, parity),
                       rgb_[2].half(0, parity), settings_.sharpen, detail, luma, n_);
        sharpen_gain(detail, luma, settings_.sharpen, gain_.write(0, parity), n_);
        for (Lines &color : rgb_)
            add_detail(detail, settings_.sharpen, color.write(0, parity), n_);
    }
}

void LineEngine::write_row(int y) {
    const auto row = [](const Lines &plane) {
        return SplitRow<Sample>{{plane.half(0, 0), plane.half(0, 1)}};
    };
    sink_.rgb(y, row(rgb_[0]), row(rgb_[1]), row(rgb_[2]));
    sink_.gain(y, row(gain_));
}

} // namespace cfa::CFA_ROWS

void cfa::run_line_engine(int width, int height, RowSource<CFA_ROWS::Sample> &source,
                          RowSink<CFA_ROWS::Sample> &sink, int threads) {
    using namespace CFA_ROWS;
    std::optional<DebugRows> images;
    RowTaker *taker = in_force().planes;
    if (debug_images_wanted())
        taker = &images.emplace(width, height);
    EngineSettings settings = read_engine_settings();
    if (taker != nullptr)
        compute_for(*taker, settings);
    LineEngine(width, height, settings, source, sink, taker, threads).run();
}
