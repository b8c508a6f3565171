#include "cmodel/cfa/src/lines/kernels/kernels.h"

namespace cfa::CFA_ROWS {

namespace {

// (sum * 85 + 512) >> 10 for a sum of twelve samples: 5440 / 65536 is 85 / 1024, and the half is the top bit
// of the lower half of the product. Kept: 85 / 1024 stands for 1 / 12 and is slightly less.
constexpr Sample twelfth(Sum sum) {
    if constexpr (WIDE)
        return limited12((sum * 85 + 512) >> 10);
    const uint16_t lower = static_cast<uint16_t>(sum * 5440u);
    const uint16_t upper = (static_cast<uint32_t>(sum) * 5440u) >> 16;
    return upper + (lower >> 15);
}

} // namespace

CFA_KERNEL void average_at_red_blue(Sight<2> raw, Sample *green, Sample *diagonal, Sample *own, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const auto P = raw.at(i);
        const Sample cross = P(0, -1) + P(0, 1) + P(-1, 0) + P(1, 0) + 2;
        const Sample corners = P(-1, -1) + P(-1, 1) + P(1, -1) + P(1, 1) + 2;
        const Sample plus = 4 * P(0, 0) + P(-2, 0) + P(2, 0) + P(0, -2) + P(0, 2) + 4; // up to 32764
        green[i] = limited12_wide(cross >> 2);
        diagonal[i] = limited12_wide(corners >> 2);
        own[i] = limited12_wide(plus >> 3);
    }
}

CFA_KERNEL void average_at_green(Sight<2> raw, Sample *green, Sample *horizontal, Sample *vertical, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const auto P = raw.at(i);
        const Sample greens = 4 * P(0, 0) + P(-1, -1) + P(-1, 1) + P(1, -1) + P(1, 1) + 4;    // up to 32764
        const Sum row = 4 * (P(0, -1) + P(0, 1)) + P(-2, -1) + P(-2, 1) + P(2, -1) + P(2, 1); // up to 49140
        const Sum column = 4 * (P(-1, 0) + P(1, 0)) + P(-1, -2) + P(1, -2) + P(-1, 2) + P(1, 2);
        green[i] = limited12_wide(greens >> 3);
        horizontal[i] = twelfth(row);
        vertical[i] = twelfth(column);
    }
}

} // namespace cfa::CFA_ROWS
