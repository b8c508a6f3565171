// The DC image: the brightest-channel envelope of the mosaic, smoothed.
#include <algorithm>

#include "cmodel/cfa/src/kit/fixed_point.h"
#include "cmodel/cfa/src/kit/window.h"
#include "cmodel/cfa/src/stages.h"

using namespace cfa;

namespace {

// mirror_index, reflected again where one reflection does not reach the inside.
int folded_index(int i, int n) {
    const int period = std::max(1, 2 * (n - 1));
    return mirror_index(i % period, n);
}

} // namespace

void copy_to_dst(const FRAME *src, FRAME *dst) {
    const int channels = static_cast<int>(src->channels);
    const int height = height_of(dst);
    const int width = width_of(dst);
    for (int y = 0; y < height_of(src); ++y)
        for (int x = 0; x < width_of(src); ++x)
            for (int c = 0; c < channels; ++c)
                sample(dst, folded_index(y, height), folded_index(x, width), c) = value(src, y, x, c);
}

void gen_MaxRGB_1ch(const FRAME *src, FRAME *dst) {
    for (int y = 0; y < height_of(src); ++y)
        for (int x = 0; x < width_of(src); ++x)
            sample(dst, y, x) = std::max({value(src, y, x, 0), value(src, y, x, 1), value(src, y, x, 2)});
}

void gen_dst_dc(const FRAME *src, FRAME *dst) {
    Window<1> P(src);
    for (int y = 0; y < height_of(src); ++y) {
        P.move_to(y);
        for (int x = 0; x < width_of(src); ++x) {
            P.centre_on(x);
            sample(dst, y, x) = std::min(4095, binomial3x3(P) >> 4);
        }
    }
}
