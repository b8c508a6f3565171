// The line engine's direction decision: two half-rows of functions of the left
// neighbour, then a scan along the row.
#include "cmodel/cfa/src/lines/engine.h"

namespace cfa::CFA_ROWS {

void LineEngine::cast_votes(int y) {
    for (int parity = 0; parity < 2; ++parity)
        votes_of_neighbours(activity_h_.half(y, parity), activity_v_.half(y, parity), settings_.strong,
                            vote_below_.write(y, parity), n_);
}

DirectionEvidence LineEngine::evidence(int y, int parity, int first) const {
    const bool is_green = parity != color_parity(y); // only there luma is read
    return {activity_h_.half(y, parity) + first,
            activity_v_.half(y, parity) + first,
            sig_h_.half(0, parity) + first,
            sig_v_.half(0, parity) + first,
            is_green ? luma_.half(0, parity) + first : nullptr,
            direction_.left(y - 1, parity) + first,
            direction_.half(y - 1, parity) + first,
            vote_below_.left(y + 1, parity) + first,
            vote_below_.half(y + 1, parity) + first,
            vote_right_.left(0, parity) + 1 + first};
}

void LineEngine::decide_half(int y, int parity, DirectionByLeft out, bool may_vote, int first, int count) {
    const DirectionEvidence e = evidence(y, parity, first);
    const DirectionByLeft there{out.if_blend + first, out.if_horizontal + first, out.if_vertical + first};
    if (parity == color_parity(y)) {
        DirectionLimits limits = settings_.at_red_blue;
        limits.sig_decisive = may_vote ? limits.sig_decisive : 0; // then the variance is always decisive
        direction_at_red_blue(e, limits, there, count);
    } else {
        DirectionLimits limits = settings_.at_green;
        limits.luma = may_vote ? limits.luma : 32767;
        direction_at_green(e, limits, there, count);
    }
}

void LineEngine::decide_direction(int y) {
    const int g = 1 - color_parity(y);
    const int last = width_ - 1;
    weighted_luma(average_[0].half(y, g), average_[1].half(y, g), average_[2].half(y, g), luma_.write(0, g),
                  n_);
    for (int parity = 0; parity < 2; ++parity)
        vote_of_right(sig_h_.half(0, parity), sig_v_.half(0, parity), activity_h_.half(y, parity),
                      activity_v_.half(y, parity), settings_.strong, vote_right_.write(0, parity), n_);

    // The first row and the first and last column do not vote. Kept: the last row does.
    DirectionByLeft by_left[2];
    for (int parity = 0; parity < 2; ++parity) {
        by_left[parity] = {by_left_[0].write(0, parity), by_left_[1].write(0, parity),
                           by_left_[2].write(0, parity)};
        decide_half(y, parity, by_left[parity], y > 0, 0, n_);
    }
    decide_half(y, 0, by_left[0], false, 0, 1);
    decide_half(y, last % 2, by_left[last % 2], false, last / 2, 1);

    compose_pairs(by_left[0], by_left[1], pair_step_.write(0, 0), n_);
    scan_pairs(pair_step_.half(0, 0), pair_before_.write(0, 0), (width_ + 1) / 2);
    resolve_pairs(by_left[0], by_left[1], pair_before_.half(0, 0), direction_.write(y, 0),
                  direction_.write(y, 1), n_);
}

} // namespace cfa::CFA_ROWS
