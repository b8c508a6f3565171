// The images of a run, in pipeline order: the one list behind compare, probe and report.
//
// A run folder holds what one run read and wrote, under these names:
//   cfa.ini, cmodel_top.ini            registers
//   raw.ppm                            the mosaic
//   out.ppm, out_dc.ppm, out_sg.ppm    the outputs
//   dbg/ or the folder itself          debug images, dbg_*.ppm
//   call.txt                           the command line, if somebody wrote it down
// Any of them may be missing; a folder of debug images alone is a run folder too.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "cmodel/cfa/src/planes.h"

namespace cfatool {

/// What is known about one image.
struct RunImage {
    std::string file;
    std::string stage;           // the function that computes it
    std::string shows;           // one line
    std::string range;           // of its samples at regular input
    const cfa::PlaneInfo *plane; // that it shows; null for the mosaic
};

/// Input, debug images and outputs, each behind everything that it is computed from.
std::span<const RunImage> run_images();

/// An image that a run folder has.
struct FoundImage {
    std::string name; // of the file
    std::string path;
    const RunImage *known; // null for an image that is not in the list
};

/// The images of a run folder: the known ones in pipeline order, then other .ppm files by name.
/// Throws Trouble for what is no folder.
std::vector<FoundImage> find_images(const std::string &folder);

} // namespace cfatool
