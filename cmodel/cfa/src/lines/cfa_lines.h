// The line engine as the rest of the block sees it.
#pragma once

#include <cstddef>
#include <cstdint>

#include "cmodel/common/frame.h"

/// The largest sample whose sums fit the 16 bits of the line buffers: twelve bits. A mosaic of any header may
/// hold larger ones, and its missing samples are negative, so every sample is tested, never the header alone.
constexpr uint32_t CFA_LINES_MAX_SAMPLE = 4095;

/// Null when the line engine serves the registers as they stand on a picture of this size; else what is
/// against it.
const char *cfa_lines_excludes(uint32_t width, uint32_t height);

/// Whether all samples are within the bound.
bool cfa_lines_take_samples(const uint32_t *samples, size_t count);

/// The enabled block through line buffers: the same arguments and bytes as cfa_model. Returns false, and
/// writes nothing, where the conditions above do not hold.
bool cfa_lines(const FRAME *raw, FRAME *out_rgb, FRAME *out_dc, FRAME *out_sg);
