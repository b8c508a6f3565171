// Sharpen gain: a map of gains from the detail that the demosaic found beyond a plain low-pass of the mosaic.
#include <algorithm>

#include "cmodel/cfa/src/kit/fixed_point.h"
#include "cmodel/cfa/src/kit/in_force.h"
#include "cmodel/cfa/src/planes.h"
#include "cmodel/cfa/src/stages.h"
#include "log/log.h"

using namespace cfa;

namespace {

// Detail beyond a threshold; what lies within it is noise.
int32_t cored(int32_t v, int32_t threshold) {
    const int32_t beyond = std::max(magnitude(v) - threshold, 0);
    return v < 0 ? -beyond : beyond;
}

} // namespace

void sharpen_gain_main_proc(const FRAME *raw, FRAME *rgb_out, FRAME *sg_out) {
    if (registers().reg_cfa_shpn_enable == 1)
        sharpen_gain_proc(raw, rgb_out, sg_out);
    else
        sharpen_gain_bypass(sg_out);
}

void sharpen_gain_bypass(FRAME *sg_out) {
    std::fill_n(sg_out->data, static_cast<size_t>(sg_out->width) * sg_out->height * sg_out->channels, 1024u);
}

void sharpen_gain_proc(const FRAME *raw, FRAME *rgb_out, FRAME *sg_out) {
    const FramePtr bayer_luma = plane_like(raw, FRAME_TYPE_IMG, 1, 12);
    const FramePtr rgb_luma = plane_like(rgb_out, FRAME_TYPE_IMG, 1, 12);
    const FramePtr spike_removed = plane_like(rgb_out, FRAME_TYPE_IMG, 1, 12);
    const FramePtr HF = plane_like(rgb_out, FRAME_TYPE_IMG, 1, 12);
    const FramePtr lpf = plane_like(rgb_out, FRAME_TYPE_IMG, 1, 12);
    const FramePtr MF = plane_like(rgb_out, FRAME_TYPE_IMG, 1, 12);
    const FramePtr detail = plane_like(rgb_out, FRAME_TYPE_IMG, 1, 12);

    sg_get_bayer_luma(raw, bayer_luma.get());
    sg_get_rgb_luma(rgb_out, rgb_luma.get());
    sg_preprocess(bayer_luma.get(), spike_removed.get());
    sg_get_dalta_HF(rgb_luma.get(), spike_removed.get(), HF.get());
    sg_get_bayer_luma_lpf(bayer_luma.get(), lpf.get());
    sg_get_delta_MF(spike_removed.get(), lpf.get(), MF.get());
    sg_coring_proc(MF.get(), HF.get(), detail.get());
    get_sharpen_gain(rgb_luma.get(), detail.get(), sg_out);
    apply_sharpen_gain_rgb(rgb_out, detail.get());
}

void sg_coring_proc(const FRAME *MF, const FRAME *HF, FRAME *out) {
    const int32_t threshold_hf = registers().reg_cfa_shpn_core_value;
    const int32_t threshold_mf = (threshold_hf * registers().reg_cfa_shpn_mf_core_gain) >> 8;
    const int32_t weight_hf = registers().reg_cfa_shpn_hf_blend_wgt; // of 128
    const int32_t weight_mf = registers().reg_cfa_shpn_mf_blend_wgt;
    for (int y = 0; y < height_of(out); ++y) {
        for (int x = 0; x < width_of(out); ++x) {
            const int32_t mf = cored(value(MF, y, x), threshold_mf);
            const int32_t hf = cored(value(HF, y, x), threshold_hf);
            const int32_t s = mf * weight_mf + hf * weight_hf;
            const int32_t size = std::min(magnitude(s) >> 7, 4095);
            sample(out, y, x) = s < 0 ? -size : size;
        }
    }
    publish_plane("cored", out);
}

void get_sharpen_gain(const FRAME *rgb_luma, const FRAME *cored, FRAME *sg_out) {
    const int32_t min_y = registers().reg_cfa_shpn_min_y;
    const int32_t min_gain = registers().reg_cfa_shpn_min_gain;
    const int32_t max_gain = registers().reg_cfa_shpn_max_gain;
    for (int y = 0; y < height_of(sg_out); ++y) {
        for (int x = 0; x < width_of(sg_out); ++x) {
            const int32_t luma = std::max(value(rgb_luma, y, x), min_y);
            const int32_t gain = clip12(((value(cored, y, x) * get_inv(luma)) >> 5) + 1024); // Q10
            sample(sg_out, y, x) = std::min(std::max(gain, min_gain), max_gain);
        }
    }
}

void cfa::log_sharpening_strength(int32_t gain) {
    if (in_force().is_process)
        log_log(LOG_INFO, "cfa_hw", __LINE__, "reg_cfa_shpn_gain_value = %d", gain);
}

void apply_sharpen_gain_rgb(FRAME *rgb_out, const FRAME *cored) {
    const int32_t gain = registers().reg_cfa_shpn_gain_value; // of 32
    log_sharpening_strength(gain);
    for (int y = 0; y < height_of(rgb_out); ++y) {
        for (int x = 0; x < width_of(rgb_out); ++x) {
            const int32_t detail = value(cored, y, x);
            const int32_t size = (magnitude(detail) * gain + 16) / 32; // truncates toward zero
            const int32_t change = detail < 0 ? -size : size;
            for (int c = 0; c < 3; ++c)
                sample(rgb_out, y, x, c) = clip12(value(rgb_out, y, x, c) + change);
        }
    }
}
