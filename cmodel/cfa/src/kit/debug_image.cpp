#include "cmodel/cfa/src/kit/debug_image.h"

#include <algorithm>
#include <cstdio>

#include "cmodel/cfa/src/kit/fixed_point.h"
#include "cmodel/cfa/src/kit/in_force.h"
#include "cmodel/common/error.h"
#include "cmodel/common/ppm.h"

using namespace cfa;

bool dump_dbg_img = false;
char dbg_path[1024] = "";

namespace {

// |s| * gain wraps at 32 bits; a product that wraps negative shows as 0.
uint32_t shown(int32_t s, uint32_t gain, int64_t limit) {
    const int32_t scaled = static_cast<int32_t>(static_cast<uint32_t>(magnitude(s)) * gain);
    return static_cast<uint32_t>(std::min<int64_t>(limit, std::max(0, scaled)));
}

} // namespace

int32_t dump_dbg_frame(const FRAME *frame, int32_t channel, uint32_t gain, uint32_t bit_depth,
                       const std::string &path) {
    if (channel < 0 || channel > 3) {
        std::puts("Error...");
        return 1;
    }
    or_end_process([&] { dump_magnitudes(frame, channel, gain, bit_depth, path); });
    return 0;
}

bool cfa::debug_images_wanted() {
    return dump_dbg_img && in_force().is_process;
}

void cfa::dump_magnitudes(const FRAME *frame, int32_t channel, uint32_t gain, uint32_t bit_depth,
                          const std::string &path) {
    const bool color = channel == 3 && frame->channels == 3;
    const size_t channels = frame->channels;
    const size_t pixels = static_cast<size_t>(frame->width) * frame->height;
    const int64_t limit = (int64_t{1} << std::min(bit_depth, 32u)) - 1;

    const FramePtr image(new_frame(frame->type, color ? FRAME_FMT_RGB : FRAME_FMT_MONO, frame->width,
                                   frame->height, color ? 3 : 1, bit_depth));
    if (color) {
        for (size_t i = 0; i < 3 * pixels; ++i)
            image->data[i] = shown(static_cast<int32_t>(frame->data[i]), gain, limit);
        write_p6(path.c_str(), image.get());
    } else {
        // A selector beyond the last channel reads on into the next pixel, behind the plane zeros.
        for (size_t i = 0; i < pixels; ++i)
            image->data[i] = shown(static_cast<int32_t>(frame->data[channels * i + channel]), gain, limit);
        write_p5(path.c_str(), image.get());
    }
}

void cfa::dump_signed_map(const FRAME *plane, const std::string &path) {
    const FramePtr map = plane_like(plane, FRAME_TYPE_IMG, 3, 8);
    for (int y = 0; y < height_of(plane); ++y) {
        for (int x = 0; x < width_of(plane); ++x) {
            const int32_t v = (value(plane, y, x) * 4) >> 4;
            const int32_t size = std::min(magnitude(v), 255);
            sample(map.get(), y, x, 0) = v > 0 ? size : 0;
            sample(map.get(), y, x, 1) = v < 0 ? size : 0;
        }
    }
    write_p6(path.c_str(), map.get());
}

std::string cfa::debug_path_of(const char *name) {
    return (std::string(dbg_path) + "/" + name).substr(0, sizeof dbg_path - 1);
}
