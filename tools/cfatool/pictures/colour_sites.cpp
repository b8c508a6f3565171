// Colour codes in words and in light.
#include "tools/cfatool/pictures/colour_sites.h"

#include "cmodel/common/color_id.h"

namespace cfatool {
namespace {

constexpr uint32_t CODE_GREEN_4X4 = 16;       // on the rows that also carry red and blue
constexpr uint32_t CODE_GREEN_4X4_OTHER = 17; // on the other rows

} // namespace

int64_t site_value(uint32_t code, const Rgb &colour) {
    switch (code) {
    case cfa::CODE_R:
        return colour.r;
    case cfa::CODE_B:
        return colour.b;
    case cfa::CODE_GB:
    case cfa::CODE_GR:
    case CODE_GREEN_4X4:
    case CODE_GREEN_4X4_OTHER:
        return colour.g;
    default:
        return (colour.r + 2 * colour.g + colour.b) / 4;
    }
}

std::string site_name(int x, int y, uint32_t bayer) {
    const uint32_t code = CM_GET_COLOR_ID(static_cast<uint32_t>(y), static_cast<uint32_t>(x), bayer);
    switch (code) {
    case cfa::CODE_R:
        return "R";
    case cfa::CODE_B:
        return "B";
    case cfa::CODE_GB:
        return "Gb";
    case cfa::CODE_GR:
        return "Gr";
    case CODE_GREEN_4X4:
    case CODE_GREEN_4X4_OTHER:
        return "G";
    default:
        return "code " + std::to_string(code);
    }
}

} // namespace cfatool
