#include "tools/cfatool/random/patchwork.h"

#include "tools/cfatool/base/integer_math.h"

namespace cfatool {
namespace {

constexpr uint64_t TILES = uint64_t{1} << 40; // counters of tiles, apart from those of pixels

int64_t drawn_side(uint64_t seed, uint64_t which) {
    return 5 + static_cast<int64_t>(random_bits(seed, TILES - which) % 12);
}

} // namespace

Texture::Texture(uint64_t seed, uint64_t counter, int64_t max, uint64_t textures)
    : kind_(random_bits(seed, TILES + 5 * counter) % textures) {
    for (uint64_t k = 0; k < 4; ++k)
        level_[k] = static_cast<int64_t>(random_bits(seed, TILES + 5 * counter + 1 + k) %
                                         (static_cast<uint64_t>(max) + 1));
}

int64_t Texture::sample(int64_t y, int64_t x, uint64_t random, int64_t max) const {
    const auto up_to = [random](int64_t n) { return static_cast<int64_t>(random % (n + 1)); };
    const int64_t own = level_[y % 2 * 2 + x % 2];
    const int64_t step = max / 4095 + 1;
    switch (kind_) {
    case 0: // a colour of its own for every site
        return own;
    case 1: // the same, a little noisy
        return own + (up_to(80) - 40) * step;
    case 2:
        return up_to(max);
    case 3:
        return up_to(1);
    case 4:
        return max - up_to(1);
    case 5:
        return up_to(1) * max;
    case 6: // impulses
        return up_to(20) == 0 ? static_cast<int64_t>(random >> 8) % (max + 1) : level_[0];
    case 7: // stripes in some direction, hardly noisy
        return level_[(x * (level_[2] % 5) + y * (level_[3] % 5)) % (2 + level_[2] % 3) == 0] + up_to(4) - 2;
    case 8: // checker
        return level_[(x + y) % 2];
    case 9: // ramp
        return level_[0] + (x * (level_[1] % 61 - 30) + y * (level_[2] % 61 - 30)) * step + up_to(3);
    case 10: // rings
        return (x * x + y * y * (1 + level_[1] % 3)) * (1 + level_[0] % 200) * step / 64 % (max + 1);
    case 11: // round numbers
        return up_to(2 + level_[0] % 7) << level_[1] % 11;
    case 12: // flat but for single steps
        return level_[0] + (up_to(23) == 0);
    case 13: // full of holes
        return up_to(2) == 0 ? 0 : static_cast<int64_t>(random >> 8) % (max + 1);
    case 14: // full checker
        return (x + y) % 2 * max;
    default: // blocks
        return level_[(x / (3 + level_[2] % 7) + y / (2 + level_[3] % 7)) % 2] + up_to(6) - 3;
    }
}

Patchwork::Patchwork(uint64_t seed, int64_t width, int64_t height, int64_t max, Tiles tiles,
                     uint64_t textures)
    : seed_(seed), width_(width), max_(max), side_x_(tiles == Tiles::whole ? width : drawn_side(seed, 1)),
      side_y_(tiles == Tiles::whole ? height : drawn_side(seed, 2)), columns_(width / side_x_ + 1) {
    const int64_t rows = height / side_y_ + 1;
    for (uint64_t i = 0; i < static_cast<uint64_t>(rows * columns_); ++i)
        tiles_.emplace_back(seed, i, max, textures);
}

int64_t Patchwork::operator()(int64_t y, int64_t x) const {
    const Texture &tile = tiles_[static_cast<size_t>(y / side_y_ * columns_ + x / side_x_)];
    return tile.sample(y, x, random_bits(seed_, static_cast<uint64_t>(y * width_ + x)) >> 8, max_);
}

} // namespace cfatool
