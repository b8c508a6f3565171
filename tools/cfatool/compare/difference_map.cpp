#include "tools/cfatool/compare/difference_map.h"

#include <algorithm>
#include <bit>

#include "tools/cfatool/pictures/png_file.h"

namespace cfatool {
namespace {

/// Colour of a difference by its size in bits, never grey.
uint32_t heat(uint32_t difference, uint64_t most) {
    constexpr int STOPS[3][3] = {{0, 80, 255}, {255, 0, 160}, {255, 240, 0}};
    const auto bits = [](uint64_t v) { return static_cast<int>(std::bit_width(v)) - 1; };
    const int steps = std::max(bits(most), 1);
    const int step = std::min(bits(difference), steps) * 512 / steps; // 0..512
    const int stop = std::min(step / 256, 1);
    uint32_t colour = 0;
    for (int c = 0; c < 3; ++c)
        colour = colour << 8 | static_cast<uint32_t>(STOPS[stop][c] + (STOPS[stop + 1][c] - STOPS[stop][c]) *
                                                                          (step - stop * 256) / 256);
    return colour;
}

uint32_t limited(uint64_t v) {
    return static_cast<uint32_t>(std::min<uint64_t>(v, UINT32_MAX));
}

} // namespace

DifferenceMap::DifferenceMap(int width, int height)
    : width_(width), height_(height), radius_(std::max(width, height) / 1000) {}

void DifferenceMap::add(int64_t sample, uint64_t difference, uint64_t largest) {
    samples_.push_back(limited(static_cast<uint64_t>(std::max<int64_t>(sample, 0))));
    differences_.push_back(limited(difference));
    most_ = std::max(most_, largest);
}

uint32_t DifferenceMap::strongest(int x, int y) const {
    uint32_t most = 0;
    for (int r = std::max(y - radius_, 0); r <= std::min(y + radius_, height_ - 1); ++r)
        for (int c = std::max(x - radius_, 0); c <= std::min(x + radius_, width_ - 1); ++c)
            most = std::max(
                most,
                differences_[static_cast<size_t>(r) * static_cast<size_t>(width_) + static_cast<size_t>(c)]);
    return most;
}

void DifferenceMap::write(const std::string &path) const {
    PngWriter png(path, width_, height_);
    std::vector<uint8_t> row;
    const uint32_t *sample = samples_.data();
    for (int y = 0; y < height_; ++y, row.clear()) {
        for (int x = 0; x < width_; ++x, ++sample) {
            const uint32_t difference = strongest(x, y);
            const auto grey = static_cast<uint32_t>(uint64_t{*sample} * 96 / most_);
            const uint32_t colour = difference != 0 ? heat(difference, most_) : grey * 0x010101;
            for (const int shift : {16, 8, 0})
                row.push_back(static_cast<uint8_t>(colour >> shift));
        }
        png.write_row(row);
    }
    png.commit();
}

} // namespace cfatool
