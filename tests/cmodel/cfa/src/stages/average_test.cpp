#include <doctest/doctest.h>

#include "cmodel/cfa/src/stages.h"
#include "tests/support/planes.h"

namespace {

// The kernels; a site's code picks one for each channel.
int32_t average(const Plane &raw, uint32_t id, int y, int x, int c) {
    const auto fit = [&](const char *kernel, int factor, int half, int shift) {
        return limited((weighted(raw, y, x, kernel) * factor + half) >> shift, 4095);
    };
    const int code = code_at(y, x, id);
    if (code == 0 || code == 3) {
        if (c == 1)
            return fit(".1. 1.1 .1.", 1, 2, 2);
        const bool own = c == (code == 3 ? 0 : 2);
        return own ? fit("..1.. ..... 1.4.1 ..... ..1..", 1, 4, 3) : fit("1.1 ... 1.1", 1, 2, 2);
    }
    if (code == 1 || code == 2) {
        if (c == 1)
            return fit("1.1 .4. 1.1", 1, 4, 3);
        const bool in_row = c == (code == 2 ? 0 : 2); // the colour left and right of this green
        return in_row ? fit(".1.1. ..... .4.4. ..... .1.1.", 85, 512, 10)
                      : fit("..... 1.4.1 ..... 1.4.1 .....", 85, 512, 10);
    }
    // Any other code repeats the pixel before in scan order.
    if (x > 0)
        return average(raw, id, y, x - 1, c);
    return y > 0 ? average(raw, id, y - 1, raw.width() - 1, c) : 0;
}

} // namespace

TEST_CASE("cfa_CalAvg: flat colours stay, but for the twelfths at green sites") {
    for (uint32_t id = 0; id < 4; id++) {
        CAPTURE(id);
        const Plane raw = flat_colors(6, 5, id, 3000, 4095, 402);
        const Plane avg(raw, 3);
        cfa_CalAvg(raw, avg, id);
        const int32_t at_red_blue[] = {3000, 4095, 402};
        const int32_t at_green[] = {2988, 4095, 400}; // (36000 * 85 + 512) >> 10, (4824 * 85 + 512) >> 10
        expect_plane("AvgRGB", avg, [&](int y, int x, int c) {
            return code_at(y, x, id) % 3 == 0 ? at_red_blue[c] : at_green[c];
        });
    }
    const Plane bright(4, 4, 1, 4095), avg(bright, 3);
    cfa_CalAvg(bright, avg, 0);
    CHECK(avg(0, 0, 0) == 4095);
    CHECK(avg(0, 1, 0) == 4079); // 4095 * 12 * 85 >> 10
}

TEST_CASE("cfa_CalAvg: every estimate of every site") {
    for_each_mosaic([](const Plane &raw, uint32_t id) {
        const Plane avg(raw, 3);
        cfa_CalAvg(raw, avg, id);
        expect_plane("AvgRGB", avg, [&](int y, int x, int c) { return average(raw, id, y, x, c); });
    });
}
