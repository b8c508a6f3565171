// The block: a raw Bayer mosaic in; the RGB picture, the DC image and the sharpen-gain map out.
#pragma once

#include "cmodel/common/frame.h"

/// Runs the block with the registers in cfa_reg and cmodel_top_reg. All frames have the raw frame's size:
///   raw      1 channel, u12 (any depth is taken)
///   out_rgb  3 channels, u12
///   out_dc   1 channel, u12
///   out_sg   1 channel, u12, 1024 is a gain of 1.0
/// The enabled block takes width >= 4 and height >= 3 and ends the process with
/// one line and status 1 otherwise.
void cfa_hw(const FRAME *raw, FRAME *out_rgb, FRAME *out_dc, FRAME *out_sg);

/// The disabled block: the mosaic in all three channels, DC 0, sharpen gain 1024. Takes any size.
void cfa_bypass(const FRAME *raw, FRAME *out_rgb, FRAME *out_dc, FRAME *out_sg);

namespace cfa {

/// cfa_hw with the registers in force, for who can take an error: throws Error and std::bad_alloc.
void run_block(const FRAME *raw, FRAME *out_rgb, FRAME *out_dc, FRAME *out_sg);

/// Throws Error for a picture that the enabled block does not take.
void refuse_small_picture(uint32_t width, uint32_t height);

} // namespace cfa
