#include "block/memory_rows.h"

#include "cmodel/cfa/src/lines/kernels/file_words.h"

namespace cfa {
namespace {

// One channel of a row of samples that lie `stride` bytes apart.
template <class Source> void scatter(const Source &source, int width, uint16_t *row, ptrdiff_t stride) {
    for (int x = 0; x < width; ++x)
        row[x * (stride / 2)] = static_cast<uint16_t>(source(x));
}

} // namespace

uint16_t Mosaic::union_of_bits() const {
    uint16_t any = 0;
    for (uint32_t y = 0; y < height; ++y)
        any |= union_of_samples(layout.row(y), width);
    return any;
}

FramePtr Mosaic::frame() const {
    FramePtr frame(new_frame(FRAME_TYPE_IMG, FRAME_FMT_MONO, width, height, 1, 16));
    for (uint32_t y = 0; y < height; ++y)
        for (uint32_t x = 0; x < width; ++x)
            sample(frame.get(), static_cast<int>(y), static_cast<int>(x)) = layout.row(y)[x];
    return frame;
}

template <class Sample> void MemorySource<Sample>::read(int y, Sample *even, Sample *odd) {
    split_samples(mosaic_.layout.row(y), static_cast<int>(mosaic_.width), even, odd);
}

template <class Sample> MemorySink<Sample>::MemorySink(const OutputLayouts &out, int width)
    : out_(out), width_(width), row_(static_cast<size_t>(width)), dc_row_(row_) {}

template <class Sample> void MemorySink<Sample>::rgb(int y, Row red, Row green, Row blue) {
    if (!out_.rgb)
        return;
    if (out_.rgb.channels_packed()) {
        join_samples(red, green, blue, width_, out_.rgb.row(y));
        return;
    }
    join(out_.rgb, y, 0, red, row_);
    join(out_.rgb, y, 1, green, row_);
    join(out_.rgb, y, 2, blue, row_);
}

template <class Sample> void MemorySink<Sample>::dc(int y, Row row) {
    if (out_.dc)
        join(out_.dc, y, 0, row, dc_row_);
}

template <class Sample> void MemorySink<Sample>::gain(int y, Row row) {
    if (out_.gain)
        join(out_.gain, y, 0, row, row_);
}

template <class Sample> void MemorySink<Sample>::join(const Layout &image, int y, int channel, Row row,
                                                      std::vector<uint16_t> &packed) {
    if (image.pixels_packed()) {
        join_samples(row, width_, image.row(y, channel));
        return;
    }
    join_samples(row, width_, packed.data());
    scatter([&packed](int x) { return packed[static_cast<size_t>(x)]; }, width_, image.row(y, channel),
            image.pixel_stride());
}

template class MemorySource<int16_t>;
template class MemorySource<int32_t>;
template class MemorySink<int16_t>;
template class MemorySink<int32_t>;

void copy_frame(const FRAME *frame, const Layout &image) {
    if (!image)
        return;
    for (int y = 0; y < height_of(frame); ++y)
        for (int c = 0; c < static_cast<int>(frame->channels); ++c)
            scatter([=](int x) { return value(frame, y, x, c); }, width_of(frame), image.row(y, c),
                    image.pixel_stride());
}

} // namespace cfa
