// What the line engine takes, and on which rows; the model takes the rest.
#pragma once

#include <cstdint>

namespace cfa {

/// The largest sample for which the engine's arithmetic on 32-bit rows is the model's: sixteen bits. A mosaic
/// in memory may hold larger ones, and missing samples of a file are negative.
///
/// Most intermediates stay within 31 bits: sums of samples with weights that come to n are below n * 2^16,
/// the gradient sum of 20 steps times 256 below 2^29. What decides the bound are two products. A ratio of
/// samples is u16 times a reciprocal of up to 2^15, below 2^31: one bit more and the model's wraps. A blend
/// is computed in 64 bits by the model; here a mean of two candidates u16, times the sum of the weights and
/// its reciprocal, below 2^16, just fits 32 unsigned bits.
///
/// The rest may wrap, in the model as here: the variance at green sites (below 2^20, times 3925), directional
/// responses (25 products of 29 bits), products of a curve's weight. There both use sums and products of 32
/// bits alone, which give the same whatever their order, and limit or shift the same last result.
constexpr uint32_t CFA_LINES_MAX_SAMPLE = 65535;

/// The largest sample whose sums fit 16-bit rows: twelve bits.
constexpr uint32_t CFA_LINES_MAX_NARROW_SAMPLE = 4095;

/// Whether samples of which `all` is the union of bits are within the bound: it is all ones, so no sample
/// exceeds it unless the union does.
constexpr bool cfa_lines_take_samples(uint32_t all) {
    return all <= CFA_LINES_MAX_SAMPLE;
}

/// Whether such samples, or the registers as they stand, need rows of 32 bits.
bool cfa_lines_need_wide_rows(uint32_t all);

/// Null when the line engine serves the registers as they stand on a picture of
/// this size; else what is against it.
const char *cfa_lines_excludes(uint32_t width, uint32_t height);

} // namespace cfa
