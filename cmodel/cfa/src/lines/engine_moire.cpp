// The line engine's moire stages: weights of a row, then their removal from the reconstructed row.
#include "cmodel/cfa/src/lines/engine.h"

namespace cfa::CFA_ROWS {

void LineEngine::find_green_extremes(int y) {
    const int g = 1 - color_parity(y); // at red/blue sites they have limited the candidates already
    green_extremes_at_green(sight<2>(raw_, y, g), {extreme_max_[1].write(y, g), extreme_min_[1].write(y, g)},
                            n_);
    extreme_max_[1].mirror(y);
    extreme_min_[1].mirror(y);
    for (int parity = 0; parity < 2; ++parity)
        sum_of_steps(along_row(green_v_, y, parity), row_steps_.write(y, parity), n_);
}

void LineEngine::find_color_extremes(int y) {
    const int c = color_parity(y);
    const int g = 1 - c;
    const int own = own_color(y) == 0 ? 0 : 2;
    const int other = 2 - own;
    const auto extremes = [&](int channel, int parity) {
        return Extremes{extreme_max_[channel].write(y, parity), extreme_min_[channel].write(y, parity)};
    };
    color_extremes_at_red_blue(sight<2>(raw_, y, c), extremes(own, c), extremes(other, c), n_);
    color_extremes_at_green(sight<2>(raw_, y, g), extremes(own, g), extremes(other, g), n_);
    for (const int k : {0, 2}) {
        extreme_max_[k].mirror(y);
        extreme_min_[k].mirror(y);
    }
}

void LineEngine::weigh_luma_moire(int y) {
    for (int parity = 0; parity < 2; ++parity)
        sum_of_steps(along_column(green_h_, y, parity), column_steps_.write(0, parity), n_);
    column_steps_.mirror(0);
    for (int parity = 0; parity < 2; ++parity) {
        ThreeRanges ranges{};
        for (const int k : {0, 1, 2}) {
            if (k != 1 && !settings_.color_ranges)
                continue;
            Sample *const max = range_rows_[k].write(0, parity);
            Sample *const min = range_rows_[3 + k].write(0, parity);
            binomial_3x3(sight<1>(extreme_max_[k], y, parity), max, n_);
            binomial_3x3(sight<1>(extreme_min_[k], y, parity), min, n_);
            ranges.of[k] = {max, min};
        }
        gradient_sum(along_row(column_steps_, 0, parity), along_column(row_steps_, y, parity),
                     gradient_.write(0, parity), n_);
        luma_moire_weight(ranges, gradient_.half(0, parity), settings_.luma, luma_weight_.write(y, parity),
                          n_);
    }
}

void LineEngine::remove_luma(int y) {
    for (Lines &color : rgb_)
        color.mirror(0);
    for (int parity = 0; parity < 2; ++parity) {
        Sample *const luma = luma_.write(0, parity);
        average_luma(average_[0].half(y, parity), average_[1].half(y, parity), average_[2].half(y, parity),
                     luma, n_);
        for (int k = 0; k < 3; ++k)
            remove_luma_moire(sight<0>(rgb_[k], 0, parity), average_[k].half(y, parity), luma,
                              luma_weight_.half(y, parity), settings_.luma, smoothed_[k].write(0, parity),
                              n_);
    }
    for (int k = 0; k < 3; ++k)
        std::swap(rgb_[k], smoothed_[k]);
}

void LineEngine::measure_rows(int y) {
    for (int parity = 0; parity < 2; ++parity) {
        first_difference_row(sight<0>(green_h_, y, parity), first_h_.write(y, parity), n_);
        sum_of_five(along_row(green_h_, y, parity), row_sum_.write(y, parity), n_);
    }
}

void LineEngine::weigh_phase_difference(int y) {
    for (int parity = 0; parity < 2; ++parity)
        first_difference_column(along_column(green_v_, y, parity), first_v_.write(0, parity), n_);
    first_v_.mirror(0);
    for (int parity = 0; parity < 2; ++parity)
        phase_difference_weight(sight<0>(first_v_, 0, parity), along_column(first_h_, y, parity),
                                settings_.phase, phase_.write(y, parity), n_);
}

void LineEngine::weigh_color_moire(int y) {
    for (int parity = 0; parity < 2; ++parity)
        sum_of_five(along_column(green_v_, y, parity), column_sum_.write(0, parity), n_);
    column_sum_.mirror(0);
    for (int parity = 0; parity < 2; ++parity) {
        const Sample *const green = average_[1].half(y, parity);
        color_distance_weight(average_[0].half(y, parity), green, average_[2].half(y, parity),
                              settings_.color_distance, color_distance_.write(y, parity), n_);
        const auto directional_spread =
            parity == color_parity(y) ? directional_spread_at_red_blue : directional_spread_at_green;
        directional_spread(sight<2>(green_h_, y, parity), sight<2>(green_v_, y, parity),
                           along_row(column_sum_, 0, parity), along_column(row_sum_, y, parity),
                           settings_.directional, spread_.write(0, parity), n_);
        edge_spread_weight(spread_.half(0, parity), green, settings_.edge, edge_.write(y, parity), n_);
    }
    color_distance_.mirror(y);
}

void LineEngine::remove_color(int y) {
    for (int parity = 0; parity < 2; ++parity)
        largest_of_three(edge_.half(y - 1, parity), edge_.half(y, parity), edge_.half(y + 1, parity),
                         widest_.write(0, parity), n_);
    widest_.mirror(0);
    for (int parity = 0; parity < 2; ++parity) {
        Sample *const widened = pull_.write(0, parity);
        largest_of_seven(sight<0>(widest_, 0, parity), widened, n_);
        mix_edges(widened, edge_.half(y, parity), phase_.half(y, parity), mix_.write(0, parity), n_);
    }
    mix_.mirror(0);
    for (int parity = 0; parity < 2; ++parity) {
        Sample *const weight = pull_.write(0, parity);
        removal_weight(sight<0>(mix_, 0, parity), sight<1>(color_distance_, y, parity), weight, n_);
        // Green, on wide rows, last: its distance from itself is 0, and it is only limited.
        for (int k : {0, 2, 1})
            if (WIDE || k != 1)
                remove_color_moire(rgb_[1].half(0, parity), weight, settings_.strength,
                                   rgb_[k].write(0, parity), n_);
    }
}

} // namespace cfa::CFA_ROWS
