// Reconstruction: the demosaiced picture, pixel by pixel.
#include "cmodel/cfa/src/planes.h"
#include "cmodel/cfa/src/stages.h"
#include "cmodel/common/color_id.h"

using namespace cfa;

void cfa_CalRGB(const FRAME *raw, FRAME *rgb_out, const FRAME *GH, const FRAME *GV, const FRAME *GH_lp,
                const FRAME *GV_lp, const FRAME *GH_hp, const FRAME *GV_hp, const FRAME *MaxRGB,
                const FRAME *MinRGB, const FRAME *SigH, const FRAME *SigV, const FRAME *LMax,
                const FRAME *RatioH, const FRAME *RatioV, const FRAME *DirInfo, uint32_t bayer_id) {
    const auto green = [=](int x, int y) {
        return cfa_CalGPixel(raw, x, y, GH, GV, MaxRGB, MinRGB, GH_lp, GH_hp, GV_lp, GV_hp, SigH, SigV, LMax,
                             RatioH, RatioV, DirInfo);
    };
    const auto red = [=](int x, int y) { return cfa_CalRBPixel(raw, x, y, GH, GV, SigH, SigV, DirInfo, 3); };
    const auto blue = [=](int x, int y) { return cfa_CalRBPixel(raw, x, y, GH, GV, SigH, SigV, DirInfo, 0); };

    int32_t r = 0, g = 0, b = 0; // Kept: any other code repeats the values of the pixel before
    for (int y = 0; y < height_of(raw); ++y) {
        for (int x = 0; x < width_of(raw); ++x) {
            const uint32_t code = CM_GET_COLOR_ID(y, x, bayer_id);
            if (code == CODE_B) {
                g = green(x, y);
                r = red(x, y);
                b = value(raw, y, x);
            } else if (code == CODE_GB || code == CODE_GR) {
                r = red(x, y);
                g = value(raw, y, x);
                b = blue(x, y);
            } else if (code == CODE_R) {
                g = green(x, y);
                r = value(raw, y, x);
                b = blue(x, y);
            }
            sample(rgb_out, y, x, 0) = r;
            sample(rgb_out, y, x, 1) = g;
            sample(rgb_out, y, x, 2) = b;
        }
    }
    publish_plane("cfa_RGB", rgb_out);
}
