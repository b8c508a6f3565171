// The integer square root of the kit, by table and linear interpolation.
#include <array>
#include <cstddef>
#include <cstdint>

#include "cmodel/cfa/src/kit/fixed_point.h"
#include "cmodel/common/curve.h"

namespace {

// Breakpoints below 65536 in units of 4, above in units of 32768.
// clang-format off
constexpr int32_t SMALL[] = {
    0, 4, 8, 15, 19, 23, 28, 34, 40, 46, 53, 61, 69, 77, 86, 96, 106, 116, 127, 139, 151, 176, 204, 233, 265,
    298, 334, 371, 411, 452, 496, 541, 589, 638, 690, 743, 799, 856, 916, 977, 1041, 1106, 1174, 1243, 1315,
    1388, 1464, 1541, 1621, 1702, 1786, 1871, 1959, 2048, 2140, 2233, 2329, 2426, 2526, 2627, 2731, 2836,
    2944, 3053, 3165, 3278, 3394, 3511, 3631, 3814, 4001, 4193, 4390, 4591, 4796, 5006, 5221, 5440, 5663,
    5891, 6124, 6361, 6602, 6848, 7099, 7354, 7613, 7877, 8146, 8419, 8696, 8978, 9265, 9556, 9851, 10151,
    10456, 10765, 11078, 11396, 11719, 12046, 12377, 12713, 13054, 13399, 13748, 14102, 14461, 14824, 15191,
    15563, 15940,
};
constexpr int32_t LARGE[] = {
    3, 7, 11, 17, 25, 35, 48, 62, 79, 98, 118, 141, 167, 194, 223, 255, 288, 324, 362, 401, 443, 488, 534,
    582, 633, 685, 740, 797, 855, 916, 979, 1045, 1112, 1181, 1253, 1327, 1402, 1480, 1560, 1642, 1727, 1813,
    1901, 1992, 2085, 2179, 2276, 2375, 2476, 2579, 2685, 2792, 2902, 3013, 3127, 3243, 3361, 3481, 3603,
    3728, 3854, 3983, 4113, 4246, 4381, 4518, 4657, 4798, 4941, 5087, 5234, 5384, 5536, 5690, 5846, 6004,
    6164, 6326, 6491, 6657, 6826, 6997, 7170, 7344, 7522, 7701, 7882, 8066, 8328, 8596, 8870, 9150, 9437,
    9729, 10028, 10333, 10644, 10961, 11284, 11613, 11948, 12289, 12637, 12990, 13350, 13716, 14087, 14465,
    14849, 15239, 15636, 16038, 16446, 16861, 17281, 17708, 18141, 18579, 19024, 19475, 19933, 20396, 20865,
    21341, 21822, 22310, 22803, 23303, 23809, 24321, 24839, 25363, 25893, 26430, 26972, 27521, 28075, 28636,
    29203, 29776, 30355, 30940, 31531, 32129, 32767,
};
// clang-format on
constexpr size_t BREAKPOINTS = std::size(SMALL) + std::size(LARGE); // 258

// round(sqrt(x)): the largest r with (r - 1/2)^2 <= x, that is r * (r - 1) < x.
constexpr int32_t rounded_root(int64_t x) {
    int64_t low = 0;
    int64_t high = 32767;
    while (low < high) {
        const int64_t r = (low + high + 1) / 2;
        if (r * (r - 1) < x)
            low = r;
        else
            high = r - 1;
    }
    return static_cast<int32_t>(low);
}

struct RootTable {
    std::array<int32_t, BREAKPOINTS + 2> x{}; // the two entries behind the last breakpoint stay zero
    std::array<int32_t, BREAKPOINTS + 2> y{};
};

constexpr RootTable ROOT = [] {
    RootTable table;
    for (size_t n = 0; n < BREAKPOINTS; ++n) {
        table.x[n] = n < std::size(SMALL) ? SMALL[n] * 4 : LARGE[n - std::size(SMALL)] * 32768;
        table.y[n] = rounded_root(table.x[n]);
    }
    return table;
}();

} // namespace

int32_t lut_intp(int32_t x) {
    if (x < ROOT.x[0])
        return ROOT.y[0];
    if (x > ROOT.x[BREAKPOINTS - 1])
        return ROOT.y[BREAKPOINTS - 1];
    size_t k = 0;
    while (k < BREAKPOINTS && !(ROOT.x[k] <= x && x < ROOT.x[k + 1]))
        ++k;
    // Kept: exactly at the last breakpoint k runs on to the zero entries, and the root of 1073709056 is 0.
    return CM_SingleIntp(ROOT.x[k], ROOT.x[k + 1], ROOT.y[k], ROOT.y[k + 1], x);
}
