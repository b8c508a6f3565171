#include <doctest/doctest.h>

#include "cmodel/cfa/src/kit/window.h"
#include "tests/support/planes.h"

using namespace cfa;

TEST_CASE("mirror_index reflects once about the edge sample") {
    const int n = 5;
    const int want[] = {2, 1, 0, 1, 2, 3, 4, 3, 2}; // of -2 .. 6
    for (int i = -2; i <= 6; i++)
        CHECK(mirror_index(i, n) == want[i + 2]);
    // Only once: an offset beyond n - 1 leaves the plane.
    CHECK(mirror_index(-3, 3) == 3);
    CHECK(mirror_index(5, 3) == -1);
}

TEST_CASE("a window reads the mirrored neighbourhood in whatever order it is moved") {
    Noise noise(1);
    const Plane plane = noise.plane(5, 4, 3, -9, 4095);
    Window<2> P(plane, 1);
    Window<1, 3> Q(plane, 2);
    for (int y : {0, 1, 2, 3, 1, 2, 0, 3, 3}) { // in steps of one row, and not
        P.move_to(y);
        Q.move_to(y);
        for (int x = 4; x >= 0; x--) {
            P.centre_on(x);
            Q.centre_on(x);
            for (int dy = -2; dy <= 2; dy++)
                for (int dx = -3; dx <= 3; dx++) {
                    INFO("y ", y, ", x ", x, ", dy ", dy, ", dx ", dx);
                    if (dx >= -2 && dx <= 2)
                        REQUIRE(P(dy, dx) == plane(y + dy, x + dx, 1));
                    if (dy >= -1 && dy <= 1)
                        REQUIRE(Q(dy, dx) == plane(y + dy, x + dx, 2));
                }
        }
    }
}
