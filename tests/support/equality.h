// The line engine held against the model on random pictures with random registers.
#pragma once

#include <cstdint>
#include <string>

#include "tests/support/planes.h"

struct PictureSize {
    int width;
    int height;
};

/// Random sizes from 4 x 3 up: mostly small, some around the widths at which a half-row fills its vectors.
PictureSize small_size(uint32_t seed);
/// 200 x 100 to 700 x 500, and some very wide or tall.
PictureSize large_size(uint32_t seed);

/// Draws both register blocks from the seed: a pattern id of 0 to 3, and values over the whole range of every
/// field, small ones and the ends among them. In one of three pictures slopes may contradict their levels.
void draw_registers(uint32_t seed);

/// A mosaic of 1 to 16 bits from the seed, half of them 12.
Plane draw_mosaic(uint32_t seed, PictureSize size);

struct Equality {
    bool served;            // the engine did not refuse
    std::string difference; // "" when all three outputs agree; else seed, registers, first differing sample
};

/// Runs cfa_lines and cfa_model on what the seed gives. An engine that refuses must leave the outputs alone.
/// By the seed, all planes, some of them, debug images are compared as well, and the engine has two threads.
Equality compare_engine_with_model(uint32_t seed, PictureSize size);

/// The same at limits that random registers seldom meet: weights and details one step from their largest, odd
/// slopes, variances at the change of their unit. Small pictures of strong contrasts.
Equality compare_at_limits(uint32_t seed);

/// What is compared beside the outputs: all planes, some of them, or the files of the debug folder.
enum class Beside { nothing, planes, some_planes, images };

/// The same on this mosaic with the registers as they stand.
Equality compare_engine_with_model(const Plane &raw, Beside beside = Beside::nothing, int threads = 1);
