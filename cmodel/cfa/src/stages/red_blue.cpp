// Red and blue where the mosaic does not carry them, and the weights that blend the two directions.
#include <algorithm>

#include "cmodel/cfa/src/kit/fixed_point.h"
#include "cmodel/cfa/src/kit/in_force.h"
#include "cmodel/cfa/src/kit/window.h"
#include "cmodel/cfa/src/stages.h"
#include "cmodel/common/color_id.h"

using namespace cfa;

void cfa_GetHVWtbySig(int32_t sig_h, int32_t sig_v, int32_t *w_h, int32_t *w_v, int64_t *inv) {
    const int32_t sig_max = std::max(sig_h, sig_v);
    const int32_t m = sig_max >> 10;
    const int shift = sig_max >> 14 < 1 ? 5 : 7;
    *w_h = std::max(1, (sig_v - m) >> shift); // the smoother direction dominates
    *w_v = std::max(1, (sig_h - m) >> shift);
    *inv = get_inv(*w_h + *w_v);
}

int32_t cfa_CalRBPixel(const FRAME *raw, int x, int y, const FRAME *GH, const FRAME *GV, const FRAME *SigH,
                       const FRAME *SigV, const FRAME *DirInfo, int32_t target) {
    if (target != 0 && target != 3)
        return 0;
    const int c = target == 3 ? 0 : 2;
    const int32_t ch = value(GH, y, x, c);
    const int32_t cv = value(GV, y, x, c);

    // Range of the 3 x 3 neighbourhood, whatever its colours.
    int32_t lo = value(raw, y, x);
    int32_t hi = lo;
    for (int dy = -1; dy <= 1; ++dy) {
        const int row = mirror_index(y + dy, height_of(raw));
        for (int dx = -1; dx <= 1; ++dx) {
            const int32_t s = value(raw, row, mirror_index(x + dx, width_of(raw)));
            lo = std::min(lo, s);
            hi = std::max(hi, s);
        }
    }

    const bool forced = registers().reg_cfa_force_dir_enable == 1;
    const int32_t dir = forced ? registers().reg_cfa_force_dir_sel : value(DirInfo, y, x);
    int32_t v = dir == 1 ? ch : cv; // vertical for 2, and for 3 when forced
    if (dir == 0) {
        int32_t w_h = 0;
        int32_t w_v = 0;
        int64_t inv = 0;
        cfa_GetHVWtbySig(value(SigH, y, x), value(SigV, y, x), &w_h, &w_v, &inv);
        const int64_t blend = (inv * (int64_t{ch} * w_h + int64_t{w_v} * cv)) >> 15;
        v = static_cast<int32_t>(std::min<int64_t>(4095, std::max<int64_t>(0, blend)));
    }
    return std::min(hi, std::max(lo, v));
}
