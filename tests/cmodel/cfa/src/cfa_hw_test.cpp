#include "cmodel/cfa/src/cfa_hw.h"
#include "cmodel/cfa/src/cfa_model.h"

#include <utility>

#include <doctest/doctest.h>

#include "tests/support/planes.h"
#include "tests/support/registers.h"

using namespace cfa;

namespace {

struct Outputs {
    Plane rgb, dc, sg;

    explicit Outputs(const Plane &raw, decltype(&cfa_hw) block = cfa_hw)
        : rgb(raw, 3), dc(raw, 1), sg(raw, 1) {
        block(raw, rgb, dc, sg);
    }
};

} // namespace

TEST_CASE_FIXTURE(FreshRegisters, "cfa_hw: the disabled block repeats the mosaic, at any size") {
    cfa_reg.hw.reg_cfa_enable = 0;
    for (const auto &[width, height] : {std::pair{5, 4}, std::pair{1, 1}, std::pair{0, 0}}) {
        const Plane raw = Noise(1).plane(width, height, 1, -257, 70000);
        const Outputs out(raw);
        expect_plane("rgb", out.rgb, [&](int y, int x, int) { return raw(y, x); });
        expect_plane("dc", out.dc, [](int, int, int) { return 0; });
        expect_plane("sg", out.sg, [](int, int, int) { return 1024; });
    }
}

TEST_CASE_FIXTURE(FreshRegisters, "cfa_hw: a grey picture stays, and the smallest size is taken") {
    for (const auto block : {cfa_hw, cfa_model}) {
        const Outputs out(Plane(4, 3, 1, 1000), block);
        // Averages are 996 at green sites, which no stage brings into the picture by default.
        expect_plane("rgb", out.rgb, [](int, int, int) { return 1000; });
        expect_plane("dc", out.dc, [](int, int, int) { return 1000; });
        expect_plane("sg", out.sg, [](int, int, int) { return 1024; });
    }
}
