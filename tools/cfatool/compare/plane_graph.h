// What each plane is computed from, with the features that are on.
#pragma once

#include <string>
#include <vector>

#include "cmodel/cfa/src/planes.h"
#include "tools/cfatool/compare/picture_compare.h"
#include "tools/cfatool/registers/registers.h"

namespace cfatool {

/// A plane of the list, or those sites of it that one stage makes, or the mosaic.
struct PlanePart {
    std::string name;            // "raw" for the mosaic
    const cfa::PlaneInfo *plane; // null for the mosaic
    std::string stage;           // that makes it: copy_to_dst where the stage proper is off
    Sites sites = Sites::all;
    bool off = false;           // its stage is off, and so it is not made
    std::string copied;         // with its stage off: the plane that it is a copy of
    std::vector<size_t> inputs; // places in the list of what it is computed from
};

/// All of them in pipeline order, the mosaic first. A feature is on if it is on in either run; without any
/// registers (both null) all are.
std::vector<PlanePart> plane_graph(const Registers *a, const Registers *b);

/// "", " at green sites", " at red and blue sites".
const char *sites_text(Sites sites);

} // namespace cfatool
