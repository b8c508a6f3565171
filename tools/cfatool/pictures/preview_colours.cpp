// Looks: plain, false colour, directions, signed maps.
#include "tools/cfatool/pictures/preview_colours.h"

#include <algorithm>

#include "tools/cfatool/base/integer_math.h"

namespace cfatool {
namespace {

uint32_t packed(int64_t r, int64_t g, int64_t b) {
    return static_cast<uint32_t>(r << 16 | g << 8 | b);
}

/// 0..255, rounded to nearest.
int64_t level(uint32_t sample, uint32_t max, int64_t gain) {
    const uint64_t full = uint64_t{max} * 1000;
    const uint64_t bright = uint64_t{std::min(sample, max)} * static_cast<uint64_t>(gain);
    return bright >= full ? 255 : static_cast<int64_t>((bright * 255 + full / 2) / full);
}

uint32_t false_colour(int64_t level) {
    constexpr int STOPS[6][3] = {{0, 0, 0},     {30, 40, 170},  {0, 160, 190},
                                 {60, 200, 60}, {250, 220, 40}, {255, 255, 255}};
    const int64_t stop = std::min<int64_t>(level / 51, 4);
    const int64_t part = (level - stop * 51) * 65536 / 51;
    const auto channel = [&](int c) { return mix(STOPS[stop][c], STOPS[stop + 1][c], part); };
    return packed(channel(0), channel(1), channel(2));
}

uint32_t direction_colour(uint32_t direction) {
    constexpr uint32_t COLOURS[3] = {0x505050, 0xF09018, 0x2878F0};
    return direction < 3 ? COLOURS[direction] : 0xFF00FF;
}

} // namespace

Look look_of_name(const std::string &path) {
    const std::string name = path.substr(path.rfind('/') + 1); // npos + 1 is 0
    const std::string map_end = "_4x_8b.ppm";
    if (name == "dbg_img_DirInfo.ppm")
        return Look::direction;
    if (name.rfind("dbg_sg_", 0) == 0 && name.size() > map_end.size() &&
        name.compare(name.size() - map_end.size(), map_end.size(), map_end) == 0)
        return Look::signed_map;
    return Look::plain;
}

uint32_t preview_colour(const uint32_t *samples, const PictureInfo &info, Look look, int64_t gain) {
    const int64_t first = level(samples[0], info.max, gain);
    switch (look) {
    case Look::direction:
        return direction_colour(samples[0]);
    case Look::false_colour:
        return false_colour(first);
    case Look::signed_map: {
        const int64_t above = std::min<int64_t>(4 * first, 255);
        const int64_t below = std::min<int64_t>(4 * level(samples[1], info.max, gain), 255);
        return packed(255 - below, 255 - above, 255 - std::max(above, below));
    }
    default:
        break;
    }
    if (info.channels == 1)
        return packed(first, first, first);
    return packed(first, level(samples[1], info.max, gain), level(samples[2], info.max, gain));
}

} // namespace cfatool
