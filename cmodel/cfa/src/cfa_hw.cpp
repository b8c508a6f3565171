#include "cmodel/cfa/src/cfa_hw.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "cmodel/cfa/src/cfa_model.h"
#include "cmodel/cfa/src/lines/frame_rows.h"
#include "cmodel/cfa/src/reg_parse/cfa_reg.h"

using namespace cfa;

namespace {

// A single reflection about the border leaves a smaller picture.
void refuse_small_picture(const FRAME *raw) {
    if (raw->width >= 4 && raw->height >= 3)
        return;
    std::fprintf(stderr, "Picture of %u x %u is too small: the enabled block takes 4 x 3 and larger\n",
                 raw->width, raw->height);
    std::exit(1);
}

} // namespace

void cfa_hw(const FRAME *raw, FRAME *out_rgb, FRAME *out_dc, FRAME *out_sg) {
    if (cfa_reg.hw.reg_cfa_enable == 0) {
        cfa_bypass(raw, out_rgb, out_dc, out_sg);
        return;
    }
    refuse_small_picture(raw);
    if (!cfa_lines(raw, out_rgb, out_dc, out_sg))
        cfa_model(raw, out_rgb, out_dc, out_sg);
}

void cfa_bypass(const FRAME *raw, FRAME *out_rgb, FRAME *out_dc, FRAME *out_sg) {
    const size_t pixels = static_cast<size_t>(raw->width) * raw->height;
    for (size_t i = 0; i < pixels; ++i)
        std::fill_n(out_rgb->data + 3 * i, 3, raw->data[i]);
    std::fill_n(out_dc->data, pixels, 0u);
    std::fill_n(out_sg->data, pixels, 1024u);
}
