#include "block/block.h"

#include <algorithm>

#include "cmodel/cfa/src/cfa_hw.h"
#include "cmodel/cfa/src/cfa_model.h"
#include "cmodel/cfa/src/kit/in_force.h"
#include "cmodel/cfa/src/lines/conditions.h"
#include "cmodel/cfa/src/lines/kernels/plane_words.h"
#include "cmodel/cfa/src/lines/rows.h"

namespace cfa {
namespace {

// The disabled block: the mosaic in all three channels, DC 0, a gain of 1.0.
void bypass(const Mosaic &mosaic, const OutputLayouts &out) {
    constexpr uint16_t GAIN_OF_ONE = 1024;
    const auto put = [&](const Layout &image, uint32_t y, int c, const auto &sample) {
        uint16_t *const row = image.row(y, c);
        for (uint32_t x = 0; x < mosaic.width; ++x)
            row[static_cast<ptrdiff_t>(x) * (image.pixel_stride() / 2)] = sample(x);
    };
    for (uint32_t y = 0; y < mosaic.height; ++y) {
        const uint16_t *const raw = mosaic.layout.row(y);
        for (int c = 0; c < 3 && out.rgb; ++c)
            put(out.rgb, y, c, [raw](uint32_t x) { return raw[x]; });
        if (out.dc)
            put(out.dc, y, 0, [](uint32_t) { return uint16_t{0}; });
        if (out.gain)
            put(out.gain, y, 0, [](uint32_t) { return GAIN_OF_ONE; });
    }
}

void run_model(const Mosaic &mosaic, const OutputLayouts &out) {
    const FramePtr raw = mosaic.frame();
    const FramePtr rgb = plane_like(raw.get(), FRAME_TYPE_IMG, 3, raw->bit_depth);
    const FramePtr dc = plane_like(raw.get(), FRAME_TYPE_IMG, 1, raw->bit_depth);
    const FramePtr gain = plane_like(raw.get(), FRAME_TYPE_IMG, 1, raw->bit_depth);
    cfa_model(raw.get(), rgb.get(), dc.get(), gain.get());
    copy_frame(rgb.get(), out.rgb);
    copy_frame(dc.get(), out.dc);
    copy_frame(gain.get(), out.gain);
}

template <class Sample> void run_engine(const Mosaic &mosaic, const OutputLayouts &out, int threads) {
    MemorySource<Sample> source(mosaic);
    MemorySink<Sample> sink(out, static_cast<int>(mosaic.width));
    run_line_engine(static_cast<int>(mosaic.width), static_cast<int>(mosaic.height), source, sink, threads);
}

} // namespace

KeptPlanes::KeptPlanes(std::string_view names) {
    if (names == "*")
        for (const PlaneInfo &info : planes())
            wanted_.push_back(&info);
    while (!names.empty() && names != "*") {
        const size_t comma = std::min(names.find(','), names.size());
        const std::string name(names.substr(0, comma));
        const PlaneInfo *const info = find_plane(name.c_str());
        if (info == nullptr)
            throw CallError(CFA_ERROR_PLANE, "no plane '" + name + "'");
        wanted_.push_back(info);
        names.remove_prefix(std::min(comma + 1, names.size()));
    }
}

bool KeptPlanes::wants(const PlaneInfo &plane) const {
    return std::find(wanted_.begin(), wanted_.end(), &plane) != wanted_.end();
}

void KeptPlanes::make_room(uint32_t width, uint32_t height) {
    std::vector<Kept> before = std::move(kept_);
    kept_.clear();
    for (const PlaneInfo &plane : planes()) {
        if (!wants(plane) || !is_made(plane))
            continue;
        const auto same = std::find_if(before.begin(), before.end(), [&](const Kept &old) {
            return old.info == &plane && old.width == width && old.height == height;
        });
        const size_t samples = static_cast<size_t>(width) * height * static_cast<size_t>(plane.channels);
        kept_.push_back(
            {&plane, width, height,
             same != before.end() ? std::move(same->memory) : make_large_buffer(samples * sizeof(int32_t))});
    }
}

int32_t *KeptPlanes::room_of(const PlaneInfo &plane) const {
    for (const Kept &kept : kept_)
        if (kept.info == &plane)
            return kept.samples();
    return nullptr;
}

void KeptPlanes::take(const PlaneInfo &plane, const FRAME *frame) {
    const size_t samples = static_cast<size_t>(frame->width) * frame->height * frame->channels;
    if (int32_t *const room = room_of(plane))
        std::transform(frame->data, frame->data + samples, room,
                       [](uint32_t v) { return static_cast<int32_t>(v); });
}

void KeptPlanes::row(const PlaneInfo &plane, int y, const SplitRow<int16_t> *channels) {
    keep_row(plane, y, channels);
}
void KeptPlanes::row(const PlaneInfo &plane, int y, const SplitRow<int32_t> *channels) {
    keep_row(plane, y, channels);
}

template <class T> void KeptPlanes::keep_row(const PlaneInfo &plane, int y, const SplitRow<T> *channels) {
    const size_t width = kept_.front().width;
    const size_t row = static_cast<size_t>(y) * width * static_cast<size_t>(plane.channels);
    join_exact(channels, plane.channels, static_cast<int>(width), room_of(plane) + row);
}

const char *run_on_memory(const BlockRegisters &registers, KeptPlanes &planes, const Mosaic &mosaic,
                          const OutputLayouts &out, int threads) {
    const BoundRegisters bound(registers.cfa, registers.top, planes.any() ? &planes : nullptr);
    if (registers.cfa.hw.reg_cfa_enable == 0) {
        planes.forget();
        bypass(mosaic, out);
        return nullptr;
    }
    refuse_small_picture(mosaic.width, mosaic.height);
    planes.make_room(mosaic.width, mosaic.height);
    const char *const reason = cfa_lines_excludes(mosaic.width, mosaic.height);
    if (reason != nullptr)
        run_model(mosaic, out);
    else if (cfa_lines_need_wide_rows(mosaic.union_of_bits()))
        run_engine<int32_t>(mosaic, out, threads);
    else
        run_engine<int16_t>(mosaic, out, threads);
    return reason;
}

} // namespace cfa
