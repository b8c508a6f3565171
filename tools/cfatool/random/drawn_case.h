// A picture and registers drawn from a seed: what the engine is held against the model on.
#pragma once

#include <cstdint>

#include "cmodel/cfa/src/reg_parse/cfa_reg.h"
#include "cmodel/cmodel_top/src/reg_parse/cmodel_top_reg.h"
#include "cmodel/common/frame.h"

namespace cfatool {

struct PictureSize {
    int width;
    int height;
};

/// Random sizes from 4 x 3 up: mostly small, some around the widths at which a half-row fills its vectors.
PictureSize small_size(uint32_t seed);
/// 200 x 100 to 700 x 500, and some very wide or tall.
PictureSize large_size(uint32_t seed);

/// Draws both register blocks from the seed: a pattern id of 0 to 3, and values over the whole range of every
/// field, small ones and the ends among them. In one of three pictures slopes may contradict their levels.
void draw_registers(uint32_t seed, cfa::CfaReg &block, cfa::CmodelTopReg &top);

/// A mosaic of 1 to 16 bits from the seed, half of them 12. Its bit_depth is that of a file.
cfa::FramePtr draw_mosaic(uint32_t seed, PictureSize size);

/// A small picture of strong contrasts, and registers for limits that random ones seldom meet: weights and
/// details one step from their largest, odd slopes, variances at the change of their unit.
cfa::FramePtr draw_at_limits(uint32_t seed, cfa::CfaReg &block, cfa::CmodelTopReg &top);

} // namespace cfatool
