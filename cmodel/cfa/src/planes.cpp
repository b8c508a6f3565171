#include "cmodel/cfa/src/planes.h"

#include <cassert>
#include <cstring>

#include "cmodel/cfa/src/kit/debug_image.h"
#include "cmodel/cfa/src/kit/in_force.h"
#include "cmodel/common/ppm.h"

namespace cfa {
namespace {

using enum Shown;
using enum Feature;

// clang-format off
constexpr PlaneInfo LIST[] = {
    {"AvgRGB", "cfa_CalAvg", 3, "u12", "cfa_CalDirectionInfo cfa_DeYMoire cfa_CalColorMoireSts",
     "smooth local average of all three colours", {"dbg_img_AvgRGB.ppm", magnitude, 3, 12}},
    {"GH", "cfa_CalPredictPixel", 3, "u12", "cfa_CalVarOfColorDiffAtG cfa_CalVarOfColorDiffAtRB cfa_CalRGB cfa_DeYMoire cfa_CalYMoireWgt cfa_CalColorMoireSts cfa_CalPhaseDifference",
     "candidate picture that interpolates green along the row", {"dbg_img_GH.ppm", magnitude, 1, 12, "green"}},
    {"GV", "cfa_CalPredictPixel", 3, "u12", "cfa_CalVarOfColorDiffAtG cfa_CalVarOfColorDiffAtRB cfa_CalRGB cfa_DeYMoire cfa_CalYMoireWgt cfa_CalColorMoireSts cfa_CalPhaseDifference",
     "candidate picture that interpolates green along the column", {"dbg_img_GV.ppm", magnitude, 1, 12, "green"}},
    // Kept: selector 1 on a one-channel plane shows the plane shifted left by one sample.
    {"GH_lp", "cfa_CalPredictPixel", 1, "u12", "cfa_CalRGB",
     "green average along the row", {"dbg_img_GH_lp.ppm", magnitude, 1, 12, "shifted left by one pixel"}},
    {"GH_hp", "cfa_CalPredictPixel", 1, "s13", "cfa_CalRGB",
     "correction of the own colour along the row; 0 at green sites", {}},
    {"GV_lp", "cfa_CalPredictPixel", 1, "u12", "cfa_CalRGB",
     "green average along the column", {"dbg_img_GV_lp.ppm", magnitude, 1, 12, "shifted left by one pixel"}},
    {"GV_hp", "cfa_CalPredictPixel", 1, "s13", "cfa_CalRGB",
     "correction of the own colour along the column; 0 at green sites", {}},
    {"MaxRGB", "cfa_CalPredictPixel", 3, "u12", "cfa_CalRGB cfa_DeYMoire gen_MaxRGB_1ch",
     "local maximum of each colour", {"dbg_img_MaxRGB.ppm", magnitude, 0, 12, "red"}},
    {"MinRGB", "cfa_CalPredictPixel", 3, "u12", "cfa_CalRGB cfa_DeYMoire",
     "local minimum of each colour", {"dbg_img_MinRGB.ppm", magnitude, 0, 12, "red"}},
    {"LH", "cfa_CalClassifier", 1, "0..32767", "cfa_CalDirectionInfo",
     "activity along the row", {"dbg_img_LH.ppm", magnitude, 0, 12, "limited to 4095"}},
    {"LV", "cfa_CalClassifier", 1, "0..32767", "cfa_CalDirectionInfo",
     "activity along the column", {"dbg_img_LV.ppm", magnitude, 0, 12, "limited to 4095"}},
    {"LMax", "cfa_CalClassifier", 1, "0..32767", "cfa_CalRGB",
     "the larger of the two activities", {"dbg_img_LMax.ppm", magnitude, 0, 12, "limited to 4095"}},
    {"RatioH", "cfa_CalClassifier", 1, "Q12, 0..4095", "cfa_CalRGB",
     "green over own colour along the row; 0 at green sites", {}},
    {"RatioV", "cfa_CalClassifier", 1, "Q12, 0..4095", "cfa_CalRGB",
     "green over own colour along the column; 0 at green sites", {}},
    {"AHDiff", "cfa_CalVarOfColorDiffAtG", 1, "u12", "cfa_CalVarOfColorDiffAtG",
     "|blue - green| of the row candidate", {"dbg_img_AHDiff.ppm", magnitude, 0, 12}},
    {"AVDiff", "cfa_CalVarOfColorDiffAtG", 1, "u12", "cfa_CalVarOfColorDiffAtG",
     "|blue - green| of the column candidate", {"dbg_img_AVDiff.ppm", magnitude, 0, 12}},
    {"CHDiff", "cfa_CalVarOfColorDiffAtG", 1, "u12", "cfa_CalVarOfColorDiffAtG",
     "|red - green| of the row candidate", {"dbg_img_CHDiff.ppm", magnitude, 0, 12}},
    {"CVDiff", "cfa_CalVarOfColorDiffAtG", 1, "u12", "cfa_CalVarOfColorDiffAtG",
     "|red - green| of the column candidate", {"dbg_img_CVDiff.ppm", magnitude, 0, 12}},
    // Kept: shown before red and blue sites are filled: those are 0 in the image.
    {"SigH", "cfa_CalVarOfColorDiffAtRB", 1, "0..131071", "cfa_CalDirectionInfo cfa_CalRGB",
     "colour-difference variance along the row", {"dbg_img_SigH.ppm", at_green, 0, 24, "at green sites, 0 at the others", "cfa_CalVarOfColorDiffAtG"}},
    {"SigV", "cfa_CalVarOfColorDiffAtRB", 1, "0..131071", "cfa_CalDirectionInfo cfa_CalRGB",
     "colour-difference variance along the column", {"dbg_img_SigV.ppm", at_green, 0, 24, "at green sites, 0 at the others", "cfa_CalVarOfColorDiffAtG"}},
    // Kept: depth 12 for a plane of 8 bits.
    {"DirInfo", "cfa_CalDirectionInfo", 1, "0..2", "cfa_CalRGB",
     "direction of interpolation: 0 blend, 1 horizontal, 2 vertical", {"dbg_img_DirInfo.ppm", magnitude, 0, 12}},
    {"cfa_RGB", "cfa_CalRGB", 3, "u12", "cfa_DeYMoire",
     "the demosaiced picture before moire removal", {"dbg_img_cfa_RGB.ppm", magnitude, 3, 12}},
    {"MaxRGB_lpf", "cfa_DeYMoire", 3, "u12", "cfa_CalYMoireWgt",
     "local maximum of each colour, low-passed", {"dbg_img_MaxRGB_lpf.ppm", magnitude, 0, 12, "red"}, luma_moire},
    {"MinRGB_lpf", "cfa_DeYMoire", 3, "u12", "cfa_CalYMoireWgt",
     "local minimum of each colour, low-passed", {"dbg_img_MinRGB_lpf.ppm", magnitude, 0, 12, "red"}, luma_moire},
    {"MoireWgt_W1", "cfa_CalYMoireWgt", 1, "u8, 256 is 1.0", "cfa_CalYMoireWgt",
     "detail weight of the luma moire", {"dbg_img_MoireWgt_W1.ppm", low_bits, 0, 8}, luma_moire},
    {"MoireWgt_W2", "cfa_CalYMoireWgt", 1, "u8, 256 is 1.0", "cfa_CalYMoireWgt",
     "edge weight of the luma moire", {"dbg_img_MoireWgt_img_W2.ppm", low_bits, 0, 8}, luma_moire},
    {"MoireWgt", "cfa_CalYMoireWgt", 1, "u8, 256 is 1.0", "cfa_DeYMoire",
     "weight of the luma-moire removal", {"dbg_img_MoireWgt.ppm", magnitude, 0, 8}, luma_moire},
    // Kept: 12-bit values at depth 8, limited to 255; the three weights below likewise.
    {"YMoire", "cfa_DeYMoire", 3, "u12", "cfa_DeColorMoire",
     "the picture after luma-moire removal", {"dbg_img_YMoire.ppm", magnitude, 3, 8, "limited to 255", "", luma_moire}},
    {"cdist_wt", "cfa_CalColorMoireSts", 1, "u12", "cfa_DeColorMoire",
     "how far a pixel may lose its colour: saturation and protected hues", {"dbg_img_afc_CDIST_WT.ppm", magnitude, 0, 8, "limited to 255", "", color_moire}},
    {"edge_wt", "cfa_CalColorMoireSts", 1, "u12", "cfa_DeColorMoire",
     "spread of the directional responses", {"dbg_img_afc_edge_STD_WT.ppm", magnitude, 0, 8, "limited to 255", "", color_moire}},
    {"pd_wt", "cfa_CalPhaseDifference", 1, "u12", "cfa_DeColorMoire",
     "phase difference of the two green candidates", {"dbg_img_afc_PD_WT.ppm", magnitude, 0, 8, "limited to 255", "", color_moire}},
    {"CMOut", "cfa_DeColorMoire", 3, "u12", "copy_to_dst sg_get_rgb_luma sharpen_gain_main_proc",
     "the picture after colour-moire removal, before sharpening", {}},
    {"MaxRGB1", "gen_MaxRGB_1ch", 1, "u12", "gen_dst_dc",
     "local maximum of all three colours", {}},
    {"out_dc", "gen_dst_dc", 1, "u12", "",
     "DC output: low-passed local maximum of the three colours", {}},
    {"bayer_luma", "sg_get_bayer_luma", 1, "u12", "sg_preprocess sg_get_bayer_luma_lpf",
     "luma of the mosaic", {"dbg_sg_bayer_luma.ppm", low_bits, 0, 12}, sharpening},
    {"rgb_luma", "sg_get_rgb_luma", 1, "u12", "sg_get_dalta_HF sharpen_gain_main_proc",
     "luma of the demosaiced picture", {"dbg_sg_rgb_luma.ppm", low_bits, 0, 12}, sharpening},
    {"spike_removed", "sg_preprocess", 1, "u12", "sg_get_dalta_HF sg_get_delta_MF",
     "luma of the mosaic without spikes", {"dbg_sg_spike_remove.ppm", low_bits, 0, 12}, sharpening},
    {"HF", "sg_get_dalta_HF", 1, "s13", "sg_coring_proc",
     "high-frequency detail", {"dbg_sg_dalta_HF_4x_8b.ppm", signed_map, 0, 8, "a quarter, limited to 255; red above zero, green below"}, sharpening},
    {"lpf", "sg_get_bayer_luma_lpf", 1, "u12", "sg_get_delta_MF",
     "luma of the mosaic, low-passed", {"dbg_sg_bayer_luma_lpf.ppm", low_bits, 0, 12}, sharpening},
    {"MF", "sg_get_delta_MF", 1, "s13", "sg_coring_proc",
     "medium-frequency detail", {"dbg_sg_dalta_MF_4x_8b.ppm", signed_map, 0, 8, "a quarter, limited to 255; red above zero, green below"}, sharpening},
    {"cored", "sg_coring_proc", 1, "s13", "sharpen_gain_main_proc",
     "the detail that is left after coring", {"dbg_sg_delta_core_4x_8b.ppm", signed_map, 0, 8, "a quarter, limited to 255; red above zero, green below"}, sharpening},
    {"out_sg", "sharpen_gain_main_proc", 1, "u12, 1024 is 1.0", "",
     "sharpen-gain output", {}},
    {"out_rgb", "sharpen_gain_main_proc", 3, "u12", "",
     "RGB output: demosaiced, moire removed, detail added", {}},
};
// clang-format on

bool is_on(Feature feature) {
    switch (feature) {
    case luma_moire:
        return registers().reg_cfa_ymoire_enable == 1;
    case color_moire:
        return registers().reg_cfa_cmoire_enable == 1;
    case sharpening:
        return registers().reg_cfa_shpn_enable == 1;
    default:
        return true;
    }
}

} // namespace

std::span<const PlaneInfo> planes() {
    return LIST;
}

const PlaneInfo *find_plane(const char *name) {
    for (const PlaneInfo &plane : LIST)
        if (std::strcmp(plane.name, name) == 0)
            return &plane;
    return nullptr;
}

bool is_made(const PlaneInfo &plane) {
    return is_on(plane.with);
}

bool has_image(const PlaneInfo &plane) {
    return plane.image.shown != nothing && is_on(plane.with) && is_on(plane.image.with);
}

void publish_plane(const char *name, const FRAME *plane) {
    write_debug_image(name, plane);
    give_plane(name, plane);
}

void give_plane(const char *name, const FRAME *plane) {
    PlaneTaker *const taker = in_force().planes;
    if (taker != nullptr)
        taker->take(*find_plane(name), plane);
}

void write_debug_image(const char *name, const FRAME *plane) {
    if (!debug_images_wanted())
        return;
    const PlaneInfo *const info = find_plane(name);
    assert(info != nullptr);
    const std::string path = debug_path_of(info->image.file);
    switch (info->image.shown) {
    case nothing:
        break;
    case magnitude:
    case at_green: // the plane holds no other sites yet
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
