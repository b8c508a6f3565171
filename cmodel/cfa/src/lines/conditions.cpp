#include "cmodel/cfa/src/lines/conditions.h"

#include "cmodel/cfa/src/kit/debug_image.h"
#include "cmodel/cfa/src/kit/in_force.h"
#include "cmodel/cfa/src/kit/register_groups.h"

namespace cfa {

const char *cfa_lines_excludes(uint32_t width, uint32_t height) {
    // Rows are split by column parity because only two colours meet in a row of
    // a 2 x 2 pattern, one per parity.
    if (pattern_id() > 3)
        return "a 4 x 4 pattern";
    // A debug image shows a whole plane; the engine has none.
    if (debug_images_wanted())
        return "debug images";
    if (in_force().planes != nullptr)
        return "planes that are kept";
    // A single reflection must stay inside the picture, as for the model: three
    // columns and two rows reach over.
    if (width < 4 || height < 3)
        return "a picture below 4 x 3";
    return nullptr;
}

bool cfa_lines_need_wide_rows(uint32_t all) {
    // Between its levels a curve stays within 12 bits; a slope against them leads out.
    return all > CFA_LINES_MAX_NARROW_SAMPLE ||
           (registers().reg_cfa_cmoire_enable == 1 && color_moire_curves().contradict()) ||
           (registers().reg_cfa_ymoire_enable == 1 && luma_moire_curves().contradict());
}

} // namespace cfa
