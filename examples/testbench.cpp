// A testbench around the block: registers from an INI file, a mosaic in memory, one pixel checked.
//   c++ -std=c++20 testbench.cpp $(pkg-config --cflags --libs cfa_cmodel) -o testbench && ./testbench cfa.ini
#include <cstdio>

#include "cfa_hw.h"
#include "cfa_reg.h"
#include "cmodel_top_reg.h"
#include "color_id.h"
#include "log.h"

using namespace cfa;

int main(int argc, char **argv) {
    log_set_quiet(1);
    INIT_CFA_REG("NULL");
    INIT_CMODEL_TOP_REG("NULL");
    if (argc != 2 || LOAD_CFA_INI(argv[1]) != 0)
        return std::fprintf(stderr, "usage: testbench INI_FILE (which must exist)\n"), 2;
    cmodel_top_reg.hw.reg_img_bayerid = 3; // R Gr / Gb B

    const FramePtr raw(CM_NewFRAME(FRAME_TYPE_RAW, FRAME_FMT_MONO, 64, 48, 1, 12));
    const FramePtr rgb = plane_like(raw.get(), FRAME_TYPE_IMG, 3, 12);
    const FramePtr dc = plane_like(raw.get(), FRAME_TYPE_IMG, 1, 12);
    const FramePtr gain = plane_like(raw.get(), FRAME_TYPE_IMG, 1, 12);
    for (int y = 0; y < 48; ++y)
        for (int x = 0; x < 64; ++x)
            sample(raw.get(), y, x) = CM_GET_COLOR_ID(y, x, 3) == CODE_R ? 1500 : 1000;

    cfa_hw(raw.get(), rgb.get(), dc.get(), gain.get());
    const int red = value(rgb.get(), 20, 30, 0), green = value(rgb.get(), 20, 31, 1);
    std::printf("red %d at a red site, green %d at a green site\n", red, green);
    return red == 1500 && green == 1000 ? 0 : 1; // without moire a site keeps the colour it has measured
}
