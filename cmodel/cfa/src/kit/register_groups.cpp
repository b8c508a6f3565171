#include "cmodel/cfa/src/kit/register_groups.h"

#include "cmodel/cfa/src/kit/in_force.h"
#include <cassert>

namespace cfa {

uint32_t pattern_id() {
    return static_cast<uint32_t>(int32_t{in_force().top->hw.reg_img_bayerid});
}

LumaMoireCurves luma_moire_curves() {
    const auto &r = registers();
    return {
        .detail = {.x0 = r.reg_cfa_ymoire_detail_th,
                   .y0 = r.reg_cfa_ymoire_detail_low,
                   .slope = r.reg_cfa_ymoire_detail_slope,
                   .y1 = r.reg_cfa_ymoire_detail_high},
        .edge = {.x0 = r.reg_cfa_ymoire_edge_th,
                 .y0 = r.reg_cfa_ymoire_edge_low,
                 .slope = r.reg_cfa_ymoire_edge_slope,
                 .y1 = r.reg_cfa_ymoire_edge_high},
        .output = {.x0 = r.reg_cfa_ymoire_lut_th,
                   .y0 = r.reg_cfa_ymoire_lut_low,
                   .slope = r.reg_cfa_ymoire_lut_slope,
                   .y1 = r.reg_cfa_ymoire_lut_high},
    };
}

ColorMoireCurves color_moire_curves() {
    const auto &r = registers();
    return {
        .saturation = {.x0 = r.reg_cfa_cmoire_sat_x0,
                       .y0 = r.reg_cfa_cmoire_sat_y0,
                       .slope = r.reg_cfa_cmoire_sat_slp0,
                       .y1 = r.reg_cfa_cmoire_sat_y1},
        .hue = {.x0 = r.reg_cfa_cmoire_ptclr_x0,
                .y0 = r.reg_cfa_cmoire_ptclr_y0,
                .slope = r.reg_cfa_cmoire_ptclr_slp0,
                .y1 = r.reg_cfa_cmoire_ptclr_y1},
        .phase = {.x0 = r.reg_cfa_cmoire_pd_x0,
                  .y0 = r.reg_cfa_cmoire_pd_y0,
                  .slope = r.reg_cfa_cmoire_pd_slp0,
                  .y1 = r.reg_cfa_cmoire_pd_y1},
        .edge = {.x0 = r.reg_cfa_cmoire_edge_x0,
                 .y0 = r.reg_cfa_cmoire_edge_y0,
                 .slope = r.reg_cfa_cmoire_edge_slp0,
                 .y1 = r.reg_cfa_cmoire_edge_y1},
    };
}

std::array<ProtectedHue, 3> protected_hues() {
    const auto &r = registers();
    return {{{r.reg_cfa_cmoire_protclr1_enable == 1, r.reg_cfa_cmoire_protclr1},
             {r.reg_cfa_cmoire_protclr2_enable == 1, r.reg_cfa_cmoire_protclr2},
             {r.reg_cfa_cmoire_protclr3_enable == 1, r.reg_cfa_cmoire_protclr3}}};
}

DirectionalCoefficients directional_coefficients() {
    const auto &r = registers();
    return {
        .straight = {r.reg_cfa_cmoire_edge_d0c0, r.reg_cfa_cmoire_edge_d0c1, r.reg_cfa_cmoire_edge_d0c2},
        .diagonal = {r.reg_cfa_cmoire_edge_d45c0, r.reg_cfa_cmoire_edge_d45c1, r.reg_cfa_cmoire_edge_d45c2,
                     r.reg_cfa_cmoire_edge_d45c3, r.reg_cfa_cmoire_edge_d45c4, r.reg_cfa_cmoire_edge_d45c5,
                     r.reg_cfa_cmoire_edge_d45c6, r.reg_cfa_cmoire_edge_d45c7, r.reg_cfa_cmoire_edge_d45c8}};
}

int32_t sharpening_entry(int index) {
    static const RegisterInfo *const ENTRIES = cfa_reg_hw_table().find("reg_cfa_ghp_lut00"); // 32 in a row
    assert(0 <= index && index < 32);
    return ENTRIES[index].read(registers());
}

} // namespace cfa
