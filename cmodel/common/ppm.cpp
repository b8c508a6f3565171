#include "cmodel/common/ppm.h"

#include <vector>

#include "cmodel/common/ppm_stream.h"

using namespace cfa;

namespace {

// Channel 0 of every pixel, `repeat` times each, row by row.
void write_channel_0(PpmWriter &writer, const FRAME *frame, size_t repeat) {
    const size_t width = frame->width;
    const size_t channels = frame->channels;
    std::vector<uint32_t> row(width * repeat);
    for (size_t y = 0; y < frame->height; ++y) {
        const uint32_t *const pixels = frame->data + y * width * channels;
        for (size_t x = 0; x < width; ++x)
            for (size_t i = 0; i < repeat; ++i)
                row[x * repeat + i] = pixels[x * channels];
        writer.write(row.data(), row.size());
    }
}

size_t sample_count(const FRAME *frame) {
    return static_cast<size_t>(frame->width) * frame->height * frame->channels;
}

} // namespace

FRAME *CM_ReadPPM5(const char *path, uint32_t type) {
    PpmReader reader(path);
    const PpmHeader &header = reader.header();
    FRAME *const frame = CM_NewFRAME(type, FRAME_FMT_MONO, static_cast<uint32_t>(header.width),
                                     static_cast<uint32_t>(header.height), 1, header.bit_depth);
    reader.read(frame->data, sample_count(frame));
    reader.close();
    return frame;
}

int CM_WritePPM(const char *path, const FRAME *frame) {
    PpmWriter writer(path, '6', frame->width, frame->height, frame->bit_depth);
    if (frame->channels == 3)
        writer.write(frame->data, sample_count(frame));
    else
        write_channel_0(writer, frame, 3);
    writer.close();
    return 0;
}

int CM_WritePPM5(const char *path, const FRAME *frame) {
    PpmWriter writer(path, '5', frame->width, frame->height, frame->bit_depth);
    if (frame->channels == 1)
        writer.write(frame->data, sample_count(frame));
    else
        write_channel_0(writer, frame, 1);
    writer.close();
    return 0;
}
