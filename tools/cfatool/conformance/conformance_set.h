// The conformance set: generated pictures and register sets whose outputs are recorded.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace cfatool {

/// Raised whenever a case changes; the recorded sums carry it.
constexpr int CONFORMANCE_VERSION = 2;

/// How the registers of a case are chosen, before its own settings.
enum class RegisterSet {
    defaults,   // nothing set
    everything, // every correction switched on
    some,       // about a quarter of the registers at random
    all,        // every register at random over its whole width
    drawn, // every register: ends, small and round values as often as any; slopes agree with their levels
    bypass // the block disabled
};

/// The recipe of one case: everything that makes its inputs.
struct ConformanceCase {
    const char *name;
    const char *adds;  // what it is there for, one phrase
    const char *chart; // a chart of `cfatool chart`, "patchwork" or "texture"
    int width, height;
    uint32_t bayer;
    int bits;
    RegisterSet registers;
    uint64_t seed;        // of the picture and of the registers
    std::string settings; // "key=value key=value ...", keys without reg_cfa_
};

const std::vector<ConformanceCase> &conformance_cases();

/// Writes raw.ppm, cfa.ini and cmodel_top.ini of a case into a folder. Throws Trouble.
void write_conformance_case(const ConformanceCase &c, const std::string &folder);

/// Writes the whole set for another bench: cases/CASE with inputs, outputs and exact planes, pictures as
/// $readmemh text too, and plan.tsv, which holds a folder of results against them. Throws Trouble for a
/// folder that has cases.
void export_conformance_set(const std::string &folder);

} // namespace cfatool
