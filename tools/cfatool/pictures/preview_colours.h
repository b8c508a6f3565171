// How samples of our pictures become 8-bit colours for looking at.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/cfatool/pictures/picture_reader.h"

namespace cfatool {

/// How a picture is shown.
enum class Look {
    plain,        // its samples from 0 to the maximum value, grey or RGB
    false_colour, // one channel from black over blue, green and yellow to white
    direction,    // 0 (blend) grey, 1 (horizontal) orange, 2 (vertical) blue, anything else magenta
    signed_map,   // red above zero and green below become red and green on white, four times as strong
};

/// The look that a debug image's file name asks for; plain for any other.
Look look_of_name(const std::string &path);

/// The colour of one pixel: its samples (1 or 3) of a picture with this maximum value, brightened by gain
/// (thousandths), as 0xRRGGBB. Samples above the maximum value show as the maximum.
uint32_t preview_colour(const uint32_t *samples, const PictureInfo &info, Look look, int64_t gain);

} // namespace cfatool
