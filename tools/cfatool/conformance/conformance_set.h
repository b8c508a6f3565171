// The conformance set: generated pictures and register sets whose outputs are recorded.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace cfatool {

/// Raised whenever a case changes; the recorded sums carry it.
constexpr int CONFORMANCE_VERSION = 1;

/// How the registers of a case are chosen.
enum class RegisterSet {
    defaults,   // nothing set
    everything, // every correction switched on
    some,       // about a quarter of the registers at random
    all,        // every register at random over its whole width
    bypass      // the block disabled
};

struct ConformanceCase {
    std::string name;
    std::string chart;
    int width, height;
    uint32_t bayer;
    int bits;
    RegisterSet registers;
    uint64_t seed; // of the chart's noise and of the registers
};

std::vector<ConformanceCase> conformance_cases();

/// Writes raw.ppm, cfa.ini and cmodel_top.ini of a case into a folder. Throws Trouble.
void write_conformance_case(const ConformanceCase &c, const std::string &folder);

} // namespace cfatool
