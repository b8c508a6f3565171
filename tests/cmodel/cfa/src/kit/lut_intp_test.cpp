#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <iterator>

#include <doctest/doctest.h>

#include "cmodel/cfa/src/kit/fixed_point.h"

using namespace cfa;

TEST_CASE("lut_intp: square root by table") {
    const int32_t xs[] = {0,         16,         32,         60,        76,    92,        112,    136,
                          604,       704,        14524,      15256,     63760, 98304,     229376, 360448,
                          264306688, 1052803072, 1073709057, INT32_MAX, -5,    INT32_MIN, 8,      24};
    const int32_t roots[] = {0,   4,   6,   8,   9,     10,    11,    12,    25, 27, 121, 124,
                             253, 314, 479, 600, 16258, 32447, 32767, 32767, 0,  0,  2,   5};
    for (size_t i = 0; i < std::size(xs); i++) {
        CAPTURE(xs[i]);
        CHECK(lut_intp(xs[i]) == roots[i]);
    }
    CHECK(lut_intp(1073709056) == 0);                      // kept: exactly the last breakpoint
    for (int32_t x = 60; x < 264306688; x += x / 97 + 1) { // between breakpoints a little less
        CAPTURE(x);
        REQUIRE(std::abs(lut_intp(x) - std::sqrt(x)) < 1.0 + std::sqrt(x) / 40);
    }
    // In the last interval the product wraps: (32767 - 32447) * 15000000 = 4800000000 - 2^32 = 505032704,
    // over 20905984 is 24.
    CHECK(lut_intp(1052803072 + 15000000) == 32447 + 24);
}
