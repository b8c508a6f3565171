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

/// Writes a row of `width` words into its halves, of int16_t or int32_t. REQUIRES that these hold the
/// samples.
template <class Word, class Sample> void split_words(const Word *words, int width, Sample *even, Sample *odd);

/// Writes a row of one channel, or of three interleaved. Samples are cut to the word.
template <class Word, class Sample> void join_words(SplitRow<Sample> row, int width, Word *words);
template <class Word, class Sample>
void join_words(SplitRow<Sample> red, SplitRow<Sample> green, SplitRow<Sample> blue, int width, Word *words);

// The same for 16-bit samples in memory.
uint16_t union_of_samples(const uint16_t *samples, size_t count);
template <class Sample> void split_samples(const uint16_t *samples, int width, Sample *even, Sample *odd);
template <class Sample> void join_samples(SplitRow<Sample> row, int width, uint16_t *samples);
template <class Sample> void join_samples(SplitRow<Sample> red, SplitRow<Sample> green, SplitRow<Sample> blue,
                                          int width, uint16_t *samples);

} // namespace cfa
