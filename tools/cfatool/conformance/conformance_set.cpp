// The cases of the conformance set. Together they show every single fault of the model's arithmetic that any
// input can show (tests/mutation); those first in the list show most.
#include "tools/cfatool/conformance/conformance_set.h"

namespace cfatool {
namespace {

// Every correction, votes at green sites, no forced direction.
const std::string ALL_ON = "ymoire_enable=1 cmoire_enable=1 shpn_enable=1 rb_vt_enable=1 force_dir_enable=0";

// The edge weight alone pulls the colours, at full strength.
const std::string EDGE_ONLY = "cmoire_enable=1 force_dir_enable=0 cmoire_lumagain_enable=1 cmoire_strth=255 "
                              "cmoire_sat_y0=4095 cmoire_sat_y1=4095 cmoire_sat_slp0=0 cmoire_ptclr_y0=4095 "
                              "cmoire_ptclr_y1=4095 cmoire_ptclr_slp0=0 cmoire_pd_y0=0 cmoire_pd_y1=0 "
                              "cmoire_pd_slp0=0 cmoire_edge_y0=0 cmoire_edge_y1=4095";

// Curves whose slope leads away from their limit: weights leave their range.
const std::string STEEP_LUMA =
    "ymoire_enable=1 ymoire_detail_low=511 ymoire_detail_high=0 ymoire_detail_th=0 "
    "ymoire_detail_slope=16383 ymoire_edge_low=511 ymoire_edge_high=0 "
    "ymoire_edge_slope=16383";
const std::string STEEP_PHASE = "cmoire_enable=1 cmoire_pd_y0=4095 cmoire_pd_y1=0 cmoire_pd_slp0=131071 "
                                "cmoire_edge_y0=0";

} // namespace

const std::vector<ConformanceCase> &conformance_cases() {
    using enum RegisterSet;
    // clang-format off
    static const std::vector<ConformanceCase> CASES = {
        // name, what it adds; chart, width, height, pattern id, bits, registers, seed, settings
        {"all_on", "the bulk: neighbours, signs, shifts, roundings, limits and site colours of every stage",
         "patchwork", 44, 36, 2, 12, everything, 35, ALL_ON + " shpn_gain_value=37 ymoire_ref_maxg_only=0 cmoire_protclr3_enable=1 vw_thd=300 shpn_core_value=9 shpn_min_gain=600 shpn_max_gain=1900 cmoire_strth=201"},
        {"drawn_id2_a", "thresholds and weights away from their resets",
         "patchwork", 44, 36, 2, 12, drawn, 11, ALL_ON + " shpn_gain_value=37 ymoire_ref_maxg_only=0 cmoire_protclr3_enable=1 rbsig_luma_thd=0 vw_thd=300 edgee_thd=20 edgee_thd2=20 shpn_core_value=9 cmoire_strth=201 ymoire_np=3"},
        {"drawn_id2_b", "votes and tolerances; hue and saturation curves",
         "patchwork", 48, 36, 2, 12, drawn, 15, ALL_ON + " shpn_gain_value=37 ymoire_ref_maxg_only=0 edge_tol=300 shpn_core_value=9 cmoire_strth=201 ymoire_np=3"},
        {"4x4_pattern_id15", "sites beyond the four codes; register widths",
         "fabric", 26, 20, 15, 12, all, 150015, ALL_ON + " edge_tol=389 gsig_tol=90 rbsig_tol=28 ghp_thd=65535"},
        {"31_bits_steep", "products of samples that wrap; limits of samples",
         "texture", 25, 15, 3, 31, all, 190304, ALL_ON + " edge_tol=195 gsig_tol=60 rbsig_tol=58 ymoire_np=1"},
        {"placeholder_id6", "pattern ids 4 to 7: codes that no stage knows; protected hues",
         "protected-hues", 44, 40, 6, 31, drawn, 790135, ALL_ON + " shpn_core_value=56 shpn_min_gain=651 shpn_max_gain=3090 ghp_thd=65535"},
        {"all_id1_a", "forced direction; upper bits of the sharpening table; limits of the edge spread",
         "scene", 36, 15, 1, 12, all, 150226, ""},
        {"steep_phase_id0", "negative edge weights; a phase weight beyond 12 bits",
         "patchwork", 49, 21, 0, 12, all, 650098, STEEP_PHASE + " cmoire_edge_y1=3027 cmoire_edge_slp0=-2469"},
        {"drawn_id2_c", "exact ties at the limits of activity and tolerance",
         "patchwork", 40, 36, 2, 12, drawn, 19, ALL_ON + " shpn_gain_value=37 cmoire_protclr3_enable=1 rbsig_luma_thd=0 edge_tol=300 shpn_core_value=9 shpn_min_gain=600 shpn_max_gain=1900 cmoire_pd_x0=20 cmoire_edge_x0=5"},
        {"31_bits_id2", "weights of detail and sharpening that wrap; green left as it is",
         "patchwork", 26, 18, 2, 31, all, 190301, ""},
        {"all_id0", "moire weights that wrap; the third protected hue; left border of the edge maximum",
         "scene", 20, 29, 0, 12, all, 150232, ALL_ON + " ymoire_np=22 ghp_thd=65535 cmoire_protclr1_enable=1 cmoire_protclr2_enable=1 cmoire_protclr3_enable=1"},
        {"steep_phase_13_bits", "directional sums one step from their shift; a luma gain at its limit",
         "texture", 28, 38, 2, 13, everything, 650184, STEEP_PHASE + " cmoire_edge_y1=0 cmoire_edge_slp0=-7976"},
        {"steep_luma_id0", "luma-moire weights whose product wraps; forced direction 3",
         "zone-plate", 11, 8, 0, 12, drawn, 350080, STEEP_LUMA + " ymoire_edge_th=0"},
        {"13_bits_no_moire", "values just beyond 12 bits that nothing cuts: blend, luma",
         "protected-hues", 36, 30, 2, 13, defaults, 650158, "ymoire_enable=0 cmoire_enable=0 shpn_enable=1 shpn_core_value=16 shpn_gain_value=40"},
        {"31_bits_narrow", "a green ratio that wraps; hue of grey",
         "texture", 5, 14, 3, 31, some, 517838, "force_dir_enable=0 force_dir_sel=1 ghp_thd=65535"},
        {"4x4_pattern_id8", "activity at its limit; a level at its limit in the detail curve",
         "patchwork", 26, 25, 8, 31, drawn, 190010, ALL_ON + " rbsig_luma_thd=0 edgee_thd=12 edgee_thd2=23 sige_thd=2616 cmoire_pd_x0=155 cmoire_edge_x0=126"},
        {"all_id1_b", "largest activity exactly at the sharpening limit",
         "scene", 35, 21, 1, 12, all, 150152, ""},
        {"steep_luma_4_columns", "four columns; curve levels that are equal",
         "scene", 4, 19, 2, 12, drawn, 350301, STEEP_LUMA + " ymoire_edge_th=8"},
        {"30_bits_id3", "sharpening detail at its limit",
         "scene", 15, 6, 3, 30, some, 190321, ALL_ON + " cmoire_pd_x0=157 cmoire_edge_x0=54 shpn_core_value=53 shpn_min_gain=242 shpn_max_gain=3419"},
        {"three_rows", "three rows: the rows above the first of the edge maximum",
         "patchwork", 38, 3, 1, 12, all, 150007, ALL_ON},
        {"edge_only_id3", "a directional spread half a step below rounding",
         "ramp", 30, 7, 3, 12, some, 452355, EDGE_ONLY + " cmoire_edge_x0=123 cmoire_edge_slp0=131071"},
        {"edge_only_id1", "a luma gain half a step below rounding",
         "ramp", 27, 9, 1, 12, some, 470612, EDGE_ONLY + " cmoire_edge_x0=815 cmoire_edge_slp0=131071"},
        {"31_bits_id3", "colour lumas that wrap",
         "scene", 9, 30, 3, 31, drawn, 190006, ""},
        {"single_steps", "a flat field with single steps: a green range of 0 and a gradient of 1",
         "texture", 38, 12, 2, 12, defaults, 350526, "ymoire_enable=1 force_dir_enable=0 ymoire_np=0 ymoire_ref_maxg_only=1 ymoire_detail_low=256 ymoire_lut_slope=64"},
        {"31_bits_id0", "colour-distance weights that wrap",
         "patchwork", 18, 33, 0, 31, all, 190174, ""},
        {"drawn_id1", "variance exactly at its lead",
         "patchwork", 40, 40, 1, 12, drawn, 42, ALL_ON + " shpn_gain_value=37 edgee_thd=20 edgee_thd2=20 edge_tol=300 shpn_min_gain=600 shpn_max_gain=1900 cmoire_strth=201 ymoire_np=3"},
        {"bypass", "form: the block disabled",
         "scene", 40, 30, 0, 12, bypass, 1, ""},
        {"smallest", "form: 4 x 3",
         "noise", 4, 3, 0, 12, everything, 2, ""},
        {"8_bits", "form: 8 bits; the smallest luma of the gain, one off",
         "scene", 48, 36, 2, 8, everything, 3, ""},
        {"wide", "form: wider than a vector of the kernels",
         "fabric", 259, 5, 3, 12, everything, 4, ""},
        {"16_bits", "form: 16 bits",
         "scene", 48, 36, 1, 16, everything, 5, ""},
        {"20_bits", "form: 20 bits",
         "patchwork", 37, 29, 2, 20, some, 6, "ymoire_enable=1 cmoire_enable=1 shpn_enable=1 shpn_gain_value=40"},
    };
    // clang-format on
    return CASES;
}

} // namespace cfatool
