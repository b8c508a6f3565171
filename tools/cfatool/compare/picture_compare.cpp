// Comparison of two pictures, row by row.
#include "tools/cfatool/compare/picture_compare.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <fmt/core.h>
#include <limits>
#include <memory>

#include "tools/cfatool/base/trouble.h"
#include "tools/cfatool/pictures/colour_sites.h"
#include "tools/cfatool/pictures/picture_crop.h"
#include "tools/cfatool/pictures/png_file.h"

namespace cfatool {
namespace {

std::string form_of(const PictureInfo &info) {
    return fmt::format("{}x{} with {}", info.width, info.height,
                       info.channels == 1 ? "1 channel" : "3 channels");
}

std::string mismatch_of(const PictureReader &a, const PictureReader &b) {
    const PictureInfo &ia = a.info(), &ib = b.info();
    if (ia.width != ib.width || ia.height != ib.height || ia.channels != ib.channels)
        return fmt::format("size mismatch: {} is {}, {} is {}", a.path(), form_of(ia), b.path(), form_of(ib));
    if (ia.max != ib.max)
        return fmt::format("depth mismatch: maximum value {} in {}, {} in {}", ia.max, a.path(), ib.max,
                           b.path());
    return "";
}

/// Colour of a difference by its size in bits, out of those of the maximum: blue over magenta to yellow,
/// never grey.
uint32_t heat(uint32_t difference, uint32_t max) {
    constexpr int STOPS[3][3] = {{0, 80, 255}, {255, 0, 160}, {255, 240, 0}};
    const auto bits = [](uint32_t v) { return static_cast<int>(std::bit_width(v)) - 1; };
    const int steps = std::max(bits(max), 1);
    const int step = std::min(bits(difference), steps) * 512 / steps; // 0..512
    const int stop = std::min(step / 256, 1);
    uint32_t colour = 0;
    for (int c = 0; c < 3; ++c)
        colour = colour << 8 | static_cast<uint32_t>(STOPS[stop][c] + (STOPS[stop + 1][c] - STOPS[stop][c]) *
                                                                          (step - stop * 256) / 256);
    return colour;
}

/// Paints what is equal as a dark grey picture and what differs in colours.
class Map {
  public:
    Map(const std::string &path, const Comparison &found)
        : png_(path, found.width, found.height), found_(found) {
        row_.reserve(3 * static_cast<size_t>(found.width));
    }

    void add(const uint32_t *a, uint32_t difference) {
        uint32_t colour = 0;
        if (difference != 0) {
            colour = heat(difference, found_.max);
        } else {
            const uint64_t level = std::min(a[found_.channels / 2], found_.max) * uint64_t{96} / found_.max;
            colour = static_cast<uint32_t>(level) * 0x010101;
        }
        for (const int shift : {16, 8, 0})
            row_.push_back(static_cast<uint8_t>(colour >> shift));
    }
    void end_row() {
        png_.write_row(row_);
        row_.clear();
    }
    void commit() { png_.commit(); }

  private:
    PngWriter png_;
    const Comparison &found_;
    std::vector<uint8_t> row_;
};

/// Compares one pixel; returns its largest difference beyond the tolerance, 0 if there is none.
uint32_t compare_pixel(Comparison &found, const CompareOptions &options, int x, int y, const uint32_t *a,
                       const uint32_t *b) {
    uint32_t beyond = 0;
    for (int c = 0; c < found.channels; ++c) {
        const uint32_t difference = std::max(a[c], b[c]) - std::min(a[c], b[c]);
        if (difference == 0)
            continue;
        ChannelDifferences &channel = found.channel[static_cast<size_t>(c)];
        channel.largest = std::max(channel.largest, difference);
        channel.sum += difference;
        channel.squares += static_cast<double>(difference) * difference;
        if (difference <= options.tolerance)
            continue;
        ++channel.differing;
        beyond = std::max(beyond, difference);
        if (found.list.empty())
            found.left = found.right = x, found.top = y;
        found.left = std::min(found.left, x);
        found.right = std::max(found.right, x);
        found.bottom = y;
        if (found.list.size() < std::max<size_t>(options.max_list, 1))
            found.list.push_back({x, y, c, a[c], b[c]});
    }
    return beyond;
}

} // namespace

Comparison compare_pictures(const std::string &a, const std::string &b, const CompareOptions &options) {
    PictureReader reader_a(a), reader_b(b);
    Comparison found;
    found.mismatch = mismatch_of(reader_a, reader_b);
    if (!found.mismatch.empty())
        return found;
    const PictureInfo &info = reader_a.info();
    const Crop crop = crop_in(options.crop, reader_a);
    found.width = crop.width;
    found.height = crop.height;
    found.channels = info.channels;
    found.max = info.max;
    std::unique_ptr<Map> map;
    if (!options.map.empty() && found.pixels() == 0)
        throw file_trouble(a, "a picture of no pixels has no map");
    if (!options.map.empty())
        map = std::make_unique<Map>(options.map, found);

    std::vector<uint32_t> row_a, row_b;
    const int rows = info.width > 0 ? info.height : 0; // 2147483647 rows of no pixels are nothing to read
    for (int y = 0; y < rows; ++y) {
        reader_a.read_row(row_a);
        reader_b.read_row(row_b);
        if (y < crop.y || y >= crop.y + crop.height)
            continue;
        for (int x = crop.x; x < crop.x + crop.width; ++x) {
            const size_t at = static_cast<size_t>(x) * info.channels;
            const uint32_t difference = compare_pixel(found, options, x, y, &row_a[at], &row_b[at]);
            if (map)
                map->add(&row_a[at], difference);
        }
        if (map)
            map->end_row();
    }
    reader_a.finish();
    reader_b.finish();
    if (map)
        map->commit();
    return found;
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
    return 10 * std::log10(static_cast<double>(max) * max * samples / squares);
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

} // namespace cfatool
