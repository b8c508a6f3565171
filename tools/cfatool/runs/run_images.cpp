// The list of images, and the search of a run folder for them.
#include "tools/cfatool/runs/run_images.h"

#include <algorithm>
#include <filesystem>
#include <set>

#include "tools/cfatool/base/trouble.h"

namespace cfatool {
namespace {

namespace fs = std::filesystem;

constexpr const char *AVG = "cfa_CalAvg";
constexpr const char *PREDICT = "cfa_CalPredictPixel";
constexpr const char *CLASSIFY = "cfa_CalClassifier";
constexpr const char *VARIANCE = "cfa_CalVarOfColorDiffAtG";
constexpr const char *LUMA_MOIRE = "cfa_DeYMoire";
constexpr const char *LUMA_WEIGHT = "cfa_CalYMoireWgt";
constexpr const char *COLOR_STATS = "cfa_CalColorMoireSts";

// clang-format off
constexpr RunImage IMAGES[] = {
    {"raw.ppm", "input", "the mosaic as read", "u12"},
    {"dbg_img_AvgRGB.ppm", AVG, "smooth local average of all three colours", "u12"},
    {"dbg_img_GH.ppm", PREDICT, "green of the candidate that interpolates along the row", "u12"},
    {"dbg_img_GV.ppm", PREDICT, "green of the candidate that interpolates along the column", "u12"},
    {"dbg_img_GH_lp.ppm", PREDICT, "green average along the row, shown shifted left by one pixel", "u12"},
    {"dbg_img_GV_lp.ppm", PREDICT, "green average along the column, shown shifted left by one pixel", "u12"},
    {"dbg_img_MaxRGB.ppm", PREDICT, "local maximum of red", "u12"},
    {"dbg_img_MinRGB.ppm", PREDICT, "local minimum of red", "u12"},
    {"dbg_img_LH.ppm", CLASSIFY, "activity along the row", "0..32767, shown limited to 4095"},
    {"dbg_img_LV.ppm", CLASSIFY, "activity along the column", "0..32767, shown limited to 4095"},
    {"dbg_img_LMax.ppm", CLASSIFY, "the larger of the two activities", "shown limited to 4095"},
    {"dbg_img_AHDiff.ppm", VARIANCE, "|blue - green| of the row candidate", "u12"},
    {"dbg_img_AVDiff.ppm", VARIANCE, "|blue - green| of the column candidate", "u12"},
    {"dbg_img_CHDiff.ppm", VARIANCE, "|red - green| of the row candidate", "u12"},
    {"dbg_img_CVDiff.ppm", VARIANCE, "|red - green| of the column candidate", "u12"},
    {"dbg_img_SigH.ppm", VARIANCE, "colour-difference variance along the row, at green sites, 0 at the others", "0..131071"},
    {"dbg_img_SigV.ppm", VARIANCE, "colour-difference variance along the column, at green sites, 0 at the others", "0..131071"},
    {"dbg_img_DirInfo.ppm", "cfa_CalDirectionInfo", "direction of interpolation: 0 blend, 1 horizontal, 2 vertical", "0..2"},
    {"dbg_img_cfa_RGB.ppm", "cfa_CalRGB", "the demosaiced picture before moire removal", "u12"},
    {"dbg_img_MaxRGB_lpf.ppm", LUMA_MOIRE, "local maximum of red, low-passed", "u12"},
    {"dbg_img_MinRGB_lpf.ppm", LUMA_MOIRE, "local minimum of red, low-passed", "u12"},
    {"dbg_img_MoireWgt_W1.ppm", LUMA_WEIGHT, "detail weight of the luma moire", "u8, 256 is 1.0"},
    {"dbg_img_MoireWgt_img_W2.ppm", LUMA_WEIGHT, "edge weight of the luma moire", "u8, 256 is 1.0"},
    {"dbg_img_MoireWgt.ppm", LUMA_WEIGHT, "weight of the luma-moire removal", "u8, 256 is 1.0"},
    {"dbg_img_YMoire.ppm", LUMA_MOIRE, "the picture after luma-moire removal", "u12, shown limited to 255"},
    {"dbg_img_afc_CDIST_WT.ppm", COLOR_STATS, "how far a pixel may lose its colour: saturation and protected hues", "u12, shown limited to 255"},
    {"dbg_img_afc_edge_STD_WT.ppm", COLOR_STATS, "spread of the directional responses", "u12, shown limited to 255"},
    {"dbg_img_afc_PD_WT.ppm", "cfa_CalPhaseDifference", "phase difference of the two green candidates", "u12, shown limited to 255"},
    {"out_dc.ppm", "gen_dst_dc", "DC output: low-passed local maximum of the three colours", "u12"},
    {"dbg_sg_bayer_luma.ppm", "sg_get_bayer_luma", "luma of the mosaic", "u12"},
    {"dbg_sg_rgb_luma.ppm", "sg_get_rgb_luma", "luma of the demosaiced picture", "u12"},
    {"dbg_sg_spike_remove.ppm", "sg_preprocess", "luma of the mosaic without spikes", "u12"},
    {"dbg_sg_dalta_HF_4x_8b.ppm", "sg_get_dalta_HF", "high-frequency detail: red above zero, green below", "s13, shown as a quarter of its size, limited to 255"},
    {"dbg_sg_bayer_luma_lpf.ppm", "sg_get_bayer_luma_lpf", "luma of the mosaic, low-passed", "u12"},
    {"dbg_sg_dalta_MF_4x_8b.ppm", "sg_get_delta_MF", "medium-frequency detail: red above zero, green below", "s13, shown as a quarter of its size, limited to 255"},
    {"dbg_sg_delta_core_4x_8b.ppm", "sg_coring_proc", "the detail that is left after coring: red above zero, green below", "s13, shown as a quarter of its size, limited to 255"},
    {"out_sg.ppm", "sharpen_gain_main_proc", "sharpen-gain output", "u12, 1024 is 1.0"},
    {"out.ppm", "sharpen_gain_main_proc", "RGB output: demosaiced, moire removed, detail added", "u12"},
};
// clang-format on

/// The file in the folder or in its dbg/, empty if it is in neither.
std::string path_of(const std::string &folder, const std::string &name) {
    for (const std::string &path : {folder + "/" + name, folder + "/dbg/" + name})
        if (fs::exists(path))
            return path;
    return "";
}

/// Names of the .ppm files of a folder and of its dbg/.
std::set<std::string> picture_names(const std::string &folder) {
    std::set<std::string> names;
    for (const std::string &place : {folder, folder + "/dbg"}) {
        std::error_code error;
        for (fs::directory_iterator entry(place, error), end; entry != end; entry.increment(error))
            if (entry->path().extension() == ".ppm")
                names.insert(entry->path().filename().string());
    }
    return names;
}

} // namespace

std::span<const RunImage> run_images() {
    return IMAGES;
}

std::vector<FoundImage> find_images(const std::string &folder) {
    std::error_code error;
    fs::directory_iterator(folder, error);
    if (error)
        throw file_trouble(folder, error.message());
    std::set<std::string> names = picture_names(folder);
    std::vector<FoundImage> found;
    for (const RunImage &image : IMAGES)
        if (names.erase(image.file) != 0)
            found.push_back({image.file, path_of(folder, image.file), &image});
    for (const std::string &name : names)
        found.push_back({name, path_of(folder, name), nullptr});
    return found;
}

} // namespace cfatool
