// Every plane of the list as the line engine has it: where its rows are made, and how the rows of those come
// about that no stage keeps.
#include "cmodel/cfa/src/lines/engine.h"

namespace cfa::CFA_ROWS {

namespace {

using E = LineEngine;

template <class T> SplitRow<T> row_of(const LineBuffer<T> &plane, int y) {
    return {{plane.half(y, 0), plane.half(y, 1)}};
}
template <class T> TappedRow one(const LineBuffer<T> &plane, int y) {
    return std::array<SplitRow<T>, 3>{row_of(plane, y)};
}
TappedRow three(const Lines *rgb, int y) {
    return std::array{row_of(rgb[0], y), row_of(rgb[1], y), row_of(rgb[2], y)};
}

} // namespace

std::span<const LineEngine::Tap> LineEngine::taps() {
    // clang-format off
    static constexpr Tap TAPS[] = {
        {"AvgRGB",        &E::average,                [](E &e, int y) { return three(e.average_, y); }},
        {"GH",            &E::predict_colors,         [](E &e, int y) { return e.candidate(e.color_h_, e.green_h_, y); }},
        {"GV",            &E::predict_colors,         [](E &e, int y) { return e.candidate(e.color_v_, e.green_v_, y); }},
        {"GH_lp",         &E::predict_greens,         [](E &e, int y) { return e.green_average(y, e.beside(y, 1)); }},
        {"GH_hp",         &E::predict_greens,         [](E &e, int y) { return e.own_correction(y, e.beside(y, 2)); }},
        {"GV_lp",         &E::predict_greens,         [](E &e, int y) { return e.green_average(y, e.across(y, 1)); }},
        {"GV_hp",         &E::predict_greens,         [](E &e, int y) { return e.own_correction(y, e.across(y, 2)); }},
        {"MaxRGB",        &E::find_color_extremes,    [](E &e, int y) { return three(e.extreme_max_, y); }},
        {"MinRGB",        &E::find_color_extremes,    [](E &e, int y) { return three(e.extreme_min_, y); }},
        {"LH",            &E::predict_greens,         [](E &e, int y) { return e.activity(e.activity_h_, y); }},
        {"LV",            &E::predict_greens,         [](E &e, int y) { return e.activity(e.activity_v_, y); }},
        {"LMax",          &E::predict_greens,         [](E &e, int y) { return e.larger_activity(y); }},
        {"RatioH",        &E::predict_greens,         [](E &e, int y) { return e.ratio(y, e.beside(y, 1), e.beside(y, 2)); }},
        {"RatioV",        &E::predict_greens,         [](E &e, int y) { return e.ratio(y, e.across(y, 1), e.across(y, 2)); }},
        {"AHDiff",        &E::predict_colors,         [](E &e, int y) { return one(e.distance_h_[1], y); }},
        {"AVDiff",        &E::predict_colors,         [](E &e, int y) { return one(e.distance_v_[1], y); }},
        {"CHDiff",        &E::predict_colors,         [](E &e, int y) { return one(e.distance_h_[0], y); }},
        {"CVDiff",        &E::predict_colors,         [](E &e, int y) { return one(e.distance_v_[0], y); }},
        {"SigH",          &E::measure_variance,       [](E &e, int) { return one(e.sig_h_, 0); }},
        {"SigV",          &E::measure_variance,       [](E &e, int) { return one(e.sig_v_, 0); }},
        {"DirInfo",       &E::decide_direction,       [](E &e, int y) { return e.directions(y); }},
        {"cfa_RGB",       &E::reconstruct,            [](E &e, int) { return three(e.rgb_, 0); }},
        {"MaxRGB_lpf",    &E::weigh_luma_moire,       [](E &e, int) { return three(e.range_rows_, 0); }},
        {"MinRGB_lpf",    &E::weigh_luma_moire,       [](E &e, int) { return three(e.range_rows_ + 3, 0); }},
        {"MoireWgt_W1",   &E::weigh_luma_moire,       [](E &e, int) { return e.luma_factor(true); }},
        {"MoireWgt_W2",   &E::weigh_luma_moire,       [](E &e, int) { return e.luma_factor(false); }},
        {"MoireWgt",      &E::weigh_luma_moire,       [](E &e, int y) { return one(e.luma_weight_, y); }},
        {"YMoire",        &E::remove_luma,            [](E &e, int) { return three(e.rgb_, 0); }},
        {"cdist_wt",      &E::weigh_color_moire,      [](E &e, int y) { return one(e.color_distance_, y); }},
        {"edge_wt",       &E::weigh_color_moire,      [](E &e, int y) { return one(e.edge_, y); }},
        {"pd_wt",         &E::weigh_phase_difference, [](E &e, int y) { return one(e.phase_, y); }},
        {"CMOut",         &E::remove_color,           [](E &e, int) { return three(e.rgb_, 0); }},
        {"MaxRGB1",       &E::find_largest,           [](E &e, int y) { return one(e.largest_, y); }},
        {"out_dc",        &E::write_dc,               [](E &e, int) { return one(e.dc_, 0); }},
        {"bayer_luma",    &E::low_pass_mosaic,        [](E &e, int y) { return one(e.mosaic_luma_, y); }},
        {"rgb_luma",      &E::sharpen,                [](E &e, int) { return one(e.rgb_luma_, 0); }},
        {"spike_removed", &E::sharpen,                [](E &e, int y) { return e.detail_source(y, Detail::source); }},
        {"HF",            &E::sharpen,                [](E &e, int y) { return e.detail_source(y, Detail::high); }},
        {"lpf",           &E::sharpen,                [](E &e, int y) { return e.detail_source(y, Detail::low_passed); }},
        {"MF",            &E::sharpen,                [](E &e, int y) { return e.detail_source(y, Detail::medium); }},
        {"cored",         &E::sharpen,                [](E &e, int) { return one(e.detail_, 0); }},
        {"out_sg",        &E::write_row,              [](E &e, int) { return one(e.gain_, 0); }},
        {"out_rgb",       &E::write_row,              [](E &e, int) { return three(e.rgb_, 0); }},
    };
    // clang-format on
    return TAPS;
}

TappedRow LineEngine::candidate(const std::array<Lines, 2> &color, const Lines &green, int y) {
    return std::array{row_of(color[0], y), row_of(green, y), row_of(color[1], y)};
}

LineEngine::Pair LineEngine::beside(int y, int distance) const {
    const int c = color_parity(y);
    const Sample *const before = distance == 1 ? raw_.left(y, c) : raw_.half(y, c) - 1;
    return {before, distance == 1 ? before + 1 : before + 2};
}

LineEngine::Pair LineEngine::across(int y, int distance) const {
    const int c = color_parity(y);
    return {raw_.half(y - distance, c), raw_.half(y + distance, c)};
}

TappedRow LineEngine::green_average(int y, Pair greens) {
    const int c = color_parity(y);
    green_low_pass(greens.before, greens.behind, seen_early_.write(0, c), n_);
    seen_early_.alias(0, 1 - c, raw_.half(y, 1 - c));
    return one(seen_early_, 0);
}

TappedRow LineEngine::own_correction(int y, Pair ends) {
    const int c = color_parity(y);
    own_high_pass(raw_.half(y, c), ends.before, ends.behind, seen_early_.write(0, c), n_);
    seen_early_.alias(0, 1 - c, zeros_.half(0, 1 - c));
    return one(seen_early_, 0);
}

TappedRow LineEngine::ratio(int y, Pair greens, Pair ends) {
    const int c = color_parity(y);
    green_ratio(greens.before, greens.behind, raw_.half(y, c), ends.before, ends.behind,
                seen_early_.write(0, c), n_);
    seen_early_.alias(0, 1 - c, zeros_.half(0, 1 - c));
    return one(seen_early_, 0);
}

// The plane is limited, what the engine reads is not.
TappedRow LineEngine::activity(const Lines &plane, int y) {
    for (int parity = 0; parity < 2; ++parity)
        limited_activity(plane.half(y, parity), seen_early_.write(0, parity), n_);
    return one(seen_early_, 0);
}

TappedRow LineEngine::larger_activity(int y) {
    for (int parity = 0; parity < 2; ++parity)
        larger(activity_h_.half(y, parity), activity_v_.half(y, parity), seen_early_.write(0, parity), n_);
    return one(seen_early_, 0);
}

TappedRow LineEngine::luma_factor(bool detail) {
    for (int parity = 0; parity < 2; ++parity) {
        ThreeRanges ranges{};
        for (const int k : {0, 1, 2})
            if (k == 1 || settings_.color_ranges)
                ranges.of[k] = {range_rows_[k].half(0, parity), range_rows_[3 + k].half(0, parity)};
        Sample *const shown = seen_early_.write(0, parity);
        Sample *const other = not_seen_.write(0, parity);
        luma_moire_factors(ranges, gradient_.half(0, parity), settings_.luma, detail ? shown : other,
                           detail ? other : shown, n_);
    }
    return one(seen_early_, 0);
}

TappedRow LineEngine::directions(int y) {
    for (int parity = 0; parity < 2; ++parity)
        direction_codes(direction_.half(y, parity), seen_late_.write(0, parity), n_);
    return one(seen_late_, 0);
}

TappedRow LineEngine::detail_source(int y, Detail what) {
    for (int parity = 0; parity < 2; ++parity) {
        const Sight<1> luma = sight<1>(mosaic_luma_, y, parity);
        Sample *const out = seen_late_.write(0, parity);
        Sample *const low_passed = low_passed_.write(0, parity);
        remove_spikes(luma, settings_.sharpen, out, n_);
        binomial_3x3(luma, low_passed, n_);
        if (what == Detail::high)
            difference(rgb_luma_.half(0, parity), out, out, n_);
        else if (what == Detail::medium)
            difference(out, low_passed, out, n_);
    }
    return one(what == Detail::low_passed ? low_passed_ : seen_late_, 0);
}

} // namespace cfa::CFA_ROWS
