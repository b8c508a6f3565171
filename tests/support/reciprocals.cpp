#include "tests/support/reciprocals.h"

#include <algorithm>

#include "cmodel/cfa/src/kit/fixed_point.h"
#include "cmodel/cfa/src/lines/kernels/reciprocal.h"

using namespace cfa;

namespace {

constexpr Index AT_A_TIME = 4096;

} // namespace

CFA_KERNEL static void reciprocals(int32_t first, int32_t *out, Index count) {
    CFA_LOOP
    for (Index i = 0; i < count; i++)
        out[i] = reciprocal(first + static_cast<int32_t>(i));
}

CFA_KERNEL static void reciprocals_below_2048(int32_t *out) {
    CFA_LOOP
    for (Index i = 1; i < 2048; i++)
        out[i] = reciprocal_below_2048(static_cast<int32_t>(i));
}

int64_t count_reciprocal_differences(int64_t first, int64_t count) {
    int64_t differences = 0;
    for (int64_t end = first + count; first < end; first += AT_A_TIME) {
        const Index n = std::min<Index>(AT_A_TIME, end - first);
        int32_t got[AT_A_TIME];
        reciprocals(static_cast<int32_t>(first), got, n);
        for (Index i = 0; i < n; i++)
            differences += got[i] != get_inv(static_cast<int32_t>(first + i));
    }
    return differences;
}

int64_t count_reciprocal_below_2048_differences() {
    int32_t got[2048];
    reciprocals_below_2048(got);
    int64_t differences = 0;
    for (int32_t x = 1; x < 2048; x++)
        differences += got[x] != get_inv(x);
    return differences;
}
