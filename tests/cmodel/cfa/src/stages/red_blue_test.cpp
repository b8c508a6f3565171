#include <doctest/doctest.h>

#include "cmodel/cfa/src/stages.h"
#include "tests/support/planes.h"
#include "tests/support/registers.h"

using namespace cfa;

TEST_CASE("cfa_GetHVWtbySig: each direction is weighted by the variance of the other") {
    struct {
        int32_t sig_h, sig_v, w_h, w_v, inv;
    } const rows[] = {{0, 0, 1, 1, 16384},
                      {100, 3200, 99, 3, 321}, // m = 3: 3197 >> 5, 97 >> 5
                      {16383, 0, 1, 511, 64},
                      {16384, 0, 1, 127, 256}, // m = 15, 16; reciprocals of 512, 128
                      {131071, 131071, 1023, 1023, 16},
                      {1000, 40000, 312, 7, 102}}; // m = 39: 39961, 961 >> 7
    for (const auto &row : rows) {
        int32_t w_h = 0, w_v = 0;
        int64_t inv = 0;
        cfa_GetHVWtbySig(row.sig_h, row.sig_v, &w_h, &w_v, &inv);
        CAPTURE(row.sig_h);
        CHECK(w_h == row.w_h);
        CHECK(w_v == row.w_v);
        CHECK(inv == row.inv);
    }
}

TEST_CASE_FIXTURE(FreshRegisters,
                  "cfa_CalRBPixel: candidates of the target, limited by the nine neighbours") {
    Plane raw(4, 4, 1, 500), GH(4, 4, 3, 0), GV(4, 4, 3, 0), sig(4, 4), dir(4, 4);
    raw.set(1, 1, 0, 900);
    raw.set(2, 2, 0, 100);
    raw.set(0, 3, 0, 4000); // two columns from (1, 1): no part of its neighbourhood
    for (int c : {0, 2})
        for (const auto &[y, x] : {std::pair{1, 1}, std::pair{0, 0}, std::pair{3, 0}}) {
            GH.set(y, x, c, 600 + c);
            GV.set(y, x, c, 1000 - 480 * c);
        }
    const auto pixel = [&](int32_t direction, int32_t target, int y = 1, int x = 1) {
        dir.set(y, x, 0, direction);
        return cfa_CalRBPixel(raw, x, y, GH, GV, sig, sig, dir, target);
    };
    // Vertical 1000 and 40 are limited; so is the blend, not its candidates: (600 + 1000) / 2, (602 + 40)
    // / 2.
    const int32_t red[] = {800, 600, 900}, blue[] = {321, 602, 100};
    for (int32_t direction = 0; direction < 3; direction++) {
        CAPTURE(direction);
        CHECK(pixel(direction, 3) == red[direction]);
        CHECK(pixel(direction, 0) == blue[direction]);
        CHECK(pixel(direction, 1) == 0);
        CHECK(pixel(direction, 2) == 0);
    }
    CHECK(pixel(2, 3, 0, 0) == 900); // row and column -1 read 1
    CHECK(pixel(2, 3, 3, 0) == 500); // row 4 reads 2
    cfa_reg.hw.reg_cfa_force_dir_enable = 1;
    const int32_t forced[] = {800, 600, 900, 900};
    for (int sel = 0; sel < 4; sel++) {
        cfa_reg.hw.reg_cfa_force_dir_sel = sel;
        CHECK(pixel((sel + 1) % 3, 3) == forced[sel]);
    }
}
