// The line engine on frames, and what it leaves to the model.
#include "cmodel/cfa/src/lines/cfa_lines.h"

#include <algorithm>

#include "cmodel/cfa/src/kit/debug_image.h"
#include "cmodel/cfa/src/lines/engine.h"
#include "cmodel/cfa/src/reg_parse/cfa_reg.h"
#include "cmodel/cmodel_top/src/reg_parse/cmodel_top_reg.h"

namespace {

// A slope against its levels leaves the range between them, and with it 16 bits.
bool slope_contradicts(int32_t y0, int32_t y1, int32_t slope) {
    return y0 <= y1 ? slope < 0 : slope > 0;
}

bool color_moire_curves_leave_range() {
    const auto &r = cfa_reg.hw;
    return slope_contradicts(r.reg_cfa_cmoire_sat_y0, r.reg_cfa_cmoire_sat_y1, r.reg_cfa_cmoire_sat_slp0) ||
           slope_contradicts(r.reg_cfa_cmoire_ptclr_y0, r.reg_cfa_cmoire_ptclr_y1,
                             r.reg_cfa_cmoire_ptclr_slp0) ||
           slope_contradicts(r.reg_cfa_cmoire_pd_y0, r.reg_cfa_cmoire_pd_y1, r.reg_cfa_cmoire_pd_slp0) ||
           slope_contradicts(r.reg_cfa_cmoire_edge_y0, r.reg_cfa_cmoire_edge_y1, r.reg_cfa_cmoire_edge_slp0);
}

bool luma_moire_curves_leave_range() {
    const auto &r = cfa_reg.hw;
    return slope_contradicts(r.reg_cfa_ymoire_detail_low, r.reg_cfa_ymoire_detail_high,
                             r.reg_cfa_ymoire_detail_slope) ||
           slope_contradicts(r.reg_cfa_ymoire_edge_low, r.reg_cfa_ymoire_edge_high,
                             r.reg_cfa_ymoire_edge_slope) ||
           slope_contradicts(r.reg_cfa_ymoire_lut_low, r.reg_cfa_ymoire_lut_high, r.reg_cfa_ymoire_lut_slope);
}

class FrameSource : public RowSource {
  public:
    explicit FrameSource(const FRAME *frame) : frame_(frame) {}
    void read(int y, Sample *even, Sample *odd) override {
        const int width = static_cast<int>(frame_->width);
        const uint32_t *const row = frame_->data + static_cast<size_t>(y) * frame_->width;
        for (int i = 0; i < (width + 1) / 2; i++)
            even[i] = static_cast<Sample>(row[2 * i]);
        for (int i = 0; i < width / 2; i++)
            odd[i] = static_cast<Sample>(row[2 * i + 1]);
    }

  private:
    const FRAME *frame_;
};

class FrameSink : public RowSink {
  public:
    FrameSink(FRAME *rgb, FRAME *dc, FRAME *gain) : rgb_(rgb), dc_(dc), gain_(gain) {}
    void rgb(int y, SplitRow red, SplitRow green, SplitRow blue) override {
        join(rgb_, y, 0, red);
        join(rgb_, y, 1, green);
        join(rgb_, y, 2, blue);
    }
    void dc(int y, SplitRow row) override { join(dc_, y, 0, row); }
    void gain(int y, SplitRow row) override { join(gain_, y, 0, row); }

  private:
    static void join(FRAME *frame, int y, int channel, SplitRow row) {
        const int width = static_cast<int>(frame->width);
        const size_t channels = frame->channels;
        uint32_t *out = &sample(frame, y, 0, channel);
        for (int x = 0; x < width; x++)
            out[channels * x] = row.half[x & 1][x >> 1];
    }

    FRAME *rgb_;
    FRAME *dc_;
    FRAME *gain_;
};

} // namespace

const char *cfa_lines_excludes(uint32_t width, uint32_t height) {
    // Rows are split by column parity because only two colours meet in a row of a 2 x 2 pattern, one per
    // parity.
    if (cmodel_top_reg.hw.reg_img_bayerid > 3)
        return "a 4 x 4 pattern";
    // A debug image shows a whole plane; the engine has none.
    if (dump_dbg_img)
        return "debug images";
    // A single reflection must stay inside the picture, as for the model: three columns and two rows reach
    // over.
    if (width < 4 || height < 3)
        return "a picture below 4 x 3";
    // Weights are kept in 16 bits. Between its levels a curve stays within 12 bits; a slope against them
    // leads out.
    if (cfa_reg.hw.reg_cfa_cmoire_enable == 1 && color_moire_curves_leave_range())
        return "a colour-moire curve whose slope contradicts its levels";
    if (cfa_reg.hw.reg_cfa_ymoire_enable == 1 && luma_moire_curves_leave_range())
        return "a luma-moire curve whose slope contradicts its levels";
    return nullptr;
}

bool cfa_lines_take_samples(const uint32_t *samples, size_t count) {
    uint32_t any = 0;
    for (size_t i = 0; i < count; i++)
        any |= samples[i];
    return any <= CFA_LINES_MAX_SAMPLE; // 4095 is all ones: no sample exceeds it unless the union does
}

bool cfa_lines(const FRAME *raw, FRAME *out_rgb, FRAME *out_dc, FRAME *out_sg) {
    const size_t pixels = static_cast<size_t>(raw->width) * raw->height;
    if (cfa_lines_excludes(raw->width, raw->height) != nullptr || !cfa_lines_take_samples(raw->data, pixels))
        return false;
    FrameSource source(raw);
    FrameSink sink(out_rgb, out_dc, out_sg);
    run_line_engine(static_cast<int>(raw->width), static_cast<int>(raw->height), source, sink);
    return true;
}
