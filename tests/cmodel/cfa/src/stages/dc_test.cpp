#include <doctest/doctest.h>

#include "cmodel/cfa/src/stages.h"
#include "tests/support/planes.h"

using namespace cfa;

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
    src.set(2, 2, 0, -1);
    gen_dst_dc(src, dst); // rounds down
    expect_plane("below 0", dst, [&](int y, int x, int) { return want[y] * want[x] == 0 ? 0 : -1; });
    for (const auto &[sample, dc] : {std::pair{70000, 4095}, std::pair{-257, -257}}) {
        gen_dst_dc(Plane(5, 5, 1, sample), dst);
        expect_plane("flat", dst, [dc = dc](int, int, int) { return dc; });
    }
}
