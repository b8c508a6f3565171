// Parts of pictures.
#include "tools/cfatool/pictures/picture_crop.h"

#include "tools/cfatool/base/trouble.h"

namespace cfatool {

Crop crop_in(const std::string &text, const PictureReader &reader) {
    const PictureInfo &info = reader.info();
    if (text.empty())
        return {0, 0, info.width, info.height};
    const Crop crop = parse_crop(text, "--crop");
    if (crop.x > info.width - crop.width || crop.y > info.height - crop.height)
        throw file_trouble(reader.path(), "--crop " + text + " leaves the picture of " +
                                              std::to_string(info.width) + "x" + std::to_string(info.height));
    return crop;
}

} // namespace cfatool
