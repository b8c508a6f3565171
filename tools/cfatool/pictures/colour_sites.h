// Sites of the colour-filter array: what each sees, and what it is called.
#pragma once

#include <cstdint>
#include <string>

namespace cfatool {

/// One pixel; what is full scale is said by who holds it.
struct Rgb {
    int64_t r = 0;
    int64_t g = 0;
    int64_t b = 0;
};

/// What a site of this colour code sees: code 3 red, 0 blue, 1, 2, 16 and 17 green, every other code (18 and
/// 19 of the 4 x 4 patterns, 7 of the placeholder ids 4 to 7) the luma (R + 2G + B) / 4.
int64_t site_value(uint32_t code, const Rgb &colour);

/// Name of the colour at a site of a pattern: "R", "Gr", "Gb", "B", "G", or its code.
std::string site_name(int x, int y, uint32_t bayer);

} // namespace cfatool
