#include "block/block.h"

#include <algorithm>

#include "cmodel/cfa/src/cfa_hw.h"
#include "cmodel/cfa/src/cfa_model.h"
#include "cmodel/cfa/src/kit/in_force.h"
#include "cmodel/cfa/src/lines/conditions.h"
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

template <class Sample> void run_engine(const Mosaic &mosaic, const OutputLayouts &out) {
    MemorySource<Sample> source(mosaic);
    MemorySink<Sample> sink(out, static_cast<int>(mosaic.width));
    run_line_engine(static_cast<int>(mosaic.width), static_cast<int>(mosaic.height), source, sink);
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

void KeptPlanes::take(const PlaneInfo &info, const FRAME *plane) {
    if (std::find(wanted_.begin(), wanted_.end(), &info) == wanted_.end())
        return;
    const size_t samples = static_cast<size_t>(plane->width) * plane->height * plane->channels;
    auto copy = std::make_unique_for_overwrite<int32_t[]>(samples);
    std::transform(plane->data, plane->data + samples, copy.get(),
                   [](uint32_t v) { return static_cast<int32_t>(v); });
    kept_.push_back({&info, plane->width, plane->height, std::move(copy)});
}

const char *run_on_memory(const BlockRegisters &registers, KeptPlanes &planes, const Mosaic &mosaic,
                          const OutputLayouts &out) {
    planes.forget();
    const BoundRegisters bound(registers.cfa, registers.top, planes.any() ? &planes : nullptr);
    if (registers.cfa.hw.reg_cfa_enable == 0) {
        bypass(mosaic, out);
        return nullptr;
    }
    refuse_small_picture(mosaic.width, mosaic.height);
    const char *const reason = cfa_lines_excludes(mosaic.width, mosaic.height);
    if (reason != nullptr)
        run_model(mosaic, out);
    else if (cfa_lines_need_wide_rows(mosaic.union_of_bits()))
        run_engine<int32_t>(mosaic, out);
    else
        run_engine<int16_t>(mosaic, out);
    return reason;
}

} // namespace cfa
