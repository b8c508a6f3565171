// The line engine on a caller's memory: rows from a mosaic, rows to images of any strides.
#pragma once

#include <vector>

#include "block/layout.h"
#include "cmodel/cfa/src/lines/rows.h"
#include "cmodel/common/frame.h"

namespace cfa {

/// A mosaic in the caller's memory.
struct Mosaic {
    Layout layout;
    uint32_t width, height;

    /// All bits that occur in any of the samples.
    uint16_t union_of_bits() const;
    FramePtr frame() const;
};

// Both for rows of int16_t or int32_t.
template <class Sample> class MemorySource : public RowSource<Sample> {
  public:
    explicit MemorySource(const Mosaic &mosaic) : mosaic_(mosaic) {}
    void read(int y, Sample *even, Sample *odd) override;

  private:
    const Mosaic &mosaic_;
};

struct OutputLayouts {
    Layout rgb, dc, gain; // empty for an output that is not wanted
};

template <class Sample> class MemorySink : public RowSink<Sample> {
    using Row = SplitRow<Sample>;

  public:
    MemorySink(const OutputLayouts &out, int width);
    void rgb(int y, Row red, Row green, Row blue) override;
    void dc(int y, Row row) override;
    void gain(int y, Row row) override;

  private:
    void join(const Layout &image, int y, int channel, Row row, std::vector<uint16_t> &packed);

    const OutputLayouts &out_;
    const int width_;
    // Where samples do not lie side by side. The DC image's rows may come on a thread of their own.
    std::vector<uint16_t> row_, dc_row_;
};

/// Writes channel by channel what a frame holds, cut to 16 bits. Does nothing for an empty layout.
void copy_frame(const FRAME *frame, const Layout &image);

} // namespace cfa
