// $readmemh text, written and read back.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "tools/cfatool/base/numbers.h"
#include "tools/cfatool/pictures/picture_reader.h"

namespace cfatool {

/// Hexadecimal digits of a number; 0 has none.
int hex_digits(uint32_t sample);

/// Puts a part of a picture as text, row by row, a sample a line with as many digits as the maximum value
/// has. Returns how many samples take more. REQUIRES a reader that has read no row yet. Throws Trouble.
uint64_t put_memory_text(PictureReader &reader, const Crop &crop,
                         const std::function<void(const std::string &)> &put);

/// The `count` numbers of a $readmemh text: hexadecimal digits with _ between them, set apart by white space
/// or comments (// to the end of the line, /* */); @ and a hexadecimal address say where the next one goes.
/// Throws Trouble naming `path` and the line for x and z digits, for numbers above `most`, for addresses
/// behind the last one, and for numbers that are missing.
std::vector<uint32_t> read_memory_text(const std::string &path, const std::string &text, size_t count,
                                       uint32_t most);

} // namespace cfatool
