#include "cmodel/common/frame.h"

#include <cstdlib>

#include "cmodel/common/error.h"

using namespace cfa;

namespace {

// A stage may read this many samples past the last one; they are zero.
constexpr size_t SPARE_SAMPLES = 3;

constexpr uint64_t MAX_SAMPLES = 2147483647;

} // namespace

bool cfa::frame_size_ok(uint32_t width, uint32_t height, uint32_t channels) {
    if (static_cast<int32_t>(width) < 0 || static_cast<int32_t>(height) < 0)
        return false;
    // Both below 2^31, so the product of two fits 64 bits; channels is divided, not multiplied.
    const uint64_t pixels = static_cast<uint64_t>(width) * height;
    return channels == 0 || pixels <= MAX_SAMPLES / channels;
}

FRAME *cfa::new_frame(uint32_t type, uint32_t format, uint32_t width, uint32_t height, uint32_t channels,
                      uint32_t bit_depth) {
    if (!frame_size_ok(width, height, channels))
        allocation_error();
    auto *const frame = static_cast<FRAME *>(std::malloc(sizeof(FRAME)));
    if (frame == nullptr)
        allocation_error();
    const size_t samples = static_cast<size_t>(width) * height * channels;
    auto *const data = static_cast<uint32_t *>(std::calloc(samples + SPARE_SAMPLES, sizeof(uint32_t)));
    if (data == nullptr) {
        std::free(frame);
        allocation_error();
    }
    *frame = {type, format, width, height, channels, bit_depth, data};
    return frame;
}

FRAME *CM_NewFRAME(uint32_t type, uint32_t format, uint32_t width, uint32_t height, uint32_t channels,
                   uint32_t bit_depth) {
    return or_end_process([=] { return new_frame(type, format, width, height, channels, bit_depth); });
}

int CM_DelFRAME(FRAME *frame) {
    // Kept: a frame without a buffer stays allocated, record and all.
    if (frame != nullptr && frame->data != nullptr) {
        std::free(frame->data);
        std::free(frame);
    }
    return 0;
}
