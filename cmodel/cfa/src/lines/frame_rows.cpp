#include "cmodel/cfa/src/lines/frame_rows.h"

#include "cmodel/cfa/src/lines/conditions.h"
#include "cmodel/cfa/src/lines/rows.h"

namespace cfa {
namespace {

template <class Sample> class FrameSource : public RowSource<Sample> {
  public:
    explicit FrameSource(const FRAME *frame) : frame_(frame) {}
    void read(int y, Sample *even, Sample *odd) override {
        const int width = width_of(frame_);
        const uint32_t *const row = frame_->data + static_cast<size_t>(y) * frame_->width;
        for (int i = 0; i < (width + 1) / 2; ++i)
            even[i] = static_cast<Sample>(row[2 * i]);
        for (int i = 0; i < width / 2; ++i)
            odd[i] = static_cast<Sample>(row[2 * i + 1]);
    }

  private:
    const FRAME *frame_;
};

template <class Sample> class FrameSink : public RowSink<Sample> {
    using Row = SplitRow<Sample>;

  public:
    FrameSink(FRAME *rgb, FRAME *dc, FRAME *gain) : rgb_(rgb), dc_(dc), gain_(gain) {}
    void rgb(int y, Row red, Row green, Row blue) override {
        join(rgb_, y, 0, red);
        join(rgb_, y, 1, green);
        join(rgb_, y, 2, blue);
    }
    void dc(int y, Row row) override { join(dc_, y, 0, row); }
    void gain(int y, Row row) override { join(gain_, y, 0, row); }

  private:
    static void join(FRAME *frame, int y, int channel, Row row) {
        const int width = width_of(frame);
        const size_t channels = frame->channels;
        uint32_t *out = &sample(frame, y, 0, channel);
        for (int x = 0; x < width; ++x)
            out[channels * x] = row.half[x & 1][x >> 1];
    }

    FRAME *rgb_;
    FRAME *dc_;
    FRAME *gain_;
};

// All bits that occur in any of the samples.
uint32_t union_of(const uint32_t *samples, size_t count) {
    uint32_t all = 0;
    for (size_t i = 0; i < count; ++i)
        all |= samples[i];
    return all;
}

template <class Sample>
void run(const FRAME *raw, FRAME *out_rgb, FRAME *out_dc, FRAME *out_sg, int threads) {
    FrameSource<Sample> source(raw);
    FrameSink<Sample> sink(out_rgb, out_dc, out_sg);
    run_line_engine(width_of(raw), height_of(raw), source, sink, threads);
}

} // namespace

bool cfa_lines(const FRAME *raw, FRAME *out_rgb, FRAME *out_dc, FRAME *out_sg, int threads) {
    const size_t pixels = static_cast<size_t>(raw->width) * raw->height;
    const uint32_t all = union_of(raw->data, pixels);
    if (cfa_lines_excludes(raw->width, raw->height) != nullptr || !cfa_lines_take_samples(all))
        return false;
    if (cfa_lines_need_wide_rows(all))
        run<int32_t>(raw, out_rgb, out_dc, out_sg, threads);
    else
        run<int16_t>(raw, out_rgb, out_dc, out_sg, threads);
    return true;
}

} // namespace cfa
