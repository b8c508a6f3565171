// The registers as the line engine reads them: once, before the first row.
#pragma once

#include <cstdint>

#include "cmodel/cfa/src/lines/kernels/kernels.h"
#include "cmodel/cfa/src/lines/rows.h"

namespace cfa::CFA_ROWS {

struct EngineSettings {
    int first_color_parity; // of row 0: the column parity of its red or blue sites
    int first_color;        // of row 0: 0 red, 1 blue

    SharpeningTable sharpening;
    DirectionLimits at_red_blue, at_green;
    Sample strong; // activity of a neighbour whose vote counts
    bool forces_direction;
    Sample forced_direction; // +1 horizontal, 0 blend, -1 vertical
    bool decides_direction;  // no direction is forced, or the decision is looked at
    bool uses_variance;      // forced to one candidate, nobody reads it

    bool luma_moire;
    bool green_ranges; // of the green extremes: for its weight, or to be looked at
    bool color_ranges; // red and blue count in its detail, or are looked at
    LumaMoireSettings luma;
    bool color_moire;
    bool weighs_color; // for its removal, or to be looked at
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

/// Whether the registers have a plane made and the taker wants it.
bool wanted(const RowTaker &taker, const char *plane);

/// Adds the stages that only a taker reads.
void compute_for(const RowTaker &taker, EngineSettings &settings);

} // namespace cfa::CFA_ROWS
