// Local averages: a smooth, alias-free estimate of all three colours at every pixel.
#include "cmodel/cfa/src/kit/fixed_point.h"
#include "cmodel/cfa/src/kit/window.h"
#include "cmodel/cfa/src/planes.h"
#include "cmodel/cfa/src/stages.h"
#include "cmodel/common/color_id.h"

using namespace cfa;

namespace {

using Raw = Window<2>;

struct Rgb {
    int32_t r, g, b;
};

// The three estimates at a red or blue site.
struct AtRedBlue {
    int32_t green, diagonal, own;

    explicit AtRedBlue(const Raw &P)
        : green(clip12((P(0, -1) + P(0, 1) + P(-1, 0) + P(1, 0) + 2) >> 2)),
          diagonal(clip12((P(-1, -1) + P(-1, 1) + P(1, -1) + P(1, 1) + 2) >> 2)),
          own(clip12((4 * P(0, 0) + P(-2, 0) + P(2, 0) + P(0, -2) + P(0, 2) + 4) >> 3)) {}
};

// Kept: x85 >> 10 stands for / 12 and is slightly less; a flat field of 4095 gives 4079.
int32_t twelfth(int32_t sum) {
    return clip12((sum * 85 + 512) >> 10);
}

// The three estimates at a green site: green, the colour left and right, the colour above and below.
struct AtGreen {
    int32_t green, horizontal, vertical;

    explicit AtGreen(const Raw &P)
        : green(clip12((4 * P(0, 0) + P(-1, -1) + P(-1, 1) + P(1, -1) + P(1, 1) + 4) >> 3)),
          horizontal(twelfth(4 * (P(0, -1) + P(0, 1)) + P(-2, -1) + P(-2, 1) + P(2, -1) + P(2, 1))),
          vertical(twelfth(4 * (P(-1, 0) + P(1, 0)) + P(-1, -2) + P(1, -2) + P(-1, 2) + P(1, 2))) {}
};

} // namespace

void cfa_CalAvg(const FRAME *raw, FRAME *AvgRGB, uint32_t bayer_id) {
    const int width = width_of(raw);
    const int height = height_of(raw);
    Raw P(raw);
    Rgb avg{0, 0, 0}; // Kept: any other code repeats the values last computed, in scan order

    for (int y = 0; y < height; ++y) {
        P.move_to(y);
        for (int x = 0; x < width; ++x) {
            P.centre_on(x);
            const uint32_t code = CM_GET_COLOR_ID(y, x, bayer_id);
            if (code == CODE_B || code == CODE_R) {
                const AtRedBlue e(P);
                avg = code == CODE_B ? Rgb{e.diagonal, e.green, e.own} : Rgb{e.own, e.green, e.diagonal};
            } else if (code == CODE_GB || code == CODE_GR) {
                const AtGreen e(P);
                avg = code == CODE_GB ? Rgb{e.vertical, e.green, e.horizontal}
                                      : Rgb{e.horizontal, e.green, e.vertical};
            }
            sample(AvgRGB, y, x, 0) = avg.r;
            sample(AvgRGB, y, x, 1) = avg.g;
            sample(AvgRGB, y, x, 2) = avg.b;
        }
    }
    publish_plane("AvgRGB", AvgRGB);
}
