// Direction information: along which direction each pixel is interpolated, decided in raster order.
#include <algorithm>

#include "cmodel/cfa/src/kit/in_force.h"
#include "cmodel/cfa/src/kit/window.h"
#include "cmodel/cfa/src/planes.h"
#include "cmodel/cfa/src/stages.h"
#include "cmodel/common/color_id.h"

using namespace cfa;

namespace {

// 1 where a is smaller (horizontal), 2 where b is (vertical), 0 on a tie.
int32_t direction_of(int32_t a, int32_t b) {
    return a < b ? 1 : a > b ? 2 : 0;
}

// The evidence at one pixel.
struct Evidence {
    int32_t lh, lv, sh, sv;

    Evidence(const FRAME *LH, const FRAME *LV, const FRAME *SigH, const FRAME *SigV, int x, int y)
        : lh(value(LH, y, x)), lv(value(LV, y, x)), sh(value(SigH, y, x)), sv(value(SigV, y, x)) {}

    int32_t activity_max() const { return std::max(lh, lv); }
    int32_t activity_min() const { return std::max(1, std::min(lh, lv) >> 5); } // in units of 32, at least 1
    int32_t prior() const { return direction_of(sh, sv); }

    // Whether the variances differ enough for the vote to count; tolerance in units of 1/32.
    bool vote_counts(int32_t tolerance) const {
        return std::max(sh, sv) >= (std::min(sh, sv) * tolerance) >> 5;
    }
};

int32_t vote(int x, int y, const Evidence &e, int32_t tolerance, const FRAME *SigH, const FRAME *SigV,
             const FRAME *LH, const FRAME *LV, const FRAME *DirInfo) {
    int32_t votes_h = 0;
    int32_t votes_v = 0;
    cfa_Vote(x, y, e.prior(), &votes_h, &votes_v, SigH, SigV, LH, LV, DirInfo);
    return e.vote_counts(tolerance) ? direction_of(votes_v, votes_h) : 0;
}

int32_t cal_dir_at_rb(int x, int y, const FRAME *LH, const FRAME *LV, const FRAME *SigH, const FRAME *SigV,
                      FRAME *DirInfo) {
    const int32_t edgee_thd = registers().reg_cfa_edgee_thd;
    const int32_t edge_tol = registers().reg_cfa_edge_tol;
    const int64_t sige_thd = registers().reg_cfa_sige_thd;
    const Evidence e(LH, LV, SigH, SigV, x, y);
    const int32_t sig_max = std::max(e.sh, e.sv) >> 2;
    const int32_t sig_min = std::max(1, std::min(e.sh, e.sv) >> 7);

    int32_t dir = 0;
    if (edgee_thd * e.activity_min() < e.activity_max()) { // the classifier is decisive
        if (e.activity_max() >= (std::min(e.lh, e.lv) * edge_tol) >> 8)
            dir = direction_of(e.lh, e.lv);
    } else if (sige_thd * sig_min > sig_max && !isAtBoundary(LH, x, y)) { // the variance is not
        dir = vote(x, y, e, registers().reg_cfa_gsig_tol, SigH, SigV, LH, LV, DirInfo);
    } else {
        dir = e.prior();
    }
    sample(DirInfo, y, x) = dir;
    return dir;
}

int32_t cal_dir_at_g(int x, int y, const FRAME *AvgRGB, const FRAME *LH, const FRAME *LV, const FRAME *SigH,
                     const FRAME *SigV, FRAME *DirInfo) {
    const int32_t edgee_thd2 = registers().reg_cfa_edgee_thd2;
    const int32_t vote_enable = registers().reg_cfa_rb_vt_enable;
    const int32_t luma_thd = registers().reg_cfa_rbsig_luma_thd;
    const Evidence e(LH, LV, SigH, SigV, x, y);
    const int32_t red = value(AvgRGB, y, x, 0);
    const int32_t green = value(AvgRGB, y, x, 1);
    const int32_t blue = value(AvgRGB, y, x, 2);
    const int32_t luma = (307 * red + 615 * green + 102 * blue) >> 10;

    int32_t dir = 0;
    if (e.activity_max() > e.activity_min() * edgee_thd2) // decisive; no tolerance test here
        dir = direction_of(e.lh, e.lv);
    else if (vote_enable == 1 && luma >= luma_thd && !isAtBoundary(AvgRGB, x, y))
        dir = vote(x, y, e, registers().reg_cfa_rbsig_tol, SigH, SigV, LH, LV, DirInfo);
    else
        dir = e.prior();
    sample(DirInfo, y, x) = dir;
    return dir;
}

} // namespace

int32_t isAtBoundary(const FRAME *frame, int x, int y) {
    return x == 0 || x == width_of(frame) - 1 || y == 0 ? 1 : 0;
}

void cfa_Vote(int x, int y, int32_t centre_dir, int32_t *votes_h, int32_t *votes_v, const FRAME *SigH,
              const FRAME *SigV, const FRAME *LH, const FRAME *LV, const FRAME *DirInfo) {
    const int32_t vw_thd = registers().reg_cfa_vw_thd;
    const int left = mirror_index(x - 1, width_of(LH));
    const int right = mirror_index(x + 1, width_of(LH));
    const int above = mirror_index(y - 1, height_of(LH));
    const int below = mirror_index(y + 1, height_of(LH));
    const auto cast = [=](int32_t direction, int32_t weight) {
        if (direction == 1)
            *votes_h += weight;
        if (direction == 2)
            *votes_v += weight;
    };
    const auto strong = [=](int row, int col) {
        return std::max(value(LH, row, col), value(LV, row, col)) >= vw_thd;
    };

    // Already decided: the row above, the left neighbour; then the pixel's own prior.
    cast(value(DirInfo, above, left), 1);
    cast(value(DirInfo, above, x), 2);
    cast(value(DirInfo, above, right), 1);
    cast(value(DirInfo, y, left), 2);
    cast(centre_dir, 4);

    // Not decided yet: estimated; ties are vertical. Kept: the right neighbour weighs 1 where the left one
    // weighs 2, and votes once more when its activity is strong.
    const int32_t right_dir = value(SigH, y, right) < value(SigV, y, right) ? 1 : 2;
    cast(right_dir, 1);
    if (strong(y, right))
        cast(right_dir, 1);
    const int columns[3] = {left, x, right};
    const int32_t weights[3] = {1, 2, 1};
    for (int i = 0; i < 3; ++i)
        if (strong(below, columns[i]))
            cast(value(LH, below, columns[i]) < value(LV, below, columns[i]) ? 1 : 2, weights[i]);
}

void cfa_CalDirectionInfo(const FRAME *raw, const FRAME *AvgRGB, const FRAME *LH, const FRAME *LV,
                          const FRAME *SigH, const FRAME *SigV, FRAME *DirInfo, uint32_t bayer_id) {
    for (int y = 0; y < height_of(raw); ++y) {
        for (int x = 0; x < width_of(raw); ++x) {
            const uint32_t code = CM_GET_COLOR_ID(y, x, bayer_id);
            if (code == CODE_GB || code == CODE_GR)
                cal_dir_at_g(x, y, AvgRGB, LH, LV, SigH, SigV, DirInfo);
            else if (code == CODE_B || code == CODE_R)
                cal_dir_at_rb(x, y, LH, LV, SigH, SigV, DirInfo);
        }
    }
    publish_plane("DirInfo", DirInfo);
}
