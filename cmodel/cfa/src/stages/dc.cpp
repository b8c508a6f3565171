// The DC image: the brightest-channel envelope of the mosaic, smoothed.
#include <algorithm>
#include <cstring>

#include "cmodel/cfa/src/kit/fixed_point.h"
#include "cmodel/cfa/src/kit/window.h"
#include "cmodel/cfa/src/stages.h"

void copy_to_dst(const FRAME *src, FRAME *dst) {
    const int channels = static_cast<int>(src->channels);
    for (int y = 0; y < static_cast<int>(src->height); y++)
        for (int x = 0; x < static_cast<int>(src->width); x++)
            for (int c = 0; c < channels; c++)
                sample(dst, y, x, c) = value(src, y, x, c);
}

void gen_MaxRGB_1ch(const FRAME *src, FRAME *dst) {
    for (int y = 0; y < static_cast<int>(src->height); y++)
        for (int x = 0; x < static_cast<int>(src->width); x++)
            sample(dst, y, x) = std::max({value(src, y, x, 0), value(src, y, x, 1), value(src, y, x, 2)});
}

void gen_dst_dc(const FRAME *src, FRAME *dst) {
    Window<1> P(src);
    for (int y = 0; y < static_cast<int>(src->height); y++) {
        P.move_to(y);
        for (int x = 0; x < static_cast<int>(src->width); x++) {
            P.at(x);
            sample(dst, y, x) = std::min(4095, binomial3x3(P) >> 4);
        }
    }
}
