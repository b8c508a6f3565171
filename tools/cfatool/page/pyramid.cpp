// Levels, their tiles, and the summary of a plane.
#include "tools/cfatool/page/pyramid.h"

#include <algorithm>
#include <climits>

#include "tools/cfatool/page/tile_code.h"

namespace cfatool {
namespace {

/// Reduces cells of factor x factor to one. A level is reduced from the least and the largest of the level
/// before; for the first both are the plane.
PyramidLevel reduced(const std::vector<int32_t> &least, const std::vector<int32_t> &most, int width,
                     int height, int channels, int factor) {
    PyramidLevel level{(width + factor - 1) / factor, (height + factor - 1) / factor, {}, {}};
    const size_t row = static_cast<size_t>(width) * channels,
                 cells = static_cast<size_t>(level.width) * channels;
    level.least.assign(cells * level.height, INT32_MAX);
    level.most.assign(cells * level.height, INT32_MIN);
    const auto at = [=](int x, int c) { return static_cast<size_t>(x) * channels + static_cast<size_t>(c); };
    std::vector<int32_t> low(row), high(row);
    for (int y = 0; y < level.height; ++y) {
        std::fill(low.begin(), low.end(), INT32_MAX);
        std::fill(high.begin(), high.end(), INT32_MIN);
        for (int line = y * factor; line < std::min((y + 1) * factor, height); ++line) {
            const int32_t *const l = &least[row * line], *const m = &most[row * line];
            for (size_t i = 0; i < row; ++i) {
                low[i] = std::min(low[i], l[i]);
                high[i] = std::max(high[i], m[i]);
            }
        }
        for (int c = 0; c < channels; ++c)
            for (int cell = 0, x = 0; cell < level.width; ++cell) {
                int32_t l = INT32_MAX, m = INT32_MIN;
                for (const int end = std::min(x + factor, width); x < end; ++x) {
                    l = std::min(l, low[at(x, c)]);
                    m = std::max(m, high[at(x, c)]);
                }
                level.least[cells * y + at(cell, c)] = l;
                level.most[cells * y + at(cell, c)] = m;
            }
    }
    return level;
}

PlaneSummary summary_of(const PlaneSamples &plane, const PyramidLevel &level) {
    PlaneSummary summary;
    if (plane.samples.empty())
        return summary;
    summary.least = *std::min_element(level.least.begin(), level.least.end());
    summary.most = *std::max_element(level.most.begin(), level.most.end());
    const uint64_t values = static_cast<uint64_t>(int64_t{summary.most} - summary.least + 1);
    const uint64_t scale = (uint64_t{HISTOGRAM_BINS} << 32) / values; // bins a value, 1/2^32
    const auto first = static_cast<uint32_t>(summary.least);
    const size_t channels = static_cast<size_t>(plane.channels);
    for (size_t i = 0; i < plane.samples.size(); i += channels)
        for (size_t c = 0; c < channels; ++c) {
            const uint32_t above = static_cast<uint32_t>(plane.samples[i + c]) - first;
            ++summary.histogram[c][std::min<uint64_t>(above * scale >> 32, HISTOGRAM_BINS - 1)];
        }
    return summary;
}

/// The part of interleaved samples that a tile covers, one channel of it.
SampleWindow tile_window(const std::vector<int32_t> &samples, int width, int height, int channels, int column,
                         int row, int channel) {
    const ptrdiff_t pitch = ptrdiff_t{width} * channels;
    return {&samples[static_cast<size_t>(row * TILE * pitch + ptrdiff_t{column} * TILE * channels + channel)],
            std::min(TILE, width - column * TILE), std::min(TILE, height - row * TILE), channels, pitch};
}

} // namespace

size_t Pyramid::bytes() const {
    size_t sum = sizeof *this;
    for (const PyramidLevel &level : levels)
        sum += (level.least.size() + level.most.size()) * sizeof(int32_t);
    return sum;
}

Pyramid make_pyramid(const PlaneSamples &plane) {
    Pyramid pyramid;
    pyramid.channels = plane.channels;
    PyramidLevel next = reduced(plane.samples, plane.samples, plane.width, plane.height, plane.channels, 4);
    pyramid.summary = summary_of(plane, next);
    if (plane.width <= TILE && plane.height <= TILE)
        return pyramid;
    pyramid.levels.push_back(std::move(next));
    while (pyramid.levels.back().width > TILE || pyramid.levels.back().height > TILE) {
        const PyramidLevel &last = pyramid.levels.back();
        pyramid.levels.push_back(reduced(last.least, last.most, last.width, last.height, plane.channels, 2));
    }
    return pyramid;
}

std::string plane_tile(const PlaneSamples &plane, int column, int row) {
    std::string bytes;
    for (int c = 0; c < plane.channels; ++c)
        append_packed(tile_window(plane.samples, plane.width, plane.height, plane.channels, column, row, c),
                      bytes);
    return bytes;
}

std::string level_tile(const Pyramid &pyramid, int level, int column, int row) {
    const PyramidLevel &cells = pyramid.levels.at(static_cast<size_t>(level) - 1);
    std::string bytes;
    for (int c = 0; c < pyramid.channels; ++c)
        for (const std::vector<int32_t> *extreme : {&cells.least, &cells.most})
            append_packed(tile_window(*extreme, cells.width, cells.height, pyramid.channels, column, row, c),
                          bytes);
    return bytes;
}

} // namespace cfatool
