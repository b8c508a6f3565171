// The test charts: RGB pictures given as a function of the pixel.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "tools/cfatool/pictures/mosaic_writer.h"

namespace cfatool {

/// Light of a chart is 0..65535, whatever the depth of the file.
constexpr int64_t FULL = 65535;

/// What a chart is painted on.
struct Canvas {
    int width = 0;
    int height = 0;
    uint32_t max = 4095;    // of a sample
    uint64_t seed = 1;      // of random charts
    int64_t period = 0;     // in thousandths of a pixel
    int64_t angle = 0;      // in thousandths of a degree
    Rgb colour = {0, 0, 0}; // of a flat chart, in samples
};

/// The colour of pixel (x, y). The same for the same arguments, in whatever order the pixels are asked for.
using Painter = std::function<Rgb(int x, int y)>;

/// One chart of the list.
struct Chart {
    const char *name;
    const char *description; // one line
    Painter (*paint)(const Canvas &);
    bool in_samples; // colours are samples 0..max rather than light 0..FULL
    int64_t period;  // by default, in thousandths of a pixel; 0: takes none
    int64_t angle;   // by default, in thousandths of a degree; -1: takes none
    int64_t noise;   // by default, in thousandths of a 12-bit step
};

/// All charts, in the order of `cfatool chart --list`.
const std::vector<Chart> &charts();

/// The colour at `hue` (eighths of a degree, 0..2879), saturation and value 0..FULL.
Rgb colour_of_hue(int64_t hue, int64_t saturation, int64_t value);

// The larger painters, each in a file of its own.
Painter paint_scene(const Canvas &canvas);

} // namespace cfatool
