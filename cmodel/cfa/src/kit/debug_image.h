// Debug images: any plane as a PPM picture in the debug folder.
#pragma once

#include <cstdint>
#include <string>

#include "cmodel/common/frame.h"

/// Whether stages write their debug images; set by the driver.
extern bool dump_dbg_img;

/// The debug folder, at most 1023 characters; set by the driver.
extern char dbg_path[1024];

/// Writes |sample| * gain, limited to 0..2^bit_depth - 1, of one channel (selector 0 to 2, P5) or
/// of all three (selector 3 on a three-channel frame, P6). Returns 0, or 1 after the line
/// "Error..." on standard output for any other selector. Kept: a selector beyond the frame's
/// channels reads that many samples further on.
int32_t dump_dbg_frame(const FRAME *frame, int32_t channel, uint32_t gain, uint32_t bit_depth,
                       const std::string &path);

namespace cfa {

/// Whether the run in force writes debug images.
bool debug_images_wanted();

/// dump_dbg_frame for who can take an Error. REQUIRES a selector of 0 to 3.
void dump_magnitudes(const FRAME *frame, int32_t channel, uint32_t gain, uint32_t bit_depth,
                     const std::string &path);

/// Writes a signed one-channel plane as an 8-bit P6 picture: a quarter of the magnitude, at most 255, in red
/// where the sample is positive and in green where it is negative.
void dump_signed_map(const FRAME *plane, const std::string &path);

/// dbg_path/name, cut at 1023 characters.
std::string debug_path_of(const char *name);

} // namespace cfa
