#include "cmodel/cfa/src/kit/window.h"

#include <doctest/doctest.h>

#include "tests/support/planes.h"

using namespace cfa;

TEST_CASE("a window reads the mirrored neighbourhood in whatever order it is moved") {
    const Plane plane = Noise(1).plane(5, 4, 3, -9, 4095);
    Window<2, 3> P(plane, 1);
    for (const int y : {0, 1, 2, 3, 1, 2, 0, 3, 3}) { // in steps of one row, and not
        P.move_to(y);
        for (int i = 0; i < 5 * 5 * 7; ++i) {
            const int x = 4 - i / 35, dy = i / 7 % 5 - 2, dx = i % 7 - 3;
            INFO("y ", y, ", x ", x, ", dy ", dy, ", dx ", dx);
            P.centre_on(x);
            REQUIRE(P(dy, dx) == plane(y + dy, x + dx, 1));
        }
    }
}
