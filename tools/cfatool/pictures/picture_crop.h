// The part of a picture that an option asks for.
#pragma once

#include <string>

#include "tools/cfatool/base/numbers.h"
#include "tools/cfatool/pictures/picture_reader.h"

namespace cfatool {

/// The rectangle "X,Y,W,H" in this picture, the whole picture for an empty text. Throws Trouble if it leaves
/// the picture.
Crop crop_in(const std::string &text, const PictureReader &reader);
Crop crop_in(const std::string &text, const std::string &path, int width, int height);

} // namespace cfatool
