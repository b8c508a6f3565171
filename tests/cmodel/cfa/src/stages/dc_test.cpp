#include <algorithm>

#include <doctest/doctest.h>

#include "cmodel/cfa/src/stages.h"
#include "tests/support/planes.h"

TEST_CASE("copy_to_dst and gen_MaxRGB_1ch") {
    const Plane src(2, 2, 3, {1, 2, 3, 9, 8, 7, 5, 6, 4, -3, -1, -2}), dst(src, 3), largest(src, 1);
    copy_to_dst(src, dst);
    expect_plane("copy", dst, [&](int y, int x, int c) { return src(y, x, c); });
    gen_MaxRGB_1ch(src, largest);
    const int32_t want[] = {3, 9, 6, -1};
    expect_plane("max", largest, [&](int y, int x, int) { return want[2 * y + x]; });
}

TEST_CASE("gen_dst_dc") {
    Plane src(5, 5), dst(5, 5);
    src.set(2, 2, 0, 16);
    gen_dst_dc(src, dst);
    const int32_t want[] = {0, 1, 2, 1, 0};
    expect_plane("impulse", dst, [&](int y, int x, int) { return want[y] * want[x]; });
    gen_dst_dc(Plane(5, 5, 1, 70000), dst);
    expect_plane("deep", dst, [](int, int, int) { return 4095; });
    for_each_mosaic([](const Plane &raw, uint32_t) {
        const Plane dc(raw, 1);
        gen_dst_dc(raw, dc);
        expect_plane("dc", dc, [&](int y, int x, int) {
            return std::min(4095, weighted(raw, y, x, "121 242 121") >> 4);
        });
    });
}
