// The one list of the block's planes: what each holds, which stage makes it, how its debug image shows it.
#pragma once

#include <span>

#include "cmodel/common/frame.h"

namespace cfa {

/// What a debug image shows of a sample.
enum class Shown {
    magnitude,  // |sample|, limited to the depth of the image
    low_bits,   // the low bits as they are
    signed_map, // a quarter of |sample|, at most 255: red above zero, green below
};

struct DebugImage {
    const char *file;
    Shown shown;
    int channel;        // 0 to 2, or 3 for all three
    uint32_t bit_depth; // of the image
};

struct PlaneInfo {
    const char *name;
    const char *stage;  // the function that makes it
    const char *format; // of its samples at regular input
    const char *shows;  // one line
    DebugImage image;
};

/// All planes that have a debug image, in pipeline order: each behind everything it is computed from.
std::span<const PlaneInfo> planes();

/// Writes the debug image of a plane that a stage has made, if debug images are asked for.
/// REQUIRES the name to be in the list.
void write_debug_image(const char *name, const FRAME *plane);

} // namespace cfa
