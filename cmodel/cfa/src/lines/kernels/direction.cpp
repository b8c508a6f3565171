#include "cmodel/cfa/src/lines/kernels/kernels.h"

namespace cfa::CFA_ROWS {

namespace {

constexpr Sample sign(Sample v) {
    return toward(0, v);
}

// a where the condition holds, b elsewhere, without a branch.
constexpr Sample select(bool condition, Sample a, Sample b) {
    return select_by(-Sample{condition}, a, b);
}

// Activities count up to 32767.
constexpr Sample limited(Sample activity) {
    return least_wide(32767, activity);
}

// Two values, the larger first.
template <class T> struct Sorted { T max, min; };
template <class T> constexpr Sorted<T> sorted(T a, T b) {
    return {a > b ? a : b, a < b ? a : b};
}

// Everything that votes on a pixel but its left neighbour: the row above, the pixel's prior, the right
// neighbour and the row below, as votes for horizontal minus votes for vertical.
inline Sample votes(const DirectionEvidence &e, Index i, Sample prior) {
    const Sample above = e.above_left[i] + 2 * e.above[i] + e.above_left[i + 1];
    const Sample below = e.below_left[i] + 2 * e.below[i] + e.below_left[i + 1];
    return above + 4 * prior + e.right[i] + below;
}

// A voting pixel goes with the sign of the votes; the left neighbour has two.
inline void decide(const DirectionByLeft &out, Index i, bool voting, bool counts, Sample sum,
                   Sample otherwise) {
    out.if_blend[i] = select(voting, select(counts, sign(sum), 0), otherwise);
    out.if_horizontal[i] = select(voting, select(counts, sign(sum + 2), 0), otherwise);
    out.if_vertical[i] = select(voting, select(counts, sign(sum - 2), 0), otherwise);
}

} // namespace

CFA_KERNEL void direction_at_red_blue(DirectionEvidence e, DirectionLimits limits, DirectionByLeft out,
                                      int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const Sample lh = limited(e.lh[i]);
        const Sample lv = limited(e.lv[i]);
        const auto [act_max, act_min] = sorted(lh, lv);
        const auto [sig_max, sig_min] = sorted(e.sig_h[i], e.sig_v[i]);
        const Sample prior = toward(e.sig_h[i], e.sig_v[i]);
        const bool decisive = limits.decisive * largest(1, act_min >> 5) < act_max;
        const bool tolerated = act_max >= (act_min * limits.edge_tol) >> 8;
        const bool voting = limits.sig_decisive * largest32(1, sig_min >> 7) > sig_max >> 2;
        const bool counts = sig_max >= (sig_min * limits.sig_tol) >> 5;
        const Sample by_activity = select(tolerated, toward(lh, lv), 0);
        decide(out, i, !decisive & voting, counts, votes(e, i, prior), select(decisive, by_activity, prior));
    }
}

CFA_KERNEL void direction_at_green(DirectionEvidence e, DirectionLimits limits, DirectionByLeft out, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const Sample lh = limited(e.lh[i]);
        const Sample lv = limited(e.lv[i]);
        const auto [act_max, act_min] = sorted(lh, lv);
        const auto [sig_max, sig_min] = sorted(e.sig_h[i], e.sig_v[i]);
        const Sample prior = toward(e.sig_h[i], e.sig_v[i]);
        const bool decisive = act_max > largest(1, act_min >> 5) * limits.decisive;
        const bool voting = e.luma[i] >= limits.luma;
        const bool counts = sig_max >= (sig_min * limits.sig_tol) >> 5;
        const Sample by_activity = toward(lh, lv);
        decide(out, i, !decisive & voting, counts, votes(e, i, prior), select(decisive, by_activity, prior));
    }
}

CFA_KERNEL void weighted_luma(const Sample *red, const Sample *green, const Sample *blue, Sample *luma,
                              int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i)
        luma[i] = static_cast<Sample>((307 * red[i] + 615 * green[i] + 102 * blue[i]) >> 10);
}

CFA_KERNEL void votes_of_neighbours(const Sample *lh, const Sample *lv, Sample strong, Sample *below, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const Sample vote = select(limited(lh[i]) < limited(lv[i]), 1, -1); // a tie is vertical
        below[i] = select(largest(lh[i], lv[i]) >= strong, vote, 0);
    }
}

CFA_KERNEL void vote_of_right(const int32_t *sig_h, const int32_t *sig_v, const Sample *lh, const Sample *lv,
                              Sample strong, Sample *right, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const Sample vote = select(sig_h[i] < sig_v[i], 1, -1);
        right[i] = select(largest(lh[i], lv[i]) >= strong, 2 * vote, vote); // Kept: a strong one votes twice
    }
}

// A pair of pixels is a function of the direction left of it. It is packed into a word that one shift
// evaluates: the directions 0, +1, -1 are the offsets 0, 8, 24 of the bytes that hold the offset of the
// result. Only the lower five bits of a word count as an offset.
CFA_KERNEL void compose_pairs(DirectionByLeft even, DirectionByLeft odd, uint32_t *step, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const auto through = [&](Sample d) {
            const Sample result =
                select(d > 0, odd.if_horizontal[i], select(d < 0, odd.if_vertical[i], odd.if_blend[i]));
            return uint32_t(8 * result & 24);
        };
        step[i] = through(even.if_blend[i]) | through(even.if_horizontal[i]) << 8 |
                  through(even.if_vertical[i]) << 24;
    }
}

// The one serial loop of the engine: before[i] holds the direction left of pair i.
void scan_pairs(const uint32_t *step, Sample *before, int pairs) {
    uint32_t offset = 0; // column 0 never votes: its function does not depend on this
    for (Index i = 0; i < pairs; ++i) {
        before[i] = static_cast<Sample>(offset);
        offset = step[i] >> (offset & 31);
    }
}

CFA_KERNEL void resolve_pairs(DirectionByLeft even, DirectionByLeft odd, const Sample *before,
                              Sample *direction_even, Sample *direction_odd, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const Sample offset = before[i] & 31;
        const Sample d = select(offset == 8, even.if_horizontal[i],
                                select(offset == 24, even.if_vertical[i], even.if_blend[i]));
        direction_even[i] = d;
        direction_odd[i] =
            select(d > 0, odd.if_horizontal[i], select(d < 0, odd.if_vertical[i], odd.if_blend[i]));
    }
}

CFA_KERNEL void direction_codes(const Sample *direction, Sample *code, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i)
        code[i] = select(direction[i] < 0, 2, direction[i]);
}

} // namespace cfa::CFA_ROWS
