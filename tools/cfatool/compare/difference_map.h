// A picture of where two planes differ, and how much.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace cfatool {

/// Dark grey where nothing differs; what differs in colours by its size in bits, out of those of the largest
/// sample: blue over magenta to yellow. In a large picture every pixel that differs is painted larger than it
/// is, so that a single one is seen when the whole is looked at.
class DifferenceMap {
  public:
    DifferenceMap(int width, int height);

    /// Pixel by pixel in raster order: a sample of the first plane, and the largest difference, 0 for none.
    void add(int64_t sample, uint64_t difference, uint64_t largest);
    void write(const std::string &path) const;

  private:
    uint32_t strongest(int x, int y) const;

    int width_, height_;
    int radius_; // of what is painted for one pixel
    std::vector<uint32_t> samples_, differences_;
    uint64_t most_ = 1; // the largest sample of either plane
};

} // namespace cfatool
