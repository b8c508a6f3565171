// Moire removal where weights, differences and products leave their ranges.
#include <doctest/doctest.h>

#include "cmodel/cfa/src/reg_parse/cfa_reg.h"
#include "cmodel/cfa/src/stages.h"
#include "tests/support/planes.h"
#include "tests/support/registers.h"

using namespace cfa;

TEST_CASE_FIXTURE(FreshRegisters, "cfa_CalYMoireWgt: ranges and products beyond 32 bits, limits") {
    struct Curve {
        int32_t th, low, high, slope;
    };
    constexpr Curve full{255, 256, 256, 0}, itself{0, 0, 511, 64}, faint{0, 0, 511, 1},
        steep{0, 0, 0, -16383};
    struct {
        Curve detail, edge;
        int32_t lut_low, range, weight;
    } const rows[] = {{full, itself, 0, 800, 31},      // 2000 * 256 / (20 * 816)
                      {full, itself, 0, -800, 255},    // below 1 the divisor is 1
                      {full, itself, 0, 1 << 27, 255}, // 20 * 2^27 wraps below 0
                      {faint, full, 0, 16384, 4},      // the detail is limited: (255 + 32) >> 6
                      {steep, steep, 7, 1 << 27, 7}};  // 65276 * 65276 wraps below 0, up to the knee
    Plane stripes(6, 6, 3);                            // 20 differences of 100
    for (int x = 0; x < 6; ++x)
        for (const int y : {1, 3, 5})
            stripes.set(y, x, 1, 100);
    const Plane none(6, 6, 3), weight(6, 6);
    auto &r = cfa_reg.hw;
    for (const auto &row : rows) {
        INFO("range ", row.range, ", weight ", row.weight);
        r.reg_cfa_ymoire_detail_th = row.detail.th, r.reg_cfa_ymoire_edge_th = row.edge.th;
        r.reg_cfa_ymoire_detail_low = row.detail.low, r.reg_cfa_ymoire_edge_low = row.edge.low;
        r.reg_cfa_ymoire_detail_high = row.detail.high, r.reg_cfa_ymoire_edge_high = row.edge.high;
        r.reg_cfa_ymoire_detail_slope = row.detail.slope, r.reg_cfa_ymoire_edge_slope = row.edge.slope;
        r.reg_cfa_ymoire_lut_low = row.lut_low, r.reg_cfa_ymoire_lut_high = 511;
        r.reg_cfa_ymoire_lut_slope = 64;
        CHECK(cfa_CalYMoireWgt(stripes, none, Plane(6, 6, 3, row.range), none, weight) == 0);
        CHECK(weight(3, 3) == row.weight);
    }
}

TEST_CASE_FIXTURE(FreshRegisters, "cfa_DeYMoire: samples below 0, products that wrap, a negative weight") {
    auto &r = cfa_reg.hw;
    r.reg_cfa_ymoire_enable = 1;
    const Plane zero(5, 3, 3), out(5, 3, 3);
    for (const int32_t sample : {-300, 1 << 24}) { // 256 * 2^24 is 0
        cfa_DeYMoire(Plane(5, 3, 3, sample), zero, zero, zero, zero, zero, out);
        expect_plane("weight 0", out, [](int, int, int) { return 0; });
    }
    // Both first curves are 256, the output curve 256 - 256 * 704 / 64 = -2560. Beside -2 the low-pass rounds
    // -2 >> 2 down to -1, which -127 >> 8 and -128 >> 8 keep: (-2560 * -1 + 128) >> 8 = 10.
    r.reg_cfa_ymoire_detail_th = r.reg_cfa_ymoire_edge_th = 255;
    r.reg_cfa_ymoire_detail_low = r.reg_cfa_ymoire_edge_low = r.reg_cfa_ymoire_lut_low = 256;
    r.reg_cfa_ymoire_lut_high = 300, r.reg_cfa_ymoire_lut_slope = -704;
    r.reg_cfa_ymoire_lpf_w = 255, r.reg_cfa_ymoire_dc_w = 0;
    Plane rgb(5, 3, 3);
    rgb.set(1, 1, 0, -2), rgb.set(1, 3, 0, -2);
    cfa_DeYMoire(rgb, zero, zero, zero, zero, zero, out);
    CHECK(out(1, 2, 0) == 10);
    cfa_LpfFrame(rgb, out);
    CHECK(out(0, 1, 0) == -1); // -8 >> 4
}

