#include <doctest/doctest.h>

#include "cmodel/cfa/src/stages.h"
#include "tests/support/planes.h"
#include "tests/support/registers.h"

using namespace cfa;

namespace {

Plane weight(const Plane &gh, const Plane &gv) {
    Plane wt(gh, 1);
    cfa_CalPhaseDifference(wt, gh, gv, wt);
    return wt;
}

} // namespace

TEST_CASE_FIXTURE(FreshRegisters, "cfa_CalPhaseDifference: an impulse by hand") {
    const Plane flat(9, 9, 3, 500);
    Plane impulse = flat;
    impulse.set(4, 4, 1, 1300);
    impulse.set(4, 4, 0, 4095); // not read
    const Plane wt = weight(impulse, flat);
    // H1 is 800 one and two columns off the impulse; down those columns 6, 4 and 1 times 800, over 16: 300,
    // 200, 50, and 123/128 of it: 288, 192, 48. The curve rises from 150.
    const int32_t column[] = {0, 0, 0, 3439, 4095, 3439, 0, 0, 0}; // 42 * 83865 >> 10
    expect_plane("impulse", wt,
                 [&](int y, int x, int) { return x == 2 || x == 3 || x == 5 || x == 6 ? column[y] : 0; });
    expect_plane("transposed", weight(flat, impulse), [&](int y, int x, int) { return wt(x, y); });
    expect_plane("constant", weight(flat, flat), [](int, int, int) { return 0; });
    Plane ramp(9, 9, 3);
    for (int i = 0; i < 81; i++)
        ramp.set(i / 9, i % 9, 1, 400 * (i % 9));
    expect_plane("ramp along the row", weight(ramp, flat), [](int, int, int) { return 0; });
}
