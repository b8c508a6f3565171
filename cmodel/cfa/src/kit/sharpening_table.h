// The table registers of the green sharpening, as one table.
#pragma once

#include <array>
#include <cstdint>

#include "cmodel/cfa/src/reg_parse/cfa_reg.h"

/// reg_cfa_ghp_lut00 to 31, 0..63 each: weights in units of 1/32.
inline std::array<int32_t, 32> sharpening_table() {
    const auto &r = cfa_reg.hw;
    return {r.reg_cfa_ghp_lut00, r.reg_cfa_ghp_lut01, r.reg_cfa_ghp_lut02, r.reg_cfa_ghp_lut03,
            r.reg_cfa_ghp_lut04, r.reg_cfa_ghp_lut05, r.reg_cfa_ghp_lut06, r.reg_cfa_ghp_lut07,
            r.reg_cfa_ghp_lut08, r.reg_cfa_ghp_lut09, r.reg_cfa_ghp_lut10, r.reg_cfa_ghp_lut11,
            r.reg_cfa_ghp_lut12, r.reg_cfa_ghp_lut13, r.reg_cfa_ghp_lut14, r.reg_cfa_ghp_lut15,
            r.reg_cfa_ghp_lut16, r.reg_cfa_ghp_lut17, r.reg_cfa_ghp_lut18, r.reg_cfa_ghp_lut19,
            r.reg_cfa_ghp_lut20, r.reg_cfa_ghp_lut21, r.reg_cfa_ghp_lut22, r.reg_cfa_ghp_lut23,
            r.reg_cfa_ghp_lut24, r.reg_cfa_ghp_lut25, r.reg_cfa_ghp_lut26, r.reg_cfa_ghp_lut27,
            r.reg_cfa_ghp_lut28, r.reg_cfa_ghp_lut29, r.reg_cfa_ghp_lut30, r.reg_cfa_ghp_lut31};
}
