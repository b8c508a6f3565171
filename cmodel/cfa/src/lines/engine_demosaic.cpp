// The line engine's demosaic stages: which half-row goes to which kernel.
#include "cmodel/cfa/src/lines/engine.h"

namespace cfa::CFA_ROWS {

void LineEngine::average(int y) {
    const int color = color_parity(y);
    const int green = 1 - color;
    Lines &own = average_[own_color(y) == 0 ? 0 : 2];
    Lines &other = average_[own_color(y) == 0 ? 2 : 0];
    average_at_red_blue(sight<2>(raw_, y, color), average_[1].write(y, color), other.write(y, color),
                        own.write(y, color), n_);
    average_at_green(sight<2>(raw_, y, green), average_[1].write(y, green), own.write(y, green),
                     other.write(y, green), n_);
}

void LineEngine::predict_greens(int y) {
    const int color = color_parity(y);
    const int green = 1 - color;
    const Sight<2> mosaic = sight<2>(raw_, y, color);
    predict_green(mosaic,
                  {green_h_.write(y, color), green_v_.write(y, color), difference_h_.write(y, color),
                   difference_v_.write(y, color)},
                  n_);
    for (Lines *plane : {&green_h_, &green_v_}) {
        plane->mirror(y, color);
        plane->alias(y, green, raw_.half(y, green));
    }
    difference_h_.mirror(y, color);
    difference_v_.mirror(y, color);

    activity_at_red_blue(mosaic, activity_h_.write(y, color), activity_v_.write(y, color), n_);
    activity_at_green(sight<2>(raw_, y, green), activity_h_.write(y, green), activity_v_.write(y, green), n_);
    const Extremes range{extreme_max_[1].write(y, color), extreme_min_[1].write(y, color)};
    green_extremes_at_red_blue(mosaic, range, n_);
    sharpen_green(mosaic, activity_h_.half(y, color), activity_v_.half(y, color), range, settings_.sharpening,
                  candidate_h_.write(y, color), candidate_v_.write(y, color), n_);
}

void LineEngine::find_largest(int y) {
    for (int parity = 0; parity < 2; ++parity)
        largest_of_columns(along_column(raw_, y, parity), column_of_three_.write(0, parity),
                           column_of_five_.write(0, parity), n_);
    column_of_three_.mirror(0);
    column_of_five_.mirror(0);
    for (int parity = 0; parity < 2; ++parity)
        largest_of_window(along_row(column_of_three_, 0, parity), along_row(column_of_five_, 0, parity),
                          largest_.write(y, parity), n_);
    largest_.mirror(y);
}

void LineEngine::predict_colors(int y) {
    predict_candidate(y, green_h_, difference_h_, color_h_, distance_h_);
    predict_candidate(y, green_v_, difference_v_, color_v_, distance_v_);
}

void LineEngine::predict_candidate(int y, const Lines &green, const Lines &difference,
                                   std::array<Lines, 2> &color, std::array<Lines, 2> &distance) {
    const int c = color_parity(y);
    const int g = 1 - c;
    Lines &own = color[own_color(y)];
    Lines &other = color[1 - own_color(y)];
    own.alias(y, c, raw_.half(y, c));
    predict_at_green(raw_.half(y, g), difference.left(y, g), difference.half(y - 1, g),
                     difference.half(y + 1, g), own.write(y, g), other.write(y, g), n_);
    predict_at_red_blue(green.half(y, c), difference.left(y - 1, c), difference.left(y + 1, c),
                        other.write(y, c), n_);
    own.mirror(y, g);
    other.mirror(y);
    if (!settings_.uses_variance)
        return;
    for (int k = 0; k < 2; ++k) {
        for (int parity = 0; parity < 2; ++parity)
            distances(color[k].half(y, parity), green.half(y, parity), distance[k].write(y, parity), n_);
        distance[k].mirror(y);
    }
}

void LineEngine::measure_green_distances(int y) {
    const int c = color_parity(y);
    const int g = 1 - c;
    const Sample *const beside = raw_.left(y, g);
    distances_from_mean(raw_.half(y, g), beside, beside + 1, beside_.write(y, g), n_);
    beside_.mirror(y, g);
    distances_from_mean(raw_.half(y, g), raw_.half(y - 1, g), raw_.half(y + 1, g), across_.write(y, g), n_);

    const Sample *const left = beside_.left(y, c);
    outer_spread(left, distance_h_[own_color(y)].half(y, c), left + 1, outer_h_.write(y, c), n_);
}

void LineEngine::measure_variance(int y) {
    const int c = color_parity(y);
    const int g = 1 - c;
    variance_at_green(along_row(color_h_[0], y, g), along_row(color_h_[1], y, g),
                      along_row(distance_h_[0], y, g), along_row(distance_h_[1], y, g), sig_h_.write(0, g),
                      n_);
    variance_at_green(along_column(color_v_[0], y, g), along_column(color_v_[1], y, g),
                      along_column(distance_v_[0], y, g), along_column(distance_v_[1], y, g),
                      sig_v_.write(0, g), n_);

    // At red/blue sites: distances of the own colour on the site's own row or
    // column, and of green in between.
    const Lines &own_h = distance_h_[own_color(y)];
    const Lines &own_v = distance_v_[own_color(y)];
    const Sample *const beside = beside_.left(y, c);
    const Sample *const own = own_h.half(y, c);
    variance_at_red_blue({{own - 1, beside, own, beside + 1, own + 1}}, outer_h_.half(y - 2, c),
                         outer_h_.half(y + 2, c), sig_h_.write(0, c), n_);

    outer_spread(across_.half(y - 1, c), own_v.half(y, c), across_.half(y + 1, c), outer_v_.write(0, c), n_);
    outer_v_.mirror(0, c);
    variance_at_red_blue({{own_v.half(y - 2, c), across_.half(y - 1, c), own_v.half(y, c),
                           across_.half(y + 1, c), own_v.half(y + 2, c)}},
                         outer_v_.half(0, c) - 1, outer_v_.half(0, c) + 1, sig_v_.write(0, c), n_);
}

void LineEngine::reconstruct(int y) {
    const int c = color_parity(y);
    const int g = 1 - c;
    const int own = own_color(y);
    const auto rgb = [this](int color) -> Lines & { return rgb_[color == 0 ? 0 : 2]; };
    const auto weights = [this](int parity) {
        return BlendWeights{weight_h_.write(0, parity), weight_v_.write(0, parity),
                            weight_inverse_.write(0, parity)};
    };
    for (int parity = 0; parity < 2; ++parity) {
        if (settings_.uses_variance) // else no pixel is a blend
            blend_weights(sig_h_.half(0, parity), sig_v_.half(0, parity), weights(parity), n_);
        neighbourhood_range(sight<1>(raw_, y, parity), range_low_.write(0, parity),
                            range_high_.write(0, parity), n_);
    }
    const auto direction = [&](int parity) {
        return settings_.forces_direction ? forced_.half(0, parity) : direction_.half(y, parity);
    };
    const auto choose_color = [&](int color, int parity) {
        choose_within(color_h_[color].half(y, parity), color_v_[color].half(y, parity), direction(parity),
                      weights(parity), range_low_.half(0, parity), range_high_.half(0, parity),
                      rgb(color).write(0, parity), n_);
    };

    // At red/blue sites: green from its sharpened candidates, the own colour, the other one.
    choose(candidate_h_.half(y, c), candidate_v_.half(y, c), direction(c), weights(c), rgb_[1].write(0, c),
           n_);
    std::copy_n(raw_.half(y, c), n_, rgb(own).write(0, c));
    choose_color(1 - own, c);
    // At green sites both others.
    std::copy_n(raw_.half(y, g), n_, rgb_[1].write(0, g));
    choose_color(0, g);
    choose_color(1, g);
}

} // namespace cfa::CFA_ROWS
