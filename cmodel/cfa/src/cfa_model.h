// The reference form of the enabled block.
#pragma once

#include "cmodel/common/frame.h"

namespace cfa {

/// The enabled block over whole planes, for every input and pattern id, with debug images where asked for.
/// Arguments as for cfa_hw. REQUIRES width >= 4 and height >= 3.
void cfa_model(const FRAME *raw, FRAME *out_rgb, FRAME *out_dc, FRAME *out_sg);

} // namespace cfa
