// The integer square root of the kit, by table and linear interpolation.
#include <array>
#include <cstddef>
#include <cstdint>

#include "cmodel/cfa/src/kit/fixed_point.h"
#include "cmodel/common/curve.h"

namespace {

constexpr int breakpoints = 258;

struct RootTable {
    std::array<int32_t, breakpoints + 2> x{}; // the two entries behind the last breakpoint stay zero
    std::array<int32_t, breakpoints + 2> y{};
};

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

// Up to the value 253 a breakpoint is the smallest multiple of 4 whose root rounds to the wanted value;
// above, a multiple of 32768, in runs whose steps grow.
constexpr RootTable make_root_table() {
    RootTable table;
    size_t n = 1; // entry 0 is (0, 0)
    for (int32_t r = 4; r <= 253; r += r < 8 ? 2 : r < 25 ? 1 : r < 121 ? 2 : 3) {
        table.x[n] = (r * (r - 1) / 4 + 1) * 4;
        table.y[n] = r;
        n++;
    }

    struct Run {
        int32_t from, to, steps, first_step; // in units of 32768
    };
    constexpr std::array<Run, 5> runs{
        {{3, 3, 1, 0}, {3, 11, 2, 4}, {11, 8066, 85, 4}, {8066, 32129, 56, 256}, {32129, 32767, 1, 638}}};
    for (const Run &run : runs) {
        const int32_t rest = run.to - run.from - run.first_step * run.steps;
        for (int32_t j = 1; j <= run.steps; j++) {
            const int32_t growth = rest * (j * (j + 1)) / (run.steps * (run.steps + 1));
            table.x[n] = (run.from + run.first_step * j + growth) * 32768;
            table.y[n] = rounded_root(table.x[n]);
            n++;
        }
    }
    return table;
}

constexpr RootTable root = make_root_table();

} // namespace

int32_t lut_intp(int32_t x) {
    if (x < root.x[0])
        return root.y[0];
    if (x > root.x[breakpoints - 1])
        return root.y[breakpoints - 1];
    int k = 0;
    while (k < breakpoints && !(root.x[k] <= x && x < root.x[k + 1]))
        k++;
    // Kept: exactly at the last breakpoint k runs on to the zero entries, and the root of 1073709056 is 0.
    return CM_SingleIntp(root.x[k], root.x[k + 1], root.y[k], root.y[k + 1], x);
}
