#include "cmodel/cfa/src/lines/conditions.h"

#include "cmodel/cfa/src/kit/debug_image.h"
#include "cmodel/cfa/src/kit/in_force.h"
#include "cmodel/cfa/src/kit/register_groups.h"
#include "cmodel/cfa/src/lines/debug_rows.h"
#include "cmodel/cfa/src/planes.h"

namespace cfa {

const char *cfa_lines_excludes(uint32_t width, uint32_t height) {
    // Rows are split by column parity because only two colours meet in a row of
    // a 2 x 2 pattern, one per parity.
    if (pattern_id() > 3)
        return "a 4 x 4 pattern";
    // The engine writes all debug images side by side.
    if (debug_images_wanted() && !debug_rows_fit())
        return "debug images that cannot be open at once";
    // A single reflection must stay inside the picture, as for the model: three
    // columns and two rows reach over.
    if (width < 4 || height < 3)
        return "a picture below 4 x 3";
    return nullptr;
}

namespace {

// Whether the curves of the colour-moire weights are read: for the removal, or because somebody looks.
bool weighs_color() {
    const PlaneTaker *const taker = in_force().planes;
    bool weighs = registers().reg_cfa_cmoire_enable == 1;
    for (const char *weight : {"cdist_wt", "edge_wt", "pd_wt"})
        weighs |= taker != nullptr && taker->wants(*find_plane(weight));
    return weighs;
}

} // namespace

bool cfa_lines_need_wide_rows(uint32_t all) {
    // Between its levels a curve stays within 12 bits; a slope against them leads out.
    return all > CFA_LINES_MAX_NARROW_SAMPLE || (weighs_color() && color_moire_curves().contradict()) ||
           (registers().reg_cfa_ymoire_enable == 1 && luma_moire_curves().contradict());
}

} // namespace cfa
