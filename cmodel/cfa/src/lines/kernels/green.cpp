#include "cmodel/cfa/src/lines/kernels/kernels.h"
#include "cmodel/cfa/src/lines/kernels/products.h"
#include "cmodel/cfa/src/lines/kernels/reciprocal.h"

namespace cfa::CFA_ROWS {

namespace {

// All ones where the bit is set.
constexpr Sample mask_of(Sample index, int bit) {
    constexpr int TOP = 8 * sizeof(Sample) - 1;
    return static_cast<Sample>(index << (TOP - bit)) >> TOP;
}

// table.word[first .. first + 2^levels) by the bits of the index above the lowest.
template <int levels> constexpr Sample look_up(const SharpeningTable &table, Sample index, int first) {
    if constexpr (levels == 0)
        return table.word[first];
    else
        return select_by(mask_of(index, levels),
                         look_up<levels - 1>(table, index, first + (1 << (levels - 1))),
                         look_up<levels - 1>(table, index, first));
}

// Entry 0..31 of the table: a tree of choices, because vectors have no cheap look-up.
constexpr Sample sharpening_weight(const SharpeningTable &table, Sample index) {
    const Sample word = look_up<4>(table, index, 0);
    return select_by(mask_of(index, 0), word >> 8, word & 63);
}

// The ratio green / own, Q12, without its lower seven bits, 0..31.
inline Sample ratio_index(Sample green, Sample own) {
    return static_cast<Sample>(least32(31, (green * reciprocal(own)) >> 10));
}

// (weight * hp) >> 5 for +-2048.
constexpr Sample sharpened(Sample hp, Sample weight) {
    return WIDE ? (weight * hp) >> 5 : upper_half(weight << 7, hp << 4);
}

CFA_KERNEL void ratio_indices(Sight<2> raw, Sample *h, Sample *v, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const auto P = raw.at(i);
        const Sample h_pair = P(0, -1) + P(0, 1);
        const Sample v_pair = P(-1, 0) + P(1, 0);
        const Sample h_own = static_cast<Sample>(2 * P(0, 0) + P(0, -2) + P(0, 2)) >> 2;
        const Sample v_own = static_cast<Sample>(2 * P(0, 0) + P(-2, 0) + P(2, 0)) >> 2;
        h[i] = ratio_index(h_pair >> 1, h_own);
        v[i] = ratio_index(v_pair >> 1, v_own);
    }
}

CFA_KERNEL void look_up_weights(SharpeningTable table, Sample *index, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i)
        index[i] = sharpening_weight(table, index[i]);
}

CFA_KERNEL void candidates(Sight<2> raw, const Sample *h_weight, const Sample *v_weight, const Sample *lh,
                           const Sample *lv, Extremes green, Sample activity_limit, Sample *candidate_h,
                           Sample *candidate_v, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const auto P = raw.at(i);
        const Sample h_pair = P(0, -1) + P(0, 1);
        const Sample v_pair = P(-1, 0) + P(1, 0);
        const Sample h_ends = P(0, -2) + P(0, 2);
        const Sample v_ends = P(-2, 0) + P(2, 0);
        const Sample h_lp = static_cast<Sample>(h_pair + 1) >> 1;
        const Sample v_lp = static_cast<Sample>(v_pair + 1) >> 1;
        const Sample h_hp = static_cast<Sample>(2 * P(0, 0) - h_ends) >> 2; // -2048..2047
        const Sample v_hp = static_cast<Sample>(2 * P(0, 0) - v_ends) >> 2;

        // Unsharpened the correction is hp itself.
        const Sample sharpens = -(largest(lh[i], lv[i]) < activity_limit);
        const Sample h_fix = select_by(sharpens, sharpened(h_hp, h_weight[i]), h_hp);
        const Sample v_fix = select_by(sharpens, sharpened(v_hp, v_weight[i]), v_hp);
        const Sample h = limited12(static_cast<Sample>(h_lp + h_fix));
        const Sample v = limited12(static_cast<Sample>(v_lp + v_fix));

        candidate_h[i] = least(green.max[i], largest(green.min[i], h));
        candidate_v[i] = least(green.max[i], largest(green.min[i], v));
    }
}

} // namespace

void sharpen_green(Sight<2> raw, const Sample *lh, const Sample *lv, Extremes green, SharpeningTable table,
                   Sample *candidate_h, Sample *candidate_v, int n) {
    for_each_block(n, [&](Index first, int count) {
        const Sight<2> there = raw.from(first);
        Sample h_weight[BLOCK], v_weight[BLOCK];
        ratio_indices(there, h_weight, v_weight, count);
        look_up_weights(table, h_weight, count);
        look_up_weights(table, v_weight, count);
        candidates(there, h_weight, v_weight, lh + first, lv + first, {green.max + first, green.min + first},
                   table.activity_limit, candidate_h + first, candidate_v + first, count);
    });
}

CFA_KERNEL void green_low_pass(const Sample *before, const Sample *behind, Sample *out, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i)
        out[i] = static_cast<Sample>(before[i] + behind[i] + 1) >> 1;
}

CFA_KERNEL void own_high_pass(const Sample *own, const Sample *end_before, const Sample *end_behind,
                              Sample *out, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i)
        out[i] = static_cast<Sample>(2 * own[i] - end_before[i] - end_behind[i]) >> 2;
}

CFA_KERNEL void green_ratio(const Sample *before, const Sample *behind, const Sample *own,
                            const Sample *end_before, const Sample *end_behind, Sample *out, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const int32_t green = (before[i] + behind[i]) >> 1;
        const int32_t mean = (2 * own[i] + end_before[i] + end_behind[i]) >> 2;
        out[i] = static_cast<Sample>(least32(4095, (green * reciprocal(mean)) >> 3));
    }
}

} // namespace cfa::CFA_ROWS
