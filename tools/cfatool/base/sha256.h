// SHA-256.
#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace cfatool {

/// The sum of some bytes as 64 hexadecimal digits.
std::string sha256(const std::string &bytes);

} // namespace cfatool
