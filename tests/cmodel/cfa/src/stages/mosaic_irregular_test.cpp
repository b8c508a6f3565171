// What reads the mosaic, on samples below 0, deep ones and sums that wrap at 32 bits.
#include <algorithm>

#include <doctest/doctest.h>

#include "cmodel/cfa/src/stages.h"
#include "tests/support/planes.h"

using namespace cfa;

TEST_CASE("cfa_CalAvg: limits, and twelfths that wrap") {
    struct {
        int32_t sample, limited, twelfth;
    } const rows[] = {{-257, 0, 0}, {1 << 22, 4095, 0}}; // 12 * 85 * 2^22 + 512 wraps below 0
    for (const auto &row : rows) {
        const Plane avg(4, 4, 3);
        cfa_CalAvg(Plane(4, 4, 1, row.sample), avg, 0);
        expect_plane("AvgRGB", avg, [&](int y, int x, int c) {
            return c == 1 || y % 2 == x % 2 ? row.limited : row.twelfth;
        });
    }
}

TEST_CASE("cfa_CalPredictPixel: halves round up below 0 too, and minima are not limited") {
    Plane raw(5, 5);
    raw.set(2, 2, 0, -5); // blue
    raw.set(2, 3, 0, -4); // green
    const Plane color(raw, 3), H(raw, 1), V(raw, 1), hp(raw, 1), min(raw, 3);
    cfa_CalPredictPixel(raw, color, color, H, hp, V, hp, color, min, 0);
    CHECK(H(2, 2) == -2); // -3 >> 1
    CHECK(V(3, 3) == -2);
    CHECK(hp(2, 3) == 0); // green
    CHECK(min(2, 2, 1) == -4);
    CHECK(min(2, 2, 2) == -5);
}

namespace {

struct Classes {
    Plane LH, LV, LMax, RatioH, RatioV;

    Classes(const Plane &raw, uint32_t id)
        : LH(raw, 1), LV(raw, 1), LMax(raw, 1), RatioH(raw, 1), RatioV(raw, 1) {
        cfa_CalClassifier(raw, LH, LV, LMax, RatioH, RatioV, id);
    }
};

} // namespace

TEST_CASE("cfa_CalClassifier: the ratio is not limited below") {
    struct {
        int32_t own, left_and_above, right_and_below, ratio;
    } const rows[] = {{-257, -257, -257, -1052672},   // below 1 the reciprocal is 32768
                      {0, -257, 0, -528384},          // -257 >> 1 is -129
                      {1, 1, 1, 4095},                // 4096 is limited
                      {3, -1, -1, -1366},             // -10922 >> 3 rounds down
                      {0, 65536, 65536, -(1 << 28)}}; // 2^31 wraps
    for (const auto &row : rows) {
        Plane raw(5, 5, 1, row.own);
        raw.set(1, 2, 0, row.left_and_above), raw.set(2, 1, 0, row.left_and_above);
        raw.set(3, 2, 0, row.right_and_below), raw.set(2, 3, 0, row.right_and_below);
        const Classes classes(raw, 0);
        CHECK(classes.RatioH(2, 2) == row.ratio);
        CHECK(classes.RatioV(2, 2) == row.ratio);
        CHECK(classes.RatioH(2, 3) + classes.RatioV(2, 3) == 0); // green
    }
}

TEST_CASE("cfa_CalClassifier: LMax is not limited, and each term is halved as it wraps") {
    // Two magnitudes a and b in one term of both directions: their sum wraps to 1 - 2^31, halved to -2^30 and
    // quartered to -2^29.
    constexpr int32_t a = (1 << 30) + 1, b = 1 << 30;
    struct {
        int y, x; // of a; b stands opposite
        int32_t a, b, at_blue, at_green;
    } const rows[] = {{0, 2, a, b, -(1 << 30), -INT32_MAX},
                      {1, 1, a, b, -(1 << 30), -(1 << 30)},
                      {0, 1, a, b, -(1 << 30), -(1 << 29)},
                      {0, 2, 40000, 40000, 40000, 80000}};
    for (const auto &row : rows) {
        Plane raw(5, 5);
        raw.set(row.y, row.x, 0, row.a), raw.set(row.x, row.y, 0, row.a);
        raw.set(4 - row.y, 4 - row.x, 0, row.b), raw.set(4 - row.x, 4 - row.y, 0, row.b);
        for (const uint32_t id : {0, 1}) {
            INFO("(", row.y, ", ", row.x, "), id ", id);
            const Classes classes(raw, id);
            const int32_t want = id == 0 ? row.at_blue : row.at_green;
            CHECK(classes.LMax(2, 2) == want);
            CHECK(classes.LH(2, 2) == std::clamp(want, 0, 32767));
            CHECK(classes.LV(2, 2) == std::clamp(want, 0, 32767));
        }
    }
}

TEST_CASE("cfa_CalVarOfColorDiffAtRB: differences that wrap, samples below 0, other codes") {
    const Plane zero(9, 9), none(9, 9, 3);
    const auto measured = [&](const Plane &raw, const Plane &GH, const Plane &SigH, uint32_t id) {
        Plane difference(raw, 1);
        const Plane other(raw, 1), SigV(raw, 1);
        cfa_CalVarOfColorDiffAtRB(raw, GH, none, difference, other, other, other, SigH, SigV, id);
        return difference;
    };
    Plane peak(9, 9, 3), below(9, 9);
    const Plane SigH(9, 9, 1, -7);
    peak.set(4, 4, 1, 1 << 26);
    measured(zero, peak, SigH, 0);
    CHECK(SigH(4, 4) == 0);  // 42 * 2^26 wraps below 0
    CHECK(SigH(4, 3) == -7); // green: left alone
    // The estimates beside, below and diagonally of -1 are truncated toward zero.
    below.set(4, 4, 0, -1);
    expect_plane("Diff0H", measured(below, none, SigH, 0),
                 [](int y, int x, int) { return y == 4 && x == 4 ? 1 : 0; });
    CHECK(SigH(4, 4) == 1 + 4 + 8 * 4 + 4 + 1); // in the centre, one from a sum of 1, itself four
    const Plane others(9, 9, 1, -7);
    measured(zero, none, others, 8);
    expect_plane("others", others, [](int y, int x, int) { return y % 2 == 0 && x % 2 != 0 ? 0 : -7; });
}
