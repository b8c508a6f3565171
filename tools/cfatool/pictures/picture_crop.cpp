// Parts of pictures.
#include "tools/cfatool/pictures/picture_crop.h"

#include <fmt/core.h>

#include "tools/cfatool/base/trouble.h"

namespace cfatool {

Crop crop_in(const std::string &text, const std::string &path, int width, int height) {
    if (text.empty())
        return {0, 0, width, height};
    const Crop crop = parse_crop(text, "--crop");
    if (crop.x > width - crop.width || crop.y > height - crop.height)
        throw file_trouble(path, fmt::format("--crop {} leaves the picture of {}x{}", text, width, height));
    return crop;
}

Crop crop_in(const std::string &text, const PictureReader &reader) {
    return crop_in(text, reader.path(), reader.info().width, reader.info().height);
}

} // namespace cfatool
