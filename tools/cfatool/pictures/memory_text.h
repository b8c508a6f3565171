// $readmemh text read back.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace cfatool {

/// The `count` numbers of a $readmemh text: hexadecimal digits with _ between them, set apart by white space
/// or comments (// to the end of the line, /* */); @ and a hexadecimal address say where the next one goes.
/// Throws Trouble naming `path` and the line for x and z digits, for numbers above `most`, for addresses
/// behind the last one, and for numbers that are missing.
std::vector<uint32_t> read_memory_text(const std::string &path, const std::string &text, size_t count,
                                       uint32_t most);

} // namespace cfatool
