#include <doctest/doctest.h>

#include "cmodel/cfa/src/stages.h"
#include "tests/support/planes.h"
#include "tests/support/registers.h"

TEST_CASE_FIXTURE(FreshRegisters, "cfa_CalGPixel: the sharpened horizontal candidate") {
    // Predicted 1, low-passed 1000: the correction h_hp counts by the register of the ratio, 8 of 32 at 0.
    struct {
        int32_t ratio, h_hp, min, max, l_max, green;
    } const rows[] = {{0, 32, 0, 4095, 0, 1008},     {511, 32, 0, 4095, 0, 1008}, // the last of entry 3
                      {512, 32, 0, 4095, 0, 1010},   {4095, 32, 0, 4095, 0, 1031},
                      {-128, 32, 0, 4095, 0, 1031}, // of a wrapped ratio the low five bits of the index count
                      {0, -1, 0, 4095, 0, 999},     // -8 >> 5 rounds down
                      {0, -16380, 0, 4095, 0, 0},    {0, -16380, 300, 4095, 0, 300},
                      {0, -16380, 300, 200, 0, 200}, // the lower bound first, so that max wins
                      {0, 32000, 0, 5000, 0, 4095},  {0, 32000, 0, 5000, 65534, 4095},
                      {0, 32000, 0, 5000, 65535, 1}}; // at the threshold: not sharpened
    const auto one = [](int32_t v) { return Plane(1, 1, 1, v); };
    const auto three = [](int32_t v) { return Plane(1, 1, 3, {-5, v, -6}); };
    const Plane other = one(2);
    for (const auto &row : rows) {
        INFO("ratio ", row.ratio, ", h_hp ", row.h_hp, ", ", row.min, " to ", row.max, ", LMax ", row.l_max);
        CHECK(cfa_CalGPixel(one(7), 0, 0, three(1), three(2), three(row.max), three(row.min), one(1000),
                            one(row.h_hp), other, other, other, other, one(row.l_max), one(row.ratio), other,
                            one(1)) == row.green);
    }
}
