#include "cmodel/cfa/src/cfa_hw.h"

#include <algorithm>
#include <string>

#include "cmodel/cfa/src/cfa_model.h"
#include "cmodel/cfa/src/kit/in_force.h"
#include "cmodel/cfa/src/lines/frame_rows.h"
#include "cmodel/common/error.h"

using namespace cfa;

void cfa_hw(const FRAME *raw, FRAME *out_rgb, FRAME *out_dc, FRAME *out_sg) {
    or_end_process([=] { run_block(raw, out_rgb, out_dc, out_sg); });
}

void cfa::refuse_small_picture(uint32_t width, uint32_t height) {
    if (width < 4 || height < 3) // a single reflection about the border leaves it
        throw Error(Error::Kind::picture_size, "Picture of " + std::to_string(width) + " x " +
                                                   std::to_string(height) +
                                                   " is too small: the enabled block takes 4 x 3 and larger");
}

void cfa::run_block(const FRAME *raw, FRAME *out_rgb, FRAME *out_dc, FRAME *out_sg) {
    if (registers().reg_cfa_enable == 0) {
        cfa_bypass(raw, out_rgb, out_dc, out_sg);
        return;
    }
    refuse_small_picture(raw->width, raw->height);
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
