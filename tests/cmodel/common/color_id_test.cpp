#include "cmodel/common/color_id.h"

#include <doctest/doctest.h>

#include <initializer_list>

using namespace cfa;

TEST_CASE("2 x 2 patterns: blue and red on a diagonal, each with its green beside it") {
    // Row and column of blue for ids 0 to 3; the code follows from the distance to it.
    const uint32_t blue[4][2] = {{0, 0}, {0, 1}, {1, 0}, {1, 1}};
    for (uint32_t id = 0; id < 4; id++)
        for (uint32_t row = 0; row < 6; row++)
            for (uint32_t col = 0; col < 6; col++) {
                const bool blue_row = row % 2 == blue[id][0];
                const bool blue_col = col % 2 == blue[id][1];
                const uint32_t want =
                    blue_row ? (blue_col ? CODE_B : CODE_GB) : (blue_col ? CODE_GR : CODE_R);
                INFO("id ", id, " row ", row, " col ", col);
                CHECK(CM_GET_COLOR_ID(row, col, id) == want);
            }
}

TEST_CASE("4 x 4 patterns: eight shifts of one pattern") {
    const uint32_t pattern[4][4] = {{16, 3, 16, 0}, {19, 17, 18, 17}, {16, 0, 16, 3}, {18, 17, 19, 17}};
    const uint32_t shifts[8][2] = {{0, 0}, {0, 1}, {0, 2}, {0, 3},
                                   {3, 0}, {3, 1}, {3, 3}, {3, 2}}; // rows, columns
    for (uint32_t id = 8; id < 16; id++)
        for (uint32_t row = 0; row < 8; row++)
            for (uint32_t col = 0; col < 8; col++) {
                INFO("id ", id, " row ", row, " col ", col);
                CHECK(CM_GET_COLOR_ID(row, col, id) ==
                      pattern[(row + shifts[id - 8][0]) % 4][(col + shifts[id - 8][1]) % 4]);
            }
}

TEST_CASE("unused ids: 4 to 7 hold 7 in the first row of four, 16 to 19 nothing") {
    for (uint32_t id : {4u, 5u, 6u, 7u, 16u, 17u, 18u, 19u})
        for (uint32_t row = 0; row < 8; row++)
            for (uint32_t col = 0; col < 8; col++)
                CHECK(CM_GET_COLOR_ID(row, col, id) == (id < 8 && row % 4 == 0 ? 7 : 0));
}
