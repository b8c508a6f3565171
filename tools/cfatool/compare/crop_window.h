// The smallest part of a mosaic in which the block computes the same at a pixel.
#pragma once

#include <string>
#include <vector>

#include "tools/cfatool/base/numbers.h"
#include "tools/cfatool/runs/run_maker.h"

namespace cfatool {

/// What a window must keep: the values of a plane around the pixel.
struct Kept {
    std::string plane;
    int reach;
};

struct CropQuestion {
    int x = 0, y = 0;
    std::vector<Kept> kept;
    // A second run of the mosaic: its registers, null if it is no run of the model, and what it has at the
    // pixel in the first plane that is kept. Where the model makes that again, the window keeps this one
    // plane, of both runs, and nothing around it.
    const Registers *other = nullptr;
    std::vector<int32_t> samples;
};

/// A part of the mosaic, and the planes of a run on it alone.
struct CropWindow {
    Crop at;
    cfa::FramePtr raw;
    Planes planes;

    CropWindow(const FRAME *mosaic, const Crop &crop, const Registers &registers);
    const FRAME *plane(const std::string &name) const {
        const auto found = planes.find(name);
        return name == "raw" ? raw.get() : found != planes.end() ? found->second.get() : nullptr;
    }
    bool holds(int x, int y) const {
        return x >= at.x && x < at.x + at.width && y >= at.y && y < at.y + at.height;
    }
};

/// The smallest window of the mosaic, aligned to the pattern and at least 4 x 4 (or to the border), that has
/// what the question asks for as a run on the whole has it. In a large picture the surroundings of the pixel
/// stand for the whole. REQUIRES the pixel to lie in the mosaic. Throws cfa::Error for one that is too small.
CropWindow smallest_window(const FRAME *mosaic, const Registers &registers, const CropQuestion &question);

} // namespace cfatool
