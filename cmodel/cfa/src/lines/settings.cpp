#include "cmodel/cfa/src/lines/settings.h"

#include <algorithm>
#include <limits>

#include "cmodel/cfa/src/kit/in_force.h"
#include "cmodel/cfa/src/kit/register_groups.h"
#include "cmodel/cfa/src/planes.h"
#include "cmodel/common/color_id.h"

namespace cfa::CFA_ROWS {

namespace {

Curve curve(const CurveRegisters &c) {
    using Any = std::numeric_limits<int32_t>;
    if (WIDE)
        return {c.x0, c.y0, c.slope, c.y0 > c.y1 ? c.y1 : Any::min(), c.y0 > c.y1 ? Any::max() : c.y1};
    return {c.x0, c.y0, c.slope, std::min(c.y0, c.y1), std::max(c.y0, c.y1)};
}

constexpr Sample all_ones(bool condition) {
    return condition ? -1 : 0;
}

SharpeningTable packed_sharpening_table() {
    SharpeningTable table{};
    for (int k = 0; k < 16; ++k)
        table.word[k] = static_cast<Sample>(sharpening_entry(2 * k) | sharpening_entry(2 * k + 1) << 8);
    table.activity_limit = static_cast<Sample>(
        std::min<int32_t>(registers().reg_cfa_ghp_thd, std::numeric_limits<Sample>::max()));
    return table;
}

void read_direction(EngineSettings &s) {
    const auto &r = registers();
    s.at_red_blue = {r.reg_cfa_edgee_thd, r.reg_cfa_edge_tol, r.reg_cfa_sige_thd, r.reg_cfa_gsig_tol, 0};
    const int32_t luma = r.reg_cfa_rb_vt_enable == 1 ? r.reg_cfa_rbsig_luma_thd : 32767;
    s.at_green = {r.reg_cfa_edgee_thd2, 0, 0, r.reg_cfa_rbsig_tol, luma};
    s.strong = static_cast<Sample>(r.reg_cfa_vw_thd);
    s.forces_direction = r.reg_cfa_force_dir_enable == 1;
    s.decides_direction = !s.forces_direction;
    const int32_t forced = r.reg_cfa_force_dir_sel;
    s.forced_direction = forced == 0 ? 0 : forced == 1 ? 1 : -1;
    s.uses_variance = s.decides_direction || forced == 0;
}

void read_luma_moire(EngineSettings &s) {
    const auto &r = registers();
    s.luma_moire = r.reg_cfa_ymoire_enable == 1;
    s.luma.all_colors = r.reg_cfa_ymoire_ref_maxg_only != 1;
    s.green_ranges = s.luma_moire;
    s.color_ranges = s.luma_moire && s.luma.all_colors;
    s.luma.noise = r.reg_cfa_ymoire_np;
    const LumaMoireCurves curves = luma_moire_curves();
    s.luma.detail = curve(curves.detail);
    s.luma.edge = curve(curves.edge);
    s.luma.output = curve(curves.output);
    s.luma.lpf_w = static_cast<Sample>(r.reg_cfa_ymoire_lpf_w);
    s.luma.dc_w = static_cast<Sample>(r.reg_cfa_ymoire_dc_w);
}

DirectionalKernels directional_kernels() {
    const auto [d0, d45] = directional_coefficients();
    const auto c = [](int32_t v) { return static_cast<Sample>(v); };
    DirectionalKernels k{};
    k.line0 = c(d0[0]);
    k.line1 = c(d0[1]);
    k.line2 = c(d0[2]);
    k.line_constant = 20475 * (d0[1] + d0[2]);
    const auto shared = [&](int32_t v) { return c(WIDE ? v : 2 * v); };
    const auto swapped = [&](int32_t a, int32_t b) { return SwappedPair{c(b), c(a + b), c(a - b)}; };
    k.c0 = shared(d45[0]);
    k.c3 = shared(d45[3]);
    k.c6 = shared(d45[6]);
    k.c15 = swapped(d45[1], d45[5]);
    k.c28 = swapped(d45[2], d45[8]);
    k.c47 = swapped(d45[4], d45[7]);
    return k;
}

void read_color_moire(EngineSettings &s) {
    const auto &r = registers();
    s.color_moire = r.reg_cfa_cmoire_enable == 1;
    s.weighs_color = s.color_moire;
    const ColorMoireCurves curves = color_moire_curves();
    s.color_distance.saturation = curve(curves.saturation);
    s.color_distance.hue = curve(curves.hue);
    const auto hues = protected_hues();
    for (size_t k = 0; k < hues.size(); ++k) {
        // A hue that is not protected is raised beyond the 4095 that the search for the nearest starts from.
        s.color_distance.protected_hue[k] = static_cast<Sample>(hues[k].enabled ? hues[k].hue : 0);
        s.color_distance.out_of_reach[k] = hues[k].enabled ? 0 : 16384;
    }
    s.directional = directional_kernels();
    s.edge.luma_target = r.reg_cfa_cmoire_lumagain_enable == 1 ? r.reg_cfa_cmoire_lumatg : 0;
    s.edge.edge = curve(curves.edge);
    s.phase = curve(curves.phase);
    s.strength = static_cast<Sample>(r.reg_cfa_cmoire_strth);
}

void read_sharpen(EngineSettings &s) {
    const auto &r = registers();
    const int32_t threshold = r.reg_cfa_shpn_core_value;
    s.sharpens = r.reg_cfa_shpn_enable == 1;
    s.sharpen.remove_spikes = all_ones(r.reg_cfa_shpn_pre_proc_enable == 1);
    s.sharpen.threshold_hf = static_cast<Sample>(threshold);
    s.sharpen.threshold_mf = static_cast<Sample>((threshold * r.reg_cfa_shpn_mf_core_gain) >> 8);
    s.sharpen.weight_hf = r.reg_cfa_shpn_hf_blend_wgt;
    s.sharpen.weight_mf = r.reg_cfa_shpn_mf_blend_wgt;
    s.sharpen.min_y = r.reg_cfa_shpn_min_y;
    s.sharpen.min_gain = r.reg_cfa_shpn_min_gain;
    s.sharpen.max_gain = r.reg_cfa_shpn_max_gain;
    s.sharpen.gain = static_cast<Sample>(r.reg_cfa_shpn_gain_value);
}

} // namespace

EngineSettings read_engine_settings() {
    EngineSettings s{};
    const uint32_t id = pattern_id();
    const auto is_green = [](uint32_t code) { return code == CODE_GB || code == CODE_GR; };
    s.first_color_parity = is_green(CM_GET_COLOR_ID(0, 0, id)) ? 1 : 0;
    s.first_color = CM_GET_COLOR_ID(0, s.first_color_parity, id) == CODE_R ? 0 : 1;
    s.sharpening = packed_sharpening_table();
    read_direction(s);
    read_luma_moire(s);
    read_color_moire(s);
    read_sharpen(s);
    return s;
}

bool wanted(const RowTaker &taker, const char *plane) {
    const PlaneInfo &info = *find_plane(plane);
    return is_made(info) && taker.wants(info);
}

void compute_for(const RowTaker &taker, EngineSettings &s) {
    const auto any = [&](const auto &...names) { return (wanted(taker, names) || ...); };
    const bool ranges = any("MaxRGB", "MinRGB");
    s.green_ranges |= ranges;
    s.color_ranges |= ranges || any("MaxRGB_lpf", "MinRGB_lpf");
    s.weighs_color |= any("cdist_wt", "edge_wt", "pd_wt");
    s.decides_direction |= any("DirInfo");
    s.uses_variance |= s.decides_direction || any("AHDiff", "AVDiff", "CHDiff", "CVDiff", "SigH", "SigV");
}

} // namespace cfa::CFA_ROWS
