// The one list of the block's planes: what each holds, which stage makes it, which read it, how its debug
// image shows it.
#pragma once

#include <span>

#include "cmodel/cfa/src/lines/rows.h"
#include "cmodel/common/frame.h"

namespace cfa {

/// What a debug image shows of a sample.
enum class Shown {
    nothing,    // the plane has no debug image
    magnitude,  // |sample|, limited to the depth of the image
    low_bits,   // the low bits as they are
    signed_map, // a quarter of |sample|, at most 255: red above zero, green below
    at_green,   // magnitude at green sites, 0 at the others
};

/// The feature without which a plane is not made, or an image not written.
enum class Feature { always, luma_moire, color_moire, sharpening };

struct DebugImage {
    const char *file = "";
    Shown shown = Shown::nothing;
    int channel = 0;                // 0 to 2, or 3 for all three
    uint32_t bit_depth = 0;         // of the image
    const char *note = "";          // what else an onlooker must know
    const char *stage = "";         // that writes it, where that is another than the plane's
    Feature with = Feature::always; // beside that of the plane
};

struct PlaneInfo {
    const char *name;
    const char *stage;   // the function that makes it
    int channels;        // 1, or 3 interleaved: red, green, blue
    const char *format;  // of its samples at regular input: u12, s13, 0..32767
    const char *readers; // the functions that read it, a blank between; "" for an output
    const char *shows;   // one line
    DebugImage image;
    Feature with = Feature::always;
};

/// All planes between the input and the outputs, and the outputs, in pipeline order: each behind everything
/// it is computed from.
std::span<const PlaneInfo> planes();

/// The plane of this name, or null.
const PlaneInfo *find_plane(const char *name);

/// Whether a run with the registers in force makes the plane, and whether it shows it if images are wanted.
bool is_made(const PlaneInfo &plane);
bool has_image(const PlaneInfo &plane);

/// Gets planes as they are made, all channels: whole ones from the model, rows from the line engine.
class PlaneTaker : public RowTaker {
  public:
    virtual void take(const PlaneInfo &info, const FRAME *plane) = 0;
};

/// What a stage does with a plane that is complete: writes its debug image, if debug images are asked for,
/// and gives it to the taker in force, if there is one. REQUIRES the name to be in the list.
void publish_plane(const char *name, const FRAME *plane);

// The two halves, for planes whose image is written before they are complete, or only with a feature on.
void write_debug_image(const char *name, const FRAME *plane);
void give_plane(const char *name, const FRAME *plane);

} // namespace cfa
