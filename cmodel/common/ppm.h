// Pictures as files: binary PPM (P5 greyscale, P6 colour) with big-endian samples of 1 to 4 bytes.
#pragma once

#include "cmodel/common/frame.h"

/// Reads a P5 picture into a new single-channel frame of the given type, owned by the caller. Header errors
/// end the process with one line and status 1; missing samples become the end-of-file value, and a line on
/// standard error says how many there were.
FRAME *CM_ReadPPM5(const char *path, uint32_t type);

/// Writes a P6 picture: the three channels, or channel 0 three times. Returns 0; a write error ends the
/// process with one line and status 1.
int CM_WritePPM(const char *path, const FRAME *frame);

/// Writes a P5 picture of channel 0. Returns 0; a write error ends the process likewise.
int CM_WritePPM5(const char *path, const FRAME *frame);

namespace cfa {

// The two writers for who can take an Error.
void write_p6(const char *path, const FRAME *frame);
void write_p5(const char *path, const FRAME *frame);

} // namespace cfa