TEST_CASE_FIXTURE(FreshRegisters, "cfa_CalColorMoireSts: weights and responses that wrap") {
    auto &r = cfa_reg.hw;
    r.reg_cfa_cmoire_sat_x0 = r.reg_cfa_cmoire_sat_y0 = r.reg_cfa_cmoire_sat_y1 = 0;
    r.reg_cfa_cmoire_ptclr_x0 = r.reg_cfa_cmoire_ptclr_y0 = r.reg_cfa_cmoire_ptclr_y1 = 0;
    r.reg_cfa_cmoire_sat_slp0 = r.reg_cfa_cmoire_ptclr_slp0 = -131071;
    r.reg_cfa_cmoire_protclr1_enable = r.reg_cfa_cmoire_protclr2_enable = 0;
    // Of an impulse of 2^19: -4096 * 2^19 is its own magnitude, below 0; two of 2048 * 2^19 add up to it.
    r.reg_cfa_cmoire_edge_d0c0 = -4096, r.reg_cfa_cmoire_edge_d45c0 = 2048;
    r.reg_cfa_cmoire_edge_x0 = 0, r.reg_cfa_cmoire_edge_y0 = 5;
    Plane green(7, 7, 3), avg(7, 7, 3, 1000);
    green.set(3, 3, 1, 1 << 19);
    avg.set(3, 3, 0, 2000);
    const Plane cdist(7, 7), edge(7, 7);
    cfa_CalColorMoireSts(avg, green, green, cdist, edge);
    // Saturation 961: -961 * 131071 >> 10 = -123008; no hue is protected: -4095 * 131071 >> 10 = -524157.
    CHECK(cdist(3, 3) == static_cast<int32_t>(123008u * 524157u) >> 12);
    CHECK(edge(3, 3) == 5); // every response is limited to 0
}

TEST_CASE_FIXTURE(FreshRegisters, "cfa_CalPhaseDifference: an impulse beyond 12 bits, one that wraps") {
    auto &r = cfa_reg.hw;
    r.reg_cfa_cmoire_pd_x0 = 0, r.reg_cfa_cmoire_pd_slp0 = 256;
    // Beside it 6 * 2^16 / 16, limited to 4095: 123/128 of it is 3935, a quarter 983. 6 * 2^30 wraps below 0.
    for (const auto &[impulse, weight] : {std::pair{1 << 16, 983}, std::pair{1 << 30, 0}}) {
        Plane gh(9, 9, 3);
        const Plane gv(9, 9, 3), pd(9, 9);
        gh.set(4, 4, 1, impulse);
        cfa_CalPhaseDifference(pd, gh, gv, pd);
        CHECK(pd(4, 3) == weight);
    }
}

TEST_CASE_FIXTURE(FreshRegisters, "cfa_DeColorMoire: weights beyond 12 bits") {
    struct {
        int32_t pd, cdist, edge, color, green, pulled;
    } const rows[] = {
        {4095, 2048, 1 << 20, 1000, 3000, 937}, // the mix wraps to -2^20, -256 of 4096, half of it: by -63
        {0, 65536, 65553, 1000, 3000, 1000},    // 65536 * 65536 wraps to 0
        {0, 4096, 4097, 1000, 1000 + (1 << 20), 745}, // 2^20 * 4095 wraps to -2^20: by -256, of which 255/256
        {0, 4096, -4096, 1000, 3000, 0}};             // -4095 of 4096: below 0
    for (const auto &row : rows) {
        INFO("phase difference ", row.pd, ", colour distance ", row.cdist, ", edge ", row.edge);
        Plane rgb(8, 4, 3, row.color);
        for (int i = 0; i < 32; ++i)
            rgb.set(i / 8, i % 8, 1, row.green);
        const Plane out(rgb, 3);
        cfa_DeColorMoire(rgb, out, Plane(8, 4, 1, row.pd), Plane(8, 4, 1, row.cdist),
                         Plane(8, 4, 1, row.edge));
        CHECK(out(1, 4, 0) == row.pulled);
        CHECK(out(1, 4, 2) == row.pulled);
    }
}
