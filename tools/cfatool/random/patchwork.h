// A mosaic of random textures, made for the rounding, the limits and the neighbours of every stage.
#pragma once

#include <cstdint>
#include <vector>

namespace cfatool {

/// One texture and four levels of it.
class Texture {
  public:
    /// The texture at a counter; `textures` of the list below are drawn from. Levels are 0..max.
    Texture(uint64_t seed, uint64_t counter, int64_t max, uint64_t textures);

    /// A sample from 56 random bits, not yet limited. REQUIRES x, y >= 0.
    int64_t sample(int64_t y, int64_t x, uint64_t random, int64_t max) const;

  private:
    uint64_t kind_;
    int64_t level_[4];
};

class Patchwork {
  public:
    enum class Tiles { small, whole }; // of 5 to 16 pixels a side, or one

    /// The first 14 textures are those of the conformance set, whose bytes are recorded.
    static constexpr uint64_t RECORDED_TEXTURES = 14;
    static constexpr uint64_t ALL_TEXTURES = 16;

    Patchwork(uint64_t seed, int64_t width, int64_t height, int64_t max, Tiles tiles, uint64_t textures);

    /// The sample at a pixel, not yet limited.
    int64_t operator()(int64_t y, int64_t x) const;

  private:
    uint64_t seed_;
    int64_t width_, max_, side_x_, side_y_, columns_;
    std::vector<Texture> tiles_;
};

} // namespace cfatool
