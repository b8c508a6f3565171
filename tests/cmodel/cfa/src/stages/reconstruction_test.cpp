#include <doctest/doctest.h>

#include "cmodel/cfa/src/stages.h"
#include "tests/support/planes.h"
#include "tests/support/registers.h"

using namespace cfa;

TEST_CASE_FIXTURE(FreshRegisters, "cfa_CalRGB: codes beyond 3 repeat the pixel before, 0 before the first") {
    const Plane raw(5, 3, 1, {0, 101, 0, 103, 0, -1, 106, 0, 108, 0, 0, -256, 0, -257, 0});
    Plane G(raw, 3), most(5, 3, 3, 4095), zero3(raw, 3), zero(raw, 1), rgb(raw, 3);
    for (int i = 0; i < 45; i++)
        G.set(i / 15, i / 3 % 5, i % 3, 10 * (i % 3 + 1));
    cfa_reg.hw.reg_cfa_ghp_thd = 0; // not sharpened: both candidates and every blend are G
    // Red at (0, 1) and (2, 3), blue at (0, 3) and (2, 1), as they are; no other code below 4.
    cfa_CalRGB(raw, rgb, G, G, zero, zero, zero, zero, most, zero3, zero, zero, zero, zero, zero, zero, 8);
    const int32_t red[] = {0, 101, 101, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10, -257, -257};
    const int32_t blue[] = {0, 30, 30, 103, 103, 103, 103, 103, 103, 103, 103, -256, -256, 30, 30};
    expect_plane("RGB", rgb, [&](int y, int x, int c) {
        const int i = 5 * y + x;
        return c == 0 ? red[i] : c == 2 ? blue[i] : i == 0 ? 0 : 20;
    });
    cfa_CalRGB(raw, rgb, G, G, zero, zero, zero, zero, most, zero3, zero, zero, zero, zero, zero, zero, 0);
    CHECK(rgb(1, 0, 1) == -1); // green, as it is too
}
