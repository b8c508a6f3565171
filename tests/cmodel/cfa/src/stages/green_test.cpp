#include <doctest/doctest.h>

#include "cmodel/cfa/src/stages.h"
#include "tests/support/planes.h"
#include "tests/support/registers.h"

using namespace cfa;

TEST_CASE_FIXTURE(FreshRegisters, "cfa_CalGPixel: the sharpened candidate of a direction") {
    // Predicted 1, low-passed 1000: the correction hp counts by the register of the ratio, 8 of 32 at 0.
    struct {
        int32_t ratio, hp, min, max, l_max, green;
    } const rows[] = {{0, 32, 0, 4095, 0, 1008},
                      {511, 32, 0, 4095, 0, 1008},  // the last of entry 3
                      {512, 32, 0, 4095, 0, 1010},  // entry 4
                      {4095, 32, 0, 4095, 0, 1031}, // entry 31
                      {-128, 32, 0, 4095, 0, 1031}, // of a wrapped ratio the low five bits of the index count
                      {0, -1, 0, 4095, 0, 999},     // -8 >> 5 rounds down
                      {0, -16380, 0, 4095, 0, 0},   // limited to 12 bits
                      {0, -16380, 300, 4095, 0, 300},
                      {0, -16380, 300, 200, 0, 200}, // the lower bound first, so that max wins
                      {0, 32000, 0, 5000, 65534, 4095},
                      {0, 32000, 0, 5000, 65535, 1}}; // at the threshold: not sharpened
    const auto one = [](int32_t v) { return Plane(1, 1, 1, v); };
    const auto three = [](int32_t v) { return Plane(1, 1, 3, {-5, v, -6}); };
    for (const auto &row : rows)
        for (int32_t dir : {1, 2}) {
            INFO("direction ", dir, ", ratio ", row.ratio, ", hp ", row.hp, ", ", row.min, " to ", row.max);
            const auto only = [&](int32_t direction, int32_t v) { return one(direction == dir ? v : 2); };
            const Plane GH = three(dir), GV = three(3 - dir);
            CHECK(cfa_CalGPixel(one(7), 0, 0, GH, GV, three(row.max), three(row.min), only(1, 1000),
                                only(1, row.hp), only(2, 1000), only(2, row.hp), one(2), one(2),
                                one(row.l_max), only(1, row.ratio), only(2, row.ratio),
                                one(dir)) == row.green);
        }
}
