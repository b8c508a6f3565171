// Two pictures, sample by sample.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "tools/cfatool/base/numbers.h"

namespace cfatool {

struct CompareOptions {
    uint32_t tolerance = 0; // samples differ if they are further apart than this
    std::string crop;       // "X,Y,W,H" or empty
    size_t max_list = 1;    // differing samples to keep, at least 1
    std::string map;        // PNG file to paint, or empty
};

/// One sample that differs.
struct Difference {
    int x = 0;
    int y = 0;
    int channel = 0;
    uint32_t a = 0;
    uint32_t b = 0;
};

/// What was found in one channel.
struct ChannelDifferences {
    uint64_t differing = 0; // samples beyond the tolerance
    uint32_t largest = 0;   // absolute difference, within the tolerance too
    uint64_t sum = 0;       // of absolute differences
    double squares = 0;     // sum of squared differences
};

struct Comparison {
    std::string mismatch; // size or depth, one line; nothing below is valid then
    int width = 0;        // of the compared part
    int height = 0;
    int channels = 0;
    uint32_t max = 0;
    std::array<ChannelDifferences, 3> channel;
    int left = 0, top = 0, right = -1, bottom = -1; // bounding box of what differs, inclusive
    std::vector<Difference> list;                   // the first ones in raster order

    uint64_t pixels() const { return static_cast<uint64_t>(width) * height; }
    bool equal() const { return mismatch.empty() && list.empty(); }
    ChannelDifferences all() const;                                    // channels taken together
    double mean(const ChannelDifferences &of, uint64_t samples) const; // absolute difference
    double psnr() const; // in dB against the maximum value; infinite for pictures without any difference
};

/// Compares two files row by row. Throws Trouble for a missing, short or malformed file.
Comparison compare_pictures(const std::string &a, const std::string &b, const CompareOptions &options);

/// "R", "G", "B", or "grey" for the only channel.
const char *channel_name(int channels, int channel);

/// "x 5, y 7, channel G: 100 against 103"; with a pattern (0 or above) the colour of the site behind it.
std::string difference_text(const Comparison &comparison, const Difference &difference, int bayer);

} // namespace cfatool
