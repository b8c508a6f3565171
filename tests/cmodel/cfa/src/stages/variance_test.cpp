#include <doctest/doctest.h>

#include "cmodel/cfa/src/stages.h"
#include "tests/support/planes.h"

using namespace cfa;

TEST_CASE("cfa_CalVarOfColorDiffAtG: worked by hand") {
    // Red stands out of a green of 0 in one column. Height 1: the differences are 0 0 1 0 0 with the sum 1;
    // four distances of 1 and one of 4, halved one by one: 2; steps of 1, halved: 0. 2 * 3925 >> 10 = 7.
    // Height 2: four times 1, one 4, two steps of 1: 10 * 3925 >> 10 = 38. Higher: limited; wrapped below 0.
    struct {
        int32_t peak, sig;
    } const rows[] = {{1, 7}, {2, 38}, {6838, 131050}, {6840, 131071}, {200000, 0}};
    for (const auto &row : rows) {
        CAPTURE(row.peak);
        Plane GH(7, 5, 3), GV(7, 5, 3);
        for (int y = 0; y < 5; y++)
            GH.set(y, 3, 0, row.peak);
        for (int x = 0; x < 7; x++)
            GV.set(2, x, 2, row.peak);
        const Plane SigH(7, 5, 1, -7), SigV(7, 5, 1, -7);
        cfa_CalVarOfColorDiffAtG(SigH, GH, GV, SigH, SigV, 0);
        CHECK(SigH(2, 3) == row.sig);
        CHECK(SigV(2, 3) == row.sig);
        CHECK(SigH(2, 2) == -7); // blue: left alone
        CHECK(SigV(2, 2) == -7);
        cfa_CalVarOfColorDiffAtG(SigH, GV, GH, SigH, SigV, 0);
        CHECK(SigH(2, 3) == 0);
        CHECK(SigV(2, 3) == 0);
    }
}
