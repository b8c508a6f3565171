// Green at red and blue sites: two sharpened candidates, one chosen or both blended.
#include <algorithm>

#include "cmodel/cfa/src/kit/fixed_point.h"
#include "cmodel/cfa/src/kit/in_force.h"
#include "cmodel/cfa/src/kit/register_groups.h"
#include "cmodel/cfa/src/stages.h"

using namespace cfa;

namespace {

// The sharpening weight, units of 1/32, for a ratio in Q12.
// The index is masked: the ratio of a deep picture may wrap and leave the table.
int32_t sharpening_weight(int32_t ratio) {
    return sharpening_entry((ratio >> 7) & 31);
}

} // namespace

int32_t cfa_CalGHPWeight(const FRAME * /*raw*/, int x, int y, const FRAME *GH, const FRAME *GV,
                         const FRAME *GH_lp, const FRAME *GH_hp, const FRAME *GV_lp, const FRAME *GV_hp,
                         const FRAME *MaxRGB, const FRAME *MinRGB, const FRAME *LMax, const FRAME *RatioH,
                         const FRAME *RatioV, const FRAME * /*DirInfo*/, int32_t *gh_out, int32_t *gv_out) {
    const int32_t ghp_thd = registers().reg_cfa_ghp_thd;
    const int32_t gmax = value(MaxRGB, y, x, 1);
    const int32_t gmin = value(MinRGB, y, x, 1);
    int32_t gh = value(GH, y, x, 1);
    int32_t gv = value(GV, y, x, 1);
    if (value(LMax, y, x) < ghp_thd) {
        const int32_t weight_h = sharpening_weight(value(RatioH, y, x));
        const int32_t weight_v = sharpening_weight(value(RatioV, y, x));
        gh = clip12(value(GH_lp, y, x) + ((weight_h * value(GH_hp, y, x)) >> 5));
        gv = clip12(value(GV_lp, y, x) + ((weight_v * value(GV_hp, y, x)) >> 5));
    }
    *gh_out = std::min(gmax, std::max(gmin, gh)); // Kept: the lower bound first
    *gv_out = std::min(gmax, std::max(gmin, gv));
    return 0;
}

int32_t cfa_CalGPixel(const FRAME *raw, int x, int y, const FRAME *GH, const FRAME *GV, const FRAME *MaxRGB,
                      const FRAME *MinRGB, const FRAME *GH_lp, const FRAME *GH_hp, const FRAME *GV_lp,
                      const FRAME *GV_hp, const FRAME *SigH, const FRAME *SigV, const FRAME *LMax,
                      const FRAME *RatioH, const FRAME *RatioV, const FRAME *DirInfo) {
    int32_t gh = 0;
    int32_t gv = 0;
    cfa_CalGHPWeight(raw, x, y, GH, GV, GH_lp, GH_hp, GV_lp, GV_hp, MaxRGB, MinRGB, LMax, RatioH, RatioV,
                     DirInfo, &gh, &gv);
    const bool forced = registers().reg_cfa_force_dir_enable == 1;
    const int32_t dir = forced ? registers().reg_cfa_force_dir_sel : value(DirInfo, y, x);
    if (dir == 1)
        return gh;
    if (dir != 0)
        return gv; // 2, and 3 when forced

    int32_t w_h = 0;
    int32_t w_v = 0;
    int64_t inv = 0;
    cfa_GetHVWtbySig(value(SigH, y, x), value(SigV, y, x), &w_h, &w_v, &inv);
    const int64_t blend = ((int64_t{w_h} * gh + int64_t{w_v} * gv) * inv) >> 15;
    return static_cast<int32_t>(std::min<int64_t>(4095, std::max<int64_t>(0, blend)));
}
