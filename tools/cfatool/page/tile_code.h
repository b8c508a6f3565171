// Tiles as the page reads them: samples packed into as few bits as their rows need.
//
// A row goes in blocks of 64 samples, the last one shorter. A block is one byte and its samples, each in the
// same number of bits, low bits first, filled up to a whole byte:
//   byte 0..32       that many bits a sample, as they are; no sample is negative
//   byte 128 + n     n bits: the difference to the sample before, folded: 0, -1, 1, -2 ... are 0, 1, 2, 3 ...
// The sample before the first one of a row is the first one of the row above, 0 in the first row. Differences
// wrap.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace cfatool {

/// Samples of one channel in a rectangle of a plane.
struct SampleWindow {
    const int32_t *first;
    int width, height;
    ptrdiff_t step;  // from a sample to its right neighbour
    ptrdiff_t pitch; // from a sample to the one below
};

/// Appends the rows of a window, packed.
void append_packed(const SampleWindow &window, std::string &bytes);

/// The bytes as the text of a script between single quotes, one character a byte in the character set
/// x-user-defined.
std::string script_text(const std::string &bytes);

} // namespace cfatool
