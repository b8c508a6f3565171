// FRAME: one image plane, and who owns it.
#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <memory>

/// One image plane. Sample (y, x) of channel k is data[channels * (width * y + x) + k], a 32-bit word
/// whatever the bit depth; planes of signed intermediates hold two's complement in the same words. Three
/// channels are R (the colour of code-3 sites), G, B (the colour of code-0 sites).
struct FRAME {
    uint32_t type;
    uint32_t format;
    uint32_t width;
    uint32_t height;
    uint32_t channels;  // 1 or 3
    uint32_t bit_depth; // significant bits of a sample
    uint32_t *data;
};

constexpr uint32_t FRAME_TYPE_IMG = 2;
constexpr uint32_t FRAME_TYPE_RAW = 3;

constexpr uint32_t FRAME_FMT_RGB = 0; // three interleaved channels
constexpr uint32_t FRAME_FMT_YCBCR = 1;
constexpr uint32_t FRAME_FMT_MONO = 2; // one channel
constexpr uint32_t FRAME_FMT_RAW_RGB = 3;

/// Makes a zero-filled frame with three spare zero samples behind the last, owned by the caller.
/// Ends the process with "Unable to allocate memory" and status 1 when memory is short, when width or height
/// is negative as a signed number, or when width x height x channels exceeds 2147483647.
FRAME *CM_NewFRAME(uint32_t type, uint32_t format, uint32_t width, uint32_t height, uint32_t channels,
                   uint32_t bit_depth);

/// Frees the samples and the record; a null frame, or one whose buffer is null, is left as it is. Returns 0.
int CM_DelFRAME(FRAME *frame);

namespace cfa {

/// CM_NewFRAME for who can take an error: throws std::bad_alloc where that ends the process.
FRAME *new_frame(uint32_t type, uint32_t format, uint32_t width, uint32_t height, uint32_t channels,
                 uint32_t bit_depth);

/// Whether CM_NewFRAME accepts these counts (width and height read as signed).
bool frame_size_ok(uint32_t width, uint32_t height, uint32_t channels);

struct FrameDeleter {
    void operator()(FRAME *frame) const { CM_DelFRAME(frame); }
};

/// An owned frame, released by CM_DelFRAME.
using FramePtr = std::unique_ptr<FRAME, FrameDeleter>;

/// A plane of the size of `like`; its format follows from the channels (1 or 3).
inline FramePtr plane_like(const FRAME *like, uint32_t type, uint32_t channels, uint32_t bit_depth) {
    const uint32_t format = channels == 3 ? FRAME_FMT_RGB : FRAME_FMT_MONO;
    return FramePtr(new_frame(type, format, like->width, like->height, channels, bit_depth));
}

/// Width and height as the numbers that loops count in.
inline int width_of(const FRAME *frame) {
    return static_cast<int>(frame->width);
}
inline int height_of(const FRAME *frame) {
    return static_cast<int>(frame->height);
}

/// Index of sample (y, x) of channel c. REQUIRES the position to lie in the frame.
inline size_t sample_index(const FRAME *frame, int y, int x, int c) {
    assert(0 <= y && y < height_of(frame) && 0 <= x && x < width_of(frame));
    assert(0 <= c && c < static_cast<int>(frame->channels));
    return (static_cast<size_t>(y) * frame->width + x) * frame->channels + c;
}

/// Sample (y, x) of channel c for writing.
inline uint32_t &sample(FRAME *frame, int y, int x, int c = 0) {
    return frame->data[sample_index(frame, y, x, c)];
}

/// Sample (y, x) of channel c, read as the signed 32-bit number that the arithmetic works on.
inline int32_t value(const FRAME *frame, int y, int x, int c = 0) {
    return static_cast<int32_t>(frame->data[sample_index(frame, y, x, c)]);
}

} // namespace cfa
