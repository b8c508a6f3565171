#include <doctest/doctest.h>

#include "cmodel/cfa/src/stages.h"
#include "tests/support/planes.h"

namespace {

// One candidate picture along one direction at (y, x); the unit step is (ey, ex).
int32_t variation(const Plane &G, int y, int x, int ey, int ex) {
    const auto sample_at = [&](int k, int c) { return G(y + k * ey, x + k * ex, c); };
    const auto diff = [&](int k, int c) { return absolute(sample_at(k, c) - sample_at(k, 1)); };
    const auto spread = [&](int k, int c) { // five times the distance from the mean of the five
        int32_t sum = 0;
        for (int i = -2; i <= 2; i++)
            sum += diff(i, c);
        return absolute(sum - 5 * diff(k, c));
    };
    const auto step = [&](int k, int c) { return absolute(sample_at(k + 1, c) - sample_at(k, c)); };
    int32_t total = 0;
    for (int k = -2; k <= 2; k++)
        total += (spread(k, 0) + spread(k, 2)) >> 1;
    for (int k = -2; k < 2; k++)
        total += (step(k, 0) + step(k, 2)) >> 1;
    return limited((total * 3925) >> 10, 131071);
}

void compare(const Plane &GH, const Plane &GV, uint32_t id) {
    Plane SigH(GH.width(), GH.height(), 1, -7), SigV(GH.width(), GH.height(), 1, -7);
    cfa_CalVarOfColorDiffAtG(SigH, GH, GV, SigH, SigV, id);
    const auto green = [id](int y, int x) { return code_at(y, x, id) == 1 || code_at(y, x, id) == 2; };
    expect_plane("SigH", SigH,
                 [&](int y, int x, int) { return green(y, x) ? variation(GH, y, x, 0, 1) : -7; });
    expect_plane("SigV", SigV,
                 [&](int y, int x, int) { return green(y, x) ? variation(GV, y, x, 1, 0) : -7; });
}

} // namespace

TEST_CASE("cfa_CalVarOfColorDiffAtG: worked by hand") {
    // Red stands out of a green of 0 in one column. Height 1: the differences are 0 0 1 0 0 with the sum 1;
    // four distances of 1 and one of 4, halved one by one: 2; steps of 1, halved: 0. 2 * 3925 >> 10 = 7.
    // Height 2: four times 1, one 4, two steps of 1: 10 * 3925 >> 10 = 38.
    for (const auto &[peak, sig] : {std::pair{1, 7}, std::pair{2, 38}}) {
        Plane GH(7, 5, 3, 0);
        for (int y = 0; y < 5; y++)
            GH.set(y, 3, 0, peak);
        const Plane SigH(GH, 1), SigV(GH, 1);
        cfa_CalVarOfColorDiffAtG(SigH, GH, GH, SigH, SigV, 0);
        CHECK(SigH(2, 3) == sig);
        CHECK(SigV(2, 3) == 0);
        CHECK(SigH(2, 2) == 0); // blue: left alone
    }
    const Plane flat(6, 4, 3, 2000), SigH(flat, 1), SigV(flat, 1);
    cfa_CalVarOfColorDiffAtG(SigH, flat, flat, SigH, SigV, 1);
    expect_plane("flat", SigH, [](int, int, int) { return 0; });
}

TEST_CASE("cfa_CalVarOfColorDiffAtG: every site") {
    for (uint32_t id : {0u, 1u, 2u, 3u, 8u}) {
        CAPTURE(id);
        Noise noise(id);
        compare(noise.plane(9, 8, 3, 0, 4095), noise.plane(9, 8, 3, 0, 4095), id); // often limited to 131071
        compare(noise.plane(9, 8, 3, 900, 1100), noise.plane(9, 8, 3, 900, 1100), id);
        compare(noise.plane(9, 8, 3, 0, 1), noise.plane(9, 8, 3, 0, 1), id);
        compare(noise.plane(9, 8, 3, 4094, 4095), noise.plane(9, 8, 3, 4094, 4095), id);
        compare(noise.plane(4, 3, 3, 0, 1 << 24), noise.plane(4, 3, 3, 0, 1 << 24), id); // x 3925 wraps
    }
}
