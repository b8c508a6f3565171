// The line engine on frames: rows from one frame, rows to three.
#pragma once

#include "cmodel/common/frame.h"

namespace cfa {

/// The enabled block through line buffers: the same arguments and bytes as cfa_model. Returns false, and
/// writes nothing, where the conditions (conditions.h) do not hold. threads: 1 or 2.
bool cfa_lines(const FRAME *raw, FRAME *out_rgb, FRAME *out_dc, FRAME *out_sg, int threads = 1);

} // namespace cfa
