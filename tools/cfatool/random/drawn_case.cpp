#include "tools/cfatool/random/drawn_case.h"

#include <algorithm>

#include "tools/cfatool/base/integer_math.h"
#include "tools/cfatool/random/noise.h"
#include "tools/cfatool/random/patchwork.h"
#include "tools/cfatool/random/values.h"

namespace cfatool {
namespace {

// What a seed is used for.
enum Purpose : uint32_t { SIZE = 1, REGISTERS, MOSAIC, LIMITS };

void reset(cfa::CfaReg &block, cfa::CmodelTopReg &top) {
    cfa::register_reset(block.hw, cfa::cfa_reg_hw_table(), nullptr);
    cfa::register_reset(block.sw, cfa::cfa_reg_sw_table(), nullptr);
    cfa::register_reset(top.hw, cfa::cmodel_top_reg_hw_table(), nullptr);
    cfa::register_reset(top.sw, cfa::cmodel_top_reg_sw_table(), nullptr);
}

// Twelve bits half of the time, beyond them a quarter, any number from one on.
int draw_depth(Noise &noise) {
    const int kind = noise.in(0, 3);
    return kind < 2 ? 12 : kind == 2 ? noise.in(13, 16) : noise.in(1, 16);
}

cfa::FramePtr new_mosaic(int width, int height, int bits) {
    return cfa::FramePtr(cfa::new_frame(FRAME_TYPE_IMG, FRAME_FMT_MONO, static_cast<uint32_t>(width),
                                        static_cast<uint32_t>(height), 1, static_cast<uint32_t>(bits)));
}

struct Contrast {
    int32_t largest = 4095;  // of the samples
    bool two_valued = false; // 0 or the largest, nothing between
};

Contrast draw_limits(Noise &noise, uint32_t kind, cfa::CfaRegHw &hw) {
    const auto set = [&hw](const char *key, int32_t v) {
        cfa::cfa_reg_hw_table().find((std::string("reg_cfa_") + key).c_str())->store(hw, v);
    };
    switch (kind) {
    case 0: // the phase difference limited to 12 bits, before a curve whose knee lies there
        set("cmoire_sat_y1", 4095), set("cmoire_sat_slp0", 0);
        set("cmoire_ptclr_y0", 4095), set("cmoire_ptclr_slp0", 0);
        set("cmoire_pd_x0", noise.in(3900, 4095)), set("cmoire_pd_slp0", 1024 * noise.in(1, 40));
        set("cmoire_edge_x0", noise.in(0, 2000));
        return {};
    case 1: // the sharpening detail limited to 12 bits
        set("shpn_enable", 1), set("shpn_gain_value", noise.in(1, 30));
        set("shpn_hf_blend_wgt", 255), set("shpn_mf_blend_wgt", 255), set("shpn_core_value", 0);
        set("cmoire_enable", 0);
        return {};
    case 2: // luma-moire curves: a knee one step below the largest detail, or no detail curve, an odd slope
        set("ymoire_enable", 1), set("ymoire_lpf_w", noise.in(0, 255)), set("ymoire_dc_w", noise.in(0, 255));
        set("ymoire_lut_high", 511), set("ymoire_lut_slope", 2 * noise.in(16, 64) + 1);
        set("ymoire_edge_th", 0), set("ymoire_edge_slope", 64 * noise.in(1, 4));
        if (noise.in(0, 1) != 0)
            set("ymoire_detail_th", 254), set("ymoire_detail_slope", 16383);
        else
            set("ymoire_detail_low", 256), set("ymoire_detail_slope", 0);
        return {4095, noise.in(0, 1) == 0};
    default: // blends of variances about 16384
        set("force_dir_enable", 1), set("cmoire_enable", 0);
        return {noise.in(500, 1600), false};
    }
}

} // namespace

PictureSize small_size(uint32_t seed) {
    Noise noise = noise_of(seed, SIZE);
    if (noise.in(0, 9) == 0) // whole vectors and blocks, and a little less or more
        return {64 * noise.in(1, 10) + noise.in(-5, 5), noise.in(3, 8)};
    const int width = 4 + noise.in(0, noise.in(0, 3) == 0 ? 90 : 24);
    return {width, 3 + noise.in(0, noise.in(0, 3) == 0 ? 40 : 16)};
}

PictureSize large_size(uint32_t seed) {
    Noise noise = noise_of(seed, SIZE);
    const int shape = noise.in(0, 9);
    if (shape == 0)
        return {16384 - noise.in(0, 3), noise.in(3, 20)};
    if (shape == 1)
        return {noise.in(4, 9), noise.in(2000, 9000)};
    const int width = noise.in(200, 700);
    return {width, noise.in(100, 500)};
}

void draw_registers(uint32_t seed, cfa::CfaReg &block, cfa::CmodelTopReg &top) {
    Noise noise = noise_of(seed, REGISTERS);
    reset(block, top);
    top.hw.reg_img_bayerid = noise.in(0, 3);
    const int mode = noise.in(0, 3); // 0: switches only; 1: some registers; else all
    uint64_t counter = 0;
    for (const cfa::RegisterInfo &info : cfa::cfa_reg_hw_table().registers) {
        const bool drawn = info.bits == 1 || mode >= 2 || (mode == 1 && noise.in(0, 3) == 0);
        const int32_t low = cfa::register_min(info.bits, info.is_signed);
        const int32_t high = cfa::register_max(info.bits, info.is_signed);
        const uint64_t random = random_bits(seed, counter++);
        if (drawn)
            info.store(block.hw, mode == 3 ? static_cast<int32_t>(drawn_value(random, low, high))
                                           : noise.in(low, high));
    }
    block.hw.reg_cfa_enable = 1;
    if (noise.in(0, 2) != 0)
        block.hw.reg_cfa_force_dir_enable = 0;
    if (noise.in(0, 2) != 0)
        let_slopes_agree(
            [&](const cfa::RegisterInfo &info) { return info.read(block.hw); },
            [&](const cfa::RegisterInfo &info, int64_t v) { info.store(block.hw, static_cast<int32_t>(v)); });
}

cfa::FramePtr draw_mosaic(uint32_t seed, PictureSize size) {
    Noise noise = noise_of(seed, MOSAIC);
    const int bits = draw_depth(noise);
    const int64_t max = (1 << bits) - 1;
    const auto tiles = noise.in(0, 3) == 0 ? Patchwork::Tiles::small : Patchwork::Tiles::whole;
    const Patchwork patchwork(static_cast<uint64_t>(noise.in(0, INT32_MAX)), size.width, size.height, max,
                              tiles, Patchwork::ALL_TEXTURES);
    cfa::FramePtr raw = new_mosaic(size.width, size.height, bits);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x)
            cfa::sample(raw.get(), y, x) =
                static_cast<uint32_t>(std::clamp<int64_t>(patchwork(y, x), 0, max));
    return raw;
}

cfa::FramePtr draw_at_limits(uint32_t seed, cfa::CfaReg &block, cfa::CmodelTopReg &top) {
    Noise noise = noise_of(seed, LIMITS);
    reset(block, top);
    const Contrast contrast = draw_limits(noise, seed % 4, block.hw);
    const int width = noise.in(20, 40), height = noise.in(12, 24);
    cfa::FramePtr raw = new_mosaic(width, height, 12);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const bool extreme = contrast.two_valued || noise.in(0, 3) == 0;
            cfa::sample(raw.get(), y, x) = static_cast<uint32_t>(extreme ? noise.in(0, 1) * contrast.largest
                                                                         : noise.in(0, contrast.largest));
        }
    return raw;
}

} // namespace cfatool
