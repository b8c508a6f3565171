#include "cmodel/cfa/src/planes.h"

#include <algorithm>
#include <cassert>
#include <cstring>

#include "cmodel/cfa/src/kit/debug_image.h"
#include "cmodel/common/ppm.h"

namespace cfa {
namespace {

using enum Shown;

// clang-format off
constexpr PlaneInfo LIST[] = {
    {"AvgRGB", "cfa_CalAvg", "u12", "smooth local average of all three colours",
     {"dbg_img_AvgRGB.ppm", magnitude, 3, 12}},
    {"GH", "cfa_CalPredictPixel", "u12", "green of the candidate that interpolates along the row",
     {"dbg_img_GH.ppm", magnitude, 1, 12}},
    {"GV", "cfa_CalPredictPixel", "u12", "green of the candidate that interpolates along the column",
     {"dbg_img_GV.ppm", magnitude, 1, 12}},
    // Kept: selector 1 on a one-channel plane shows the plane shifted left by one sample.
    {"GH_lp", "cfa_CalPredictPixel", "u12", "green average along the row",
     {"dbg_img_GH_lp.ppm", magnitude, 1, 12}},
    {"GV_lp", "cfa_CalPredictPixel", "u12", "green average along the column",
     {"dbg_img_GV_lp.ppm", magnitude, 1, 12}},
    {"MaxRGB", "cfa_CalPredictPixel", "u12", "local maximum of each colour",
     {"dbg_img_MaxRGB.ppm", magnitude, 0, 12}},
    {"MinRGB", "cfa_CalPredictPixel", "u12", "local minimum of each colour",
     {"dbg_img_MinRGB.ppm", magnitude, 0, 12}},
    {"LH", "cfa_CalClassifier", "0..32767", "activity along the row",
     {"dbg_img_LH.ppm", magnitude, 0, 12}},
    {"LV", "cfa_CalClassifier", "0..32767", "activity along the column",
     {"dbg_img_LV.ppm", magnitude, 0, 12}},
    {"LMax", "cfa_CalClassifier", "0..32767", "the larger of the two activities",
     {"dbg_img_LMax.ppm", magnitude, 0, 12}},
    {"AHDiff", "cfa_CalVarOfColorDiffAtG", "u12", "|blue - green| of the row candidate",
     {"dbg_img_AHDiff.ppm", magnitude, 0, 12}},
    {"AVDiff", "cfa_CalVarOfColorDiffAtG", "u12", "|blue - green| of the column candidate",
     {"dbg_img_AVDiff.ppm", magnitude, 0, 12}},
    {"CHDiff", "cfa_CalVarOfColorDiffAtG", "u12", "|red - green| of the row candidate",
     {"dbg_img_CHDiff.ppm", magnitude, 0, 12}},
    {"CVDiff", "cfa_CalVarOfColorDiffAtG", "u12", "|red - green| of the column candidate",
     {"dbg_img_CVDiff.ppm", magnitude, 0, 12}},
    // Kept: shown before red and blue sites are filled: those are 0 in the image.
    {"SigH", "cfa_CalVarOfColorDiffAtG", "0..131071", "colour-difference variance along the row",
     {"dbg_img_SigH.ppm", magnitude, 0, 24}},
    {"SigV", "cfa_CalVarOfColorDiffAtG", "0..131071", "colour-difference variance along the column",
     {"dbg_img_SigV.ppm", magnitude, 0, 24}},
    // Kept: depth 12 for a plane of 8 bits.
    {"DirInfo", "cfa_CalDirectionInfo", "0..2", "direction of interpolation: 0 blend, 1 horizontal, 2 vertical",
     {"dbg_img_DirInfo.ppm", magnitude, 0, 12}},
    {"cfa_RGB", "cfa_CalRGB", "u12", "the demosaiced picture before moire removal",
     {"dbg_img_cfa_RGB.ppm", magnitude, 3, 12}},
    {"MaxRGB_lpf", "cfa_DeYMoire", "u12", "local maximum of each colour, low-passed",
     {"dbg_img_MaxRGB_lpf.ppm", magnitude, 0, 12}},
    {"MinRGB_lpf", "cfa_DeYMoire", "u12", "local minimum of each colour, low-passed",
     {"dbg_img_MinRGB_lpf.ppm", magnitude, 0, 12}},
    {"MoireWgt_W1", "cfa_CalYMoireWgt", "u8, 256 is 1.0", "detail weight of the luma moire",
     {"dbg_img_MoireWgt_W1.ppm", low_bits, 0, 8}},
    {"MoireWgt_W2", "cfa_CalYMoireWgt", "u8, 256 is 1.0", "edge weight of the luma moire",
     {"dbg_img_MoireWgt_img_W2.ppm", low_bits, 0, 8}},
    {"MoireWgt", "cfa_CalYMoireWgt", "u8, 256 is 1.0", "weight of the luma-moire removal",
     {"dbg_img_MoireWgt.ppm", magnitude, 0, 8}},
    // Kept: 12-bit values at depth 8, limited to 255; the three weights below likewise.
    {"YMoire", "cfa_DeYMoire", "u12", "the picture after luma-moire removal",
     {"dbg_img_YMoire.ppm", magnitude, 3, 8}},
    {"cdist_wt", "cfa_CalColorMoireSts", "u12", "how far a pixel may lose its colour: saturation and protected hues",
     {"dbg_img_afc_CDIST_WT.ppm", magnitude, 0, 8}},
    {"edge_wt", "cfa_CalColorMoireSts", "u12", "spread of the directional responses",
     {"dbg_img_afc_edge_STD_WT.ppm", magnitude, 0, 8}},
    {"pd_wt", "cfa_CalPhaseDifference", "u12", "phase difference of the two green candidates",
     {"dbg_img_afc_PD_WT.ppm", magnitude, 0, 8}},
    {"bayer_luma", "sg_get_bayer_luma", "u12", "luma of the mosaic",
     {"dbg_sg_bayer_luma.ppm", low_bits, 0, 12}},
    {"rgb_luma", "sg_get_rgb_luma", "u12", "luma of the demosaiced picture",
     {"dbg_sg_rgb_luma.ppm", low_bits, 0, 12}},
    {"spike_removed", "sg_preprocess", "u12", "luma of the mosaic without spikes",
     {"dbg_sg_spike_remove.ppm", low_bits, 0, 12}},
    {"HF", "sg_get_dalta_HF", "s13", "high-frequency detail",
     {"dbg_sg_dalta_HF_4x_8b.ppm", signed_map, 0, 8}},
    {"lpf", "sg_get_bayer_luma_lpf", "u12", "luma of the mosaic, low-passed",
     {"dbg_sg_bayer_luma_lpf.ppm", low_bits, 0, 12}},
    {"MF", "sg_get_delta_MF", "s13", "medium-frequency detail",
     {"dbg_sg_dalta_MF_4x_8b.ppm", signed_map, 0, 8}},
    {"detail", "sg_coring_proc", "s13", "the detail that is left after coring",
     {"dbg_sg_delta_core_4x_8b.ppm", signed_map, 0, 8}},
};
// clang-format on

const PlaneInfo *find_plane(const char *name) {
    return std::find_if(std::begin(LIST), std::end(LIST),
                        [name](const PlaneInfo &plane) { return std::strcmp(plane.name, name) == 0; });
}

} // namespace

std::span<const PlaneInfo> planes() {
    return LIST;
}

void write_debug_image(const char *name, const FRAME *plane) {
    if (!debug_images_wanted())
        return;
    const PlaneInfo *const info = find_plane(name);
    assert(info != std::end(LIST));
    const std::string path = debug_path_of(info->image.file);
    switch (info->image.shown) {
    case magnitude:
        dump_magnitudes(plane, info->image.channel, 1, info->image.bit_depth, path);
        break;
    case low_bits:
        write_p5(path.c_str(), plane);
        break;
    case signed_map:
        dump_signed_map(plane, path);
        break;
    }
}

} // namespace cfa
