// Runs of the block inside this program: whole run folders, and planes in memory.
#pragma once

#include <string>

#include "tools/cfatool/registers/registers.h"
#include "tools/cfatool/runs/plane_rows.h"

namespace cfatool {

/// What a run is made from.
struct RunRequest {
    std::string raw;              // the mosaic, P5; a colour picture (PNG, P6) if it is to be sampled
    std::string name;             // of the input in the record, if not that of the file
    std::string cfa_ini, top_ini; // text of the register files
    bool mosaic = false;          // samples a colour picture through the pattern
    bool debug = false;           // debug images
    bool planes = false;          // exact planes
    std::string folder;           // made by the run; nothing may stand there but an empty folder
};

/// Makes a run folder with the bytes that cfa_cmodel gives: raw.ppm, outputs, both register files, cfa.log,
/// run.json, and what else is asked for. It appears when all has gone well. Throws Trouble and cfa::Error.
void make_run(const RunRequest &request);

/// A mosaic as the block reads it. Throws Trouble for a missing file, cfa::Error for a malformed one.
cfa::FramePtr read_mosaic(const std::string &path);

/// Every plane of a run on this mosaic. Throws cfa::Error for one that is too small.
Planes planes_of_run(const Registers &registers, const FRAME *raw);

} // namespace cfatool
