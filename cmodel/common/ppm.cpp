#include "cmodel/common/ppm.h"

#include <vector>

#include "cmodel/common/error.h"
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
    return or_end_process([=] {
        PpmReader reader(path);
        FramePtr frame(new_frame(type, FRAME_FMT_MONO, static_cast<uint32_t>(reader.header().width),
                                 static_cast<uint32_t>(reader.header().height), 1,
                                 reader.header().bit_depth));
        reader.read(frame->data, sample_count(frame.get()));
        if (const std::string missing = reader.close(); !missing.empty())
            std::fprintf(stderr, "%s\n", missing.c_str());
        return frame.release();
    });
}

int CM_WritePPM(const char *path, const FRAME *frame) {
    or_end_process([=] { write_p6(path, frame); });
    return 0;
}

int CM_WritePPM5(const char *path, const FRAME *frame) {
    or_end_process([=] { write_p5(path, frame); });
    return 0;
}

void cfa::write_p6(const char *path, const FRAME *frame) {
    PpmWriter writer(path, '6', frame->width, frame->height, frame->bit_depth);
    if (frame->channels == 3)
        writer.write(frame->data, sample_count(frame));
    else
        write_channel_0(writer, frame, 3);
    writer.close();
}

void cfa::write_p5(const char *path, const FRAME *frame) {
    PpmWriter writer(path, '5', frame->width, frame->height, frame->bit_depth);
    if (frame->channels == 1)
        writer.write(frame->data, sample_count(frame));
    else
        write_channel_0(writer, frame, 1);
    writer.close();
}
