#include "cmodel/cfa/src/lines/kernels/reciprocal.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

#include <doctest/doctest.h>

#include "cmodel/cfa/src/kit/fixed_point.h"

using namespace cfa;

namespace {

constexpr Index AT_A_TIME = 4096;

CFA_KERNEL void reciprocals(int32_t first, int32_t *out, Index count) {
    CFA_LOOP
    for (Index i = 0; i < count; ++i)
        out[i] = reciprocal(first + static_cast<int32_t>(i));
}

CFA_KERNEL void reciprocals_below_2048(int32_t *out) {
    CFA_LOOP
    for (Index i = 1; i < 2048; ++i)
        out[i] = reciprocal_below_2048(static_cast<int32_t>(i));
}

int64_t count_reciprocal_differences(int64_t first, int64_t count) {
    int64_t differences = 0;
    for (int64_t end = first + count; first < end; first += AT_A_TIME) {
        const Index n = std::min<Index>(AT_A_TIME, end - first);
        int32_t got[AT_A_TIME];
        reciprocals(static_cast<int32_t>(first), got, n);
        for (Index i = 0; i < n; ++i)
            differences += got[i] != get_inv(static_cast<int32_t>(first + i));
    }
    return differences;
}

int64_t count_reciprocal_below_2048_differences() {
    int32_t got[2048];
    reciprocals_below_2048(got);
    int64_t differences = 0;
    for (int32_t x = 1; x < 2048; ++x)
        differences += got[x] != get_inv(x);
    return differences;
}

} // namespace

TEST_CASE("reciprocal equals get_inv: wherever a kernel reads it, at powers of two, at both ends of int32") {
    if (std::getenv("CFA_TEST_ROUNDS") != nullptr) // every int32, in a minute
        CHECK(count_reciprocal_differences(-(int64_t{1} << 31), int64_t{1} << 32) == 0);
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
