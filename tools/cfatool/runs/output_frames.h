// The three outputs of the block in memory.
#pragma once

#include "cmodel/common/frame.h"

namespace cfatool {

/// Frames of the mosaic's size and depth: RGB, DC and sharpen gain.
struct OutputFrames {
    cfa::FramePtr rgb, dc, gain;
    explicit OutputFrames(const FRAME *raw)
        : rgb(cfa::plane_like(raw, FRAME_TYPE_IMG, 3, raw->bit_depth)),
          dc(cfa::plane_like(raw, FRAME_TYPE_IMG, 1, raw->bit_depth)),
          gain(cfa::plane_like(raw, FRAME_TYPE_IMG, 1, raw->bit_depth)) {}
};

} // namespace cfatool
