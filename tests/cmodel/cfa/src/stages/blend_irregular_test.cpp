// Green, red and blue from candidates, weights and limits that no mosaic of 12 bits gives.
#include <doctest/doctest.h>

#include "cmodel/cfa/src/reg_parse/cfa_reg.h"
#include "cmodel/cfa/src/stages.h"
#include "tests/support/planes.h"
#include "tests/support/registers.h"

using namespace cfa;

namespace {

Plane one(int32_t v) {
    return {2, 2, 1, v};
}
Plane three(int32_t v) {
    return {2, 2, 3, v};
}

// Both directions alike, blended in 64 bits: weights of 1, 1023 and 16760831, whose sums have the reciprocals
// 16384, 16 and 9.
struct {
    int32_t variance, candidate, blend;
} const blends[] = {{0, -1, 0},
                    {131071, 100000, 4095},    // 2046 * 100000 * 16 is beyond 32 bits
                    {131071, 2000000, 4095},   // 2046 * 2000000 is
                    {INT32_MAX, 786432, 4095}, // 33521662 * 786432 * 9 >> 15 is
                    {131071, 3000, 2997}};     // 2046 * 3000 * 16 >> 15

} // namespace

TEST_CASE_FIXTURE(FreshRegisters, "cfa_CalGPixel: corrections, limits, blends") {
    const auto green = [](int32_t dir, int32_t predicted, int32_t ratio, int32_t hp, int32_t min, int32_t max,
                          int32_t l_max, int32_t variance) {
        return cfa_CalGPixel(one(7), 1, 1, three(predicted), three(predicted), three(max), three(min),
                             one(1000), one(hp), one(1000), one(hp), one(variance), one(variance), one(l_max),
                             one(ratio), one(ratio), one(dir));
    };
    struct {
        int32_t ratio, hp, min, max, green;
    } const rows[] = {
        {-128, 32, 0, 4095, 1031},  // index -1 is 31, of the low five bits: the whole correction but 1/32
        {0, -16380, 300, 200, 200}, // the lower bound first, so that max wins
        {0, 1 << 28, 0, 4095, 0}};  // 8 * 2^28 wraps below 0
    for (const auto &row : rows)
        for (const int32_t dir : {1, 2}) {
            INFO("direction ", dir, ", ratio ", row.ratio, ", hp ", row.hp);
            CHECK(green(dir, 1, row.ratio, row.hp, row.min, row.max, 0, 0) == row.green);
        }
    for (const auto &row : blends) // not sharpened
        CHECK(green(0, row.candidate, 0, 0, -9, INT32_MAX, 65535, row.variance) == row.blend);
}

TEST_CASE_FIXTURE(FreshRegisters, "cfa_CalRBPixel: targets, blends") {
    const auto pixel = [](int32_t candidate, int32_t variance, int32_t target) {
        const Plane raw(2, 2, 1, {-9, 0, 9000, 0}), sig = one(variance), candidates = three(candidate);
        return cfa_CalRBPixel(raw, 1, 1, candidates, candidates, sig, sig, one(0), target);
    };
    for (const auto &row : blends)
        for (const int32_t target : {0, 3})
            CHECK(pixel(row.candidate, row.variance, target) == row.blend);
    for (const int32_t target : {-1, 1, 2, 4, INT32_MAX})
        CHECK(pixel(3000, 0, target) == 0);
}
