// Which colour a raw pixel carries.
#pragma once

#include <cstdint>

namespace cfa {

/// Colour codes of the 2 x 2 patterns.
constexpr uint32_t CODE_B = 0;
constexpr uint32_t CODE_GB = 1; // green on the rows of blue
constexpr uint32_t CODE_GR = 2; // green on the rows of red
constexpr uint32_t CODE_R = 3;

} // namespace cfa

/// Colour code of the raw pixel at this row and column (row first) for a pattern id of 0 to 19.
/// Ids 0 to 3 are the 2 x 2 Bayer patterns; ids 8 to 15 are 4 x 4 patterns with the further codes 16 and 17
/// (greens) and 18 and 19. REQUIRES bayer_id < 20.
uint32_t CM_GET_COLOR_ID(uint32_t row, uint32_t col, uint32_t bayer_id);
