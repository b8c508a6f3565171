// What the line engine takes; the model takes the rest.
#pragma once

#include <cstdint>

namespace cfa {

/// The largest sample whose sums fit the 16 bits of the line buffers: twelve bits. A mosaic of any header may
/// hold larger ones, and its missing samples are negative, so every sample is tested, never the header alone.
constexpr uint32_t CFA_LINES_MAX_SAMPLE = 4095;

/// Whether samples of which `all` is the union of bits are within the bound: 4095 is all ones, so no sample
/// exceeds it unless the union does.
constexpr bool cfa_lines_take_samples(uint32_t all) {
    return all <= CFA_LINES_MAX_SAMPLE;
}

/// Null when the line engine serves the registers as they stand on a picture of
/// this size; else what is against it.
const char *cfa_lines_excludes(uint32_t width, uint32_t height);

} // namespace cfa
