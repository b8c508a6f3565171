#include <algorithm>
#include <utility>

#include "cmodel/common/ppm_stream.h"

namespace cfa {

namespace {

template <int Bytes> void pack(const uint32_t *samples, uint8_t *bytes, size_t count) {
    for (size_t i = 0; i < count; ++i)
        for (int b = 0; b < Bytes; ++b)
            bytes[i * Bytes + b] = static_cast<uint8_t>(samples[i] >> (8 * (Bytes - 1 - b)));
}

void pack_samples(int sample_bytes, const uint32_t *samples, uint8_t *bytes, size_t count) {
    switch (sample_bytes) {
    case 1:
        return pack<1>(samples, bytes, count);
    case 2:
        return pack<2>(samples, bytes, count);
    case 3:
        return pack<3>(samples, bytes, count);
    default:
        return pack<4>(samples, bytes, count);
    }
}

// Kept: P5 and P6 differ at 32 bits, where P6 takes the shift modulo 32 and says 0.
std::string max_value_text(char kind, uint32_t bit_depth) {
    const uint32_t power = 1u << (bit_depth % 32);
    if (kind == '6')
        return std::to_string(static_cast<int32_t>(power - 1));
    return std::to_string(bit_depth < 32 ? power - 1 : 4294967295u);
}

} // namespace

std::string ppm_header_text(char kind, uint32_t width, uint32_t height, uint32_t bit_depth) {
    return std::string("P") + kind + "\n# Created by ZEMBRO DPU Model\n" +
           std::to_string(static_cast<int32_t>(width)) + " " + std::to_string(static_cast<int32_t>(height)) +
           "\n" + max_value_text(kind, bit_depth) + "\n";
}

PpmWriter::PpmWriter(const char *path, char kind, uint32_t width, uint32_t height, uint32_t bit_depth)
    : path_(path), block_(std::make_unique_for_overwrite<uint8_t[]>(PPM_BLOCK_BYTES)),
      stream_(open_image(path, "wb")), sample_bytes_(ppm_sample_bytes(bit_depth)) {
    const std::string text = ppm_header_text(kind, width, height, bit_depth);
    std::copy(text.begin(), text.end(), block_.get());
    filled_ = text.size();
}

PpmWriter::~PpmWriter() {
    if (stream_)
        image_discard(std::move(stream_));
}

void PpmWriter::write(const uint32_t *samples, size_t count) {
    const size_t size = static_cast<size_t>(sample_bytes_);
    while (count > 0) {
        const size_t fitting = std::min(count, (PPM_BLOCK_BYTES - filled_) / size);
        pack_samples(sample_bytes_, samples, &block_[filled_], fitting);
        filled_ += fitting * size;
        samples += fitting;
        count -= fitting;
        if (count > 0)
            flush();
    }
}

void PpmWriter::write_bytes(const void *bytes, size_t size) {
    flush();
    image_write(stream_.get(), path_.c_str(), bytes, size);
}

void PpmWriter::flush() {
    image_write(stream_.get(), path_.c_str(), block_.get(), filled_);
    filled_ = 0;
}

void PpmWriter::close() {
    flush();
    image_close_written(std::move(stream_), path_.c_str());
}

} // namespace cfa
