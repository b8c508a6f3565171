// What a comparison says, in numbers and in words.
#include <algorithm>
#include <cmath>
#include <fmt/core.h>
#include <limits>

#include "cmodel/common/color_id.h"
#include "tools/cfatool/compare/picture_compare.h"
#include "tools/cfatool/pictures/colour_sites.h"

namespace cfatool {

bool sites_contain(Sites sites, int x, int y, uint32_t bayer) {
    if (sites == Sites::all)
        return true;
    const uint32_t code = CM_GET_COLOR_ID(static_cast<uint32_t>(y), static_cast<uint32_t>(x), bayer);
    return (sites == Sites::green) == (code == cfa::CODE_GB || code == cfa::CODE_GR);
}

uint32_t range_of_format(const std::string &format) {
    if (const size_t dots = format.find(".."); dots != std::string::npos)
        return static_cast<uint32_t>(std::strtoul(format.c_str() + dots + 2, nullptr, 10));
    const unsigned long bits = format.size() > 1 ? std::strtoul(format.c_str() + 1, nullptr, 10) : 0;
    return bits == 0 || bits > 31 ? 0 : (1u << (format[0] == 's' ? bits - 1 : bits)) - 1;
}

ChannelDifferences Comparison::all() const {
    ChannelDifferences sum;
    for (const ChannelDifferences &c : channel) {
        sum.differing += c.differing;
        sum.largest = std::max(sum.largest, c.largest);
        sum.sum += c.sum;
        sum.squares += c.squares;
    }
    return sum;
}

double Comparison::mean(const ChannelDifferences &of, uint64_t samples) const {
    return samples == 0 ? 0 : static_cast<double>(of.sum) / static_cast<double>(samples);
}

double Comparison::psnr() const {
    const double squares = all().squares;
    if (squares == 0)
        return std::numeric_limits<double>::infinity();
    const double samples = static_cast<double>(pixels()) * channels;
    return 10 * std::log10(static_cast<double>(range) * range * samples / squares);
}

const char *channel_name(int channels, int channel) {
    constexpr const char *NAMES[] = {"R", "G", "B"};
    return channels == 1 ? "grey" : NAMES[channel];
}

std::string difference_text(const Comparison &comparison, const Difference &d, int bayer) {
    const char *const channel = channel_name(comparison.channels, d.channel);
    return fmt::format(
        "x {}, y {}{}: {} against {}{}", d.x, d.y,
        comparison.channels > 1 ? fmt::format(", channel {}", channel) : "", d.a, d.b,
        bayer >= 0 ? fmt::format(" ({} site)", site_name(d.x, d.y, static_cast<uint32_t>(bayer))) : "");
}

std::string result_text(const Comparison &found, int bayer) {
    if (!found.mismatch.empty())
        return found.mismatch;
    const ChannelDifferences all = found.all();
    if (found.equal())
        return all.largest == 0 ? "equal" : "equal within the tolerance";
    return fmt::format("{} of {} samples differ, largest {}, first at {}", all.differing,
                       found.pixels() * static_cast<uint64_t>(found.channels), all.largest,
                       difference_text(found, found.list.front(), bayer));
}

} // namespace cfatool
