// The line engine held against the model on random pictures with random registers.
#pragma once

#include <cstdint>
#include <string>

#include "tests/support/beside.h"
#include "tests/support/planes.h"
#include "tools/cfatool/random/drawn_case.h"

using cfatool::large_size, cfatool::PictureSize, cfatool::small_size;

/// The registers and the mosaic of a seed.
void draw_registers(uint32_t seed);
Plane drawn_mosaic(uint32_t seed, PictureSize size);

struct Equality {
    bool served;            // the engine did not refuse
    std::string difference; // "" when all three outputs agree; else seed, registers, first differing sample
};

/// Runs cfa_lines and cfa_model on what the seed gives. An engine that refuses must leave the outputs alone.
/// By the seed, all planes, some of them, debug images are compared as well, and the engine has two threads.
Equality compare_engine_with_model(uint32_t seed, PictureSize size);

/// The same at limits that random registers seldom meet.
Equality compare_at_limits(uint32_t seed);

/// The same on this mosaic with the registers as they stand.
Equality compare_engine_with_model(const Plane &raw, Beside beside = Beside::nothing, int threads = 1);
