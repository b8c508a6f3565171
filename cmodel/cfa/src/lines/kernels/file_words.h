// Rows of half-rows to and from samples in memory, and to and from the words of picture files: bytes up to
// depth 8, beyond that two bytes, the high one first.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#include "cmodel/cfa/src/lines/rows.h"

namespace cfa {

/// A file word of 8 bits, or of 16 as it lies in the file, and the sample it stands
/// for: the same conversion both ways.
constexpr uint8_t file_order(uint8_t v) {
    return v;
}
constexpr uint16_t file_order(uint16_t v) {
    return std::endian::native == std::endian::big ? v : static_cast<uint16_t>(v >> 8 | v << 8);
}

/// All bits that occur in any of the samples, 0 if there are none.
uint16_t union_of_words(const uint16_t *words, size_t count);

/// Writes a row of `width` words into its halves. REQUIRES samples of 0..32767.
void split_words(const uint8_t *words, int width, Sample *even, Sample *odd);
void split_words(const uint16_t *words, int width, Sample *even, Sample *odd);

/// Writes a row of one channel, or of three interleaved. Samples are cut to the word.
void join_words(SplitRow row, int width, uint8_t *words);
void join_words(SplitRow row, int width, uint16_t *words);
void join_words(SplitRow red, SplitRow green, SplitRow blue, int width, uint8_t *words);
void join_words(SplitRow red, SplitRow green, SplitRow blue, int width, uint16_t *words);

// The same for 16-bit samples in memory.
uint16_t union_of_samples(const uint16_t *samples, size_t count);
void split_samples(const uint16_t *samples, int width, Sample *even, Sample *odd);
void join_samples(SplitRow row, int width, uint16_t *samples);
void join_samples(SplitRow red, SplitRow green, SplitRow blue, int width, uint16_t *samples);

} // namespace cfa
