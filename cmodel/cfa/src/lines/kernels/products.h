// Products of a sample and a weight: in the upper half of 16 by 16 bits on narrow rows, plain on wide ones,
// where they wrap as the model's do.
#pragma once

#include "cmodel/cfa/src/lines/kernels/basics.h"

namespace cfa::CFA_ROWS {

/// floor(a * b / 65536): the upper half of the product.
constexpr Sample upper_half(Sample a, Sample b) {
    return static_cast<Sample>((int32_t{a} * b) >> 16);
}

/// (a * b + 16384) >> 15: the product of two fractions of 15 bits, rounded, which is one instruction.
constexpr Sample rounded_product(Sample a, Sample b) {
    return static_cast<Sample>((((int32_t{a} * b) >> 14) + 1) >> 1);
}

/// (a * weight + 128) >> 8 for a of +-4095 and a weight u8.
constexpr Sample weighted_q8(Sample a, Sample weight) {
    return WIDE ? (a * weight + 128) >> 8 : rounded_product(a << 3, weight << 4);
}

/// (a * gain + 16) >> 5 for a of 0..4095 and a gain u8.
constexpr Sample scaled_q5(Sample a, Sample gain) {
    return WIDE ? (a * gain + 16) >> 5 : rounded_product(a << 3, gain << 7);
}

/// ((256 - weight) * a + weight * b + 128) >> 8 for samples u12 and a weight u8.
constexpr Sample blend_q8(Sample a, Sample b, Sample weight) {
    return WIDE ? ((a << 8) + (b - a) * weight + 128) >> 8 : a + weighted_q8(b - a, weight);
}

/// (a * weight) >> 12 for a weight u12: 12 bits in the lower half and 4 of the shifts before.
constexpr Sample weighted_q12(Sample a, Sample weight) {
    return WIDE ? (a * weight) >> 12 : upper_half(a << 3, weight << 1);
}

} // namespace cfa::CFA_ROWS
