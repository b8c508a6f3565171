#include "tests/support/reciprocals.h"

#include <cstdint>
#include <limits>

#include <doctest/doctest.h>

TEST_CASE("reciprocal equals get_inv: wherever a kernel reads it, at powers of two, at both ends of int32") {
    constexpr int64_t least = std::numeric_limits<int32_t>::min();
    constexpr int64_t largest = std::numeric_limits<int32_t>::max();
    CHECK(count_reciprocal_differences(-70000, 1200000) == 0);
    for (int bit = 20; bit < 31; ++bit) {
        CHECK(count_reciprocal_differences((int64_t{1} << bit) - 2000, 4000) == 0);
        CHECK(count_reciprocal_differences(-(int64_t{1} << bit) - 2000, 4000) == 0);
    }
    CHECK(count_reciprocal_differences(least, 100000) == 0);
    CHECK(count_reciprocal_differences(largest - 99999, 100000) == 0);
    CHECK(count_reciprocal_below_2048_differences() == 0);
}
