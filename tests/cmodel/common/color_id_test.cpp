#include "cmodel/common/color_id.h"

#include <doctest/doctest.h>

using namespace cfa;

TEST_CASE("blue and red on a diagonal with their greens beside them; eight shifts of one 4 x 4 pattern; "
          "unused ids") {
    const uint32_t pattern[4][4] = {{16, 3, 16, 0}, {19, 17, 18, 17}, {16, 0, 16, 3}, {18, 17, 19, 17}};
    // By how much the pattern of an id is shifted: ids 0 to 3 from B Gb / Gr R, ids 8 to 15 from the one
    // above.
    const uint32_t shifts[16][2] = {{0, 0}, {0, 1}, {1, 0}, {1, 1}, {},     {},     {},     {},
                                    {0, 0}, {0, 1}, {0, 2}, {0, 3}, {3, 0}, {3, 1}, {3, 3}, {3, 2}};
    for (uint32_t id = 0; id < 20; ++id)
        for (uint32_t row = 0; row < 8; ++row)
            for (uint32_t col = 0; col < 8; ++col) {
                INFO("id ", id, " row ", row, " col ", col);
                const uint32_t y = id < 16 ? row + shifts[id][0] : 0, x = id < 16 ? col + shifts[id][1] : 0;
                const uint32_t want = id < 4                   ? y % 2 * 2 + x % 2
                                      : id >= 8 && id < 16     ? pattern[y % 4][x % 4]
                                      : id < 8 && row % 4 == 0 ? 7
                                                               : 0;
                CHECK(CM_GET_COLOR_ID(row, col, id) == want);
            }
}
