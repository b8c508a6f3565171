// Two pictures or planes, sample by sample.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "tools/cfatool/runs/plane_file.h"

namespace cfatool {

/// Which pixels of a plane count.
enum class Sites { all, green, others };

struct CompareOptions {
    uint32_t tolerance = 0; // samples differ if they are further apart than this
    std::string crop;       // "X,Y,W,H" or empty
    size_t max_list = 1;    // differing samples to keep, at least 1
    std::string map;        // PNG file to paint, or empty
    Sites sites = Sites::all;
    int bayer = -1;        // pattern id: REQUIRED unless all sites count
    uint32_t limit = 0;    // not 0: find out whether a sample of either file reaches it
    uint32_t range = 0;    // largest sample of the plane for the PSNR; 0: as the header says
    bool progress = false; // of folders, on a terminal
};

/// One sample that differs.
struct Difference {
    int x = 0;
    int y = 0;
    int channel = 0;
    int64_t a = 0;
    int64_t b = 0;
};

/// What was found in one channel.
struct ChannelDifferences {
    uint64_t differing = 0; // samples beyond the tolerance
    uint64_t largest = 0;   // absolute difference, within the tolerance too
    uint64_t sum = 0;       // of absolute differences
    double squares = 0;     // sum of squared differences
};

struct Comparison {
    std::string mismatch; // size or depth, one line; nothing below is valid then
    int width = 0;        // of the compared part
    int height = 0;
    int channels = 0;
    uint32_t max = 0;   // by the header; 0 if there is none
    uint32_t range = 0; // for the PSNR
    bool reaches_limit = false;
    std::array<ChannelDifferences, 3> channel;
    int left = 0, top = 0, right = -1, bottom = -1; // bounding box of what differs, inclusive
    std::vector<Difference> list;                   // the first ones in raster order

    uint64_t pixels() const { return static_cast<uint64_t>(width) * height; }
    bool equal() const { return mismatch.empty() && list.empty(); }
    ChannelDifferences all() const;                                    // channels taken together
    double mean(const ChannelDifferences &of, uint64_t samples) const; // absolute difference
    double psnr() const; // in dB against the range; infinite for pictures without any difference
};

/// Compares two files. Throws Trouble for a missing, short or malformed one.
Comparison compare_pictures(const std::string &a, const std::string &b, const CompareOptions &options);

/// Whether a pixel is one of these sites of a pattern.
bool sites_contain(Sites sites, int x, int y, uint32_t bayer);

/// The largest sample that a format of the list of planes names: 4095 for u12, 4095 for s13, 131071 for
/// 0..131071; 0 if it names none.
uint32_t range_of_format(const std::string &format);

/// "R", "G", "B", or "grey" for the only channel.
const char *channel_name(int channels, int channel);

/// "x 5, y 7, channel G: 100 against 103"; with a pattern (0 or above) the colour of the site behind it.
std::string difference_text(const Comparison &comparison, const Difference &difference, int bayer);

/// "12 of 307200 samples differ, largest 40, first at x 5, ...", "equal", or how the two do not match.
std::string result_text(const Comparison &found, int bayer);

} // namespace cfatool
