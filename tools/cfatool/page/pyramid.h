// A plane at ever coarser sizes, so that a picture of any size is drawn from a few tiles.
//
// Level 0 is the plane. Level 1 has a cell for 4 x 4 samples, each further level one for twice as many in
// each direction, up to the first that fits one tile. A cell holds the least and the largest of its samples:
// a single odd one stays visible however far out.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace cfatool {

/// Side of a tile in samples or cells.
constexpr int TILE = 256;

/// Samples of a plane, channels interleaved.
struct PlaneSamples {
    int width = 0, height = 0, channels = 1;
    std::vector<int32_t> samples;
};

/// Cells of one level, channels interleaved.
struct PyramidLevel {
    int width = 0, height = 0;
    std::vector<int32_t> least, most;
};

constexpr int HISTOGRAM_BINS = 128;

/// What a plane holds, exactly.
struct PlaneSummary {
    int32_t least = 0, most = 0; // of all channels; 0 for a plane of no pixels
    // Samples in each of 128 equal parts of least..most, a channel each.
    std::array<std::array<uint64_t, HISTOGRAM_BINS>, 3> histogram = {};
};

/// The levels from 1 on and the summary of a plane.
struct Pyramid {
    int channels = 1;
    PlaneSummary summary;
    std::vector<PyramidLevel> levels; // the first is level 1
    size_t bytes() const;
};

Pyramid make_pyramid(const PlaneSamples &plane);

/// Tiles of this many samples or cells.
constexpr int tiles_along(int length) {
    return (length + TILE - 1) / TILE;
}

/// One tile of level 0, packed: channel by channel. `plane` is the whole plane, or a window that begins at
/// the tile
/// (`column` and `row` are 0 then).
std::string plane_tile(const PlaneSamples &plane, int column, int row);

/// One tile of a further level, packed: channel by channel the least, then the largest. REQUIRES level >= 1.
std::string level_tile(const Pyramid &pyramid, int level, int column, int row);

} // namespace cfatool
