// The registers as the line engine reads them: once, before the first row.
#pragma once

#include <cstdint>

#include "cmodel/cfa/src/lines/kernels/kernels.h"

namespace cfa::CFA_ROWS {

struct EngineSettings {
    int first_color_parity; // of row 0: the column parity of its red or blue sites
    int first_color;        // of row 0: 0 red, 1 blue

    SharpeningTable sharpening;
    DirectionLimits at_red_blue, at_green;
    Sample strong;           // activity of a neighbour whose vote counts
    bool decides_direction;  // no direction is forced
    Sample forced_direction; // +1 horizontal, 0 blend, -1 vertical
    bool uses_variance;      // forced to one candidate, nobody reads it

    bool luma_moire;
    bool color_ranges; // red and blue count in its detail
    LumaMoireSettings luma;
    bool color_moire;
    ColorDistanceSettings color_distance;
    DirectionalKernels directional;
    EdgeWeightSettings edge;
    Curve phase;
    Sample strength; // of 256
    bool sharpens;
    SharpenSettings sharpen;
};

/// The settings that the register blocks hold now. REQUIRES a pattern id of 0 to 3.
EngineSettings read_engine_settings();

} // namespace cfa::CFA_ROWS
