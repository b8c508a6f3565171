#include "cmodel/cfa/src/picture_run.h"

#include <optional>

#include "cmodel/cfa/src/cfa_hw.h"
#include "cmodel/cfa/src/kit/debug_image.h"
#include "cmodel/cfa/src/kit/in_force.h"
#include "cmodel/cfa/src/lines/conditions.h"
#include "cmodel/cfa/src/lines/debug_rows.h"
#include "cmodel/cfa/src/reg_parse/cfa_reg.h"
#include "cmodel/cmodel_top/src/reg_parse/cmodel_top_reg.h"
#include "cmodel/common/ppm.h"
#include "log/log.h"

namespace cfa {

namespace {

const char *const LABEL = "cfa_main"; // what the log calls the driver

// Whether all but the samples allows the line engine. What CM_NewFRAME refuses, the three-channel output
// included, is left to it: frames end the process at the same place with the same line.
bool rows_can_serve(const PpmHeader &header, const char *rgb_path) {
    const uint32_t width = static_cast<uint32_t>(header.width);
    const uint32_t height = static_cast<uint32_t>(header.height);
    return registers().reg_cfa_enable != 0 && header.bit_depth >= 1 && header.bit_depth <= 16 &&
           frame_size_ok(width, height, 3) && cfa_lines_excludes(width, height) == nullptr &&
           (!debug_images_wanted() || debug_rows_fit(rgb_path));
}

void say(const std::string &line, Notice notice) {
    if (!line.empty())
        notice(line.c_str());
}

// CM_ReadPPM5 from behind the header.
FramePtr read_rest(PpmReader &reader, Notice notice) {
    const PpmHeader &header = reader.header();
    FramePtr raw(new_frame(FRAME_TYPE_IMG, FRAME_FMT_MONO, static_cast<uint32_t>(header.width),
                           static_cast<uint32_t>(header.height), 1, header.bit_depth));
    reader.read(raw->data, static_cast<size_t>(raw->width) * raw->height);
    say(reader.close(), notice);
    return raw;
}

void run_frames(const FRAME *raw, const OutputPaths &out) {
    const FramePtr out_rgb = plane_like(raw, FRAME_TYPE_IMG, 3, raw->bit_depth);
    const FramePtr out_dc = plane_like(raw, FRAME_TYPE_IMG, 1, raw->bit_depth);
    const FramePtr out_sg = plane_like(raw, FRAME_TYPE_IMG, 1, raw->bit_depth);
    run_block(raw, out_rgb.get(), out_dc.get(), out_sg.get());
    write_p6(out.rgb, out_rgb.get());
    write_p5(out.dc, out_dc.get());
    write_p5(out.gain, out_sg.get());
}

} // namespace

void load_registers(const char *cfa_ini, const char *cmodel_top_ini) {
    INIT_CFA_REG("NULL");
    LOAD_CFA_INI(cfa_ini);
    PRINT_CFA_REG();
    INIT_CMODEL_TOP_REG("NULL");
    LOAD_CMODEL_TOP_INI(cmodel_top_ini);
    PRINT_CMODEL_TOP_REG();
    log_log(LOG_INFO, LABEL, __LINE__, "reg_cfa_enable = %d", int{cfa_reg.hw.reg_cfa_enable});
    log_log(LOG_INFO, LABEL, __LINE__, "reg_img_bayerid = %d", int{cmodel_top_reg.hw.reg_img_bayerid});
    log_log(LOG_INFO, LABEL, __LINE__, "reg_cfa_shpn_enable = %d", int{cfa_reg.hw.reg_cfa_shpn_enable});
}

void run_picture(const char *raw_path, const OutputPaths &out, Notice notice) {
    PpmReader reader(raw_path);
    if (!rows_can_serve(reader.header(), out.rgb))
        return run_frames(read_rest(reader, notice).get(), out);
    std::optional<WordStore> store(std::in_place, reader.header());
    if (store->read(reader)) {
        reader.close();
        return run_file_rows(*store, out);
    }
    const FramePtr raw = store->frame(reader);
    say(reader.close(), notice);
    store.reset();
    run_frames(raw.get(), out);
}

void run_picture_in_frames(const char *raw_path, const OutputPaths &out, Notice notice) {
    PpmReader reader(raw_path);
    run_frames(read_rest(reader, notice).get(), out);
}

} // namespace cfa
