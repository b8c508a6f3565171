// Parts of pictures.
#include "tools/cfatool/pictures/picture_crop.h"

#include <fmt/core.h>

#include "tools/cfatool/base/trouble.h"

namespace cfatool {

Crop crop_in(const std::string &text, const PictureReader &reader) {
    const PictureInfo &info = reader.info();
    if (text.empty())
        return {0, 0, info.width, info.height};
    const Crop crop = parse_crop(text, "--crop");
    if (crop.x > info.width - crop.width || crop.y > info.height - crop.height)
        throw file_trouble(reader.path(), fmt::format("--crop {} leaves the picture of {}x{}", text,
                                                      info.width, info.height));
    return crop;
}

} // namespace cfatool
