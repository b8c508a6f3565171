#include "cmodel/common/color_id.h"

#include <cassert>
#include <iterator>

using namespace cfa;

namespace {

// One pattern per id: a 2 x 2 grid in the first four entries for ids 0 to 3, else a
// 4 x 4 grid, rows top to bottom.
// clang-format off
constexpr uint8_t PATTERNS[20][16] = {
    {0, 1,  2, 3},                                                     //  0: B Gb / Gr R
    {1, 0,  3, 2},                                                     //  1: Gb B / R Gr
    {2, 3,  0, 1},                                                     //  2: Gr R / B Gb
    {3, 2,  1, 0},                                                     //  3: R Gr / Gb B
    {7, 7, 7, 7}, {7, 7, 7, 7}, {7, 7, 7, 7}, {7, 7, 7, 7},            //  4 to 7. Kept: 7 on row 0, then 0
    {16,  3, 16,  0,  19, 17, 18, 17,  16,  0, 16,  3,  18, 17, 19, 17}, //  8
    { 3, 16,  0, 16,  17, 18, 17, 19,   0, 16,  3, 16,  17, 19, 17, 18}, //  9
    {16,  0, 16,  3,  18, 17, 19, 17,  16,  3, 16,  0,  19, 17, 18, 17}, // 10
    { 0, 16,  3, 16,  17, 19, 17, 18,   3, 16,  0, 16,  17, 18, 17, 19}, // 11
    {18, 17, 19, 17,  16,  3, 16,  0,  19, 17, 18, 17,  16,  0, 16,  3}, // 12
    {17, 19, 17, 18,   3, 16,  0, 16,  17, 18, 17, 19,   0, 16,  3, 16}, // 13
    {17, 18, 17, 19,   0, 16,  3, 16,  17, 19, 17, 18,   3, 16,  0, 16}, // 14
    {19, 17, 18, 17,  16,  0, 16,  3,  18, 17, 19, 17,  16,  3, 16,  0}, // 15
    {}, {}, {}, {},                                                    // 16 to 19: all 0
};
// clang-format on

} // namespace

uint32_t CM_GET_COLOR_ID(uint32_t row, uint32_t col, uint32_t bayer_id) {
    assert(bayer_id < std::size(PATTERNS));
    if (bayer_id < 4)
        return PATTERNS[bayer_id][2 * (row & 1) + (col & 1)];
    return PATTERNS[bayer_id][4 * (row & 3) + (col & 3)];
}
