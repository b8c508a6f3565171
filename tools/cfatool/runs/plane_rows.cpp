#include "tools/cfatool/runs/plane_rows.h"

#include <algorithm>
#include <filesystem>
#include <tuple>
#include <utility>
#include <vector>

#include "cmodel/cfa/src/lines/kernels/plane_words.h"

namespace cfatool {

void PlaneRows::take(const cfa::PlaneInfo &info, const FRAME *plane) {
    const size_t samples = static_cast<size_t>(plane->width) * plane->channels;
    std::vector<int32_t> row(samples);
    for (int y = 0; y < cfa::height_of(plane); ++y) {
        std::copy_n(plane->data + static_cast<size_t>(y) * samples, samples, row.begin());
        put(info, y, row.data());
    }
}

template <class T> void PlaneRows::join(const cfa::PlaneInfo &info, int y, const cfa::SplitRow<T> *channels) {
    std::vector<int32_t> row(static_cast<size_t>(raw_->width) * static_cast<size_t>(info.channels));
    cfa::join_exact(channels, info.channels, cfa::width_of(raw_), row.data());
    const std::lock_guard lock(one_at_a_time_);
    put(info, y, row.data());
}

void PlaneRows::row(const cfa::PlaneInfo &info, int y, const cfa::SplitRow<int16_t> *channels) {
    join(info, y, channels);
}
void PlaneRows::row(const cfa::PlaneInfo &info, int y, const cfa::SplitRow<int32_t> *channels) {
    join(info, y, channels);
}

void TakenPlanes::take(const cfa::PlaneInfo &info, const FRAME *plane) {
    cfa::FramePtr copy = cfa::plane_like(plane, plane->type, plane->channels, plane->bit_depth);
    std::copy_n(plane->data, static_cast<size_t>(plane->width) * plane->height * plane->channels, copy->data);
    planes[info.name] = std::move(copy);
}

void TakenPlanes::put(const cfa::PlaneInfo &info, int y, const int32_t *samples) {
    const auto channels = static_cast<uint32_t>(info.channels);
    cfa::FramePtr &plane = planes[info.name];
    if (!plane)
        plane = cfa::plane_like(raw_, FRAME_TYPE_IMG, channels, 32);
    const size_t count = static_cast<size_t>(raw_->width) * channels;
    std::copy_n(samples, count, plane->data + static_cast<size_t>(y) * count);
}

PlaneFiles::PlaneFiles(const FRAME *raw, std::string folder)
    : PlaneRows(raw), folder_(std::move(folder) + "/"),
      progress_(
          static_cast<uint64_t>(std::count_if(cfa::planes().begin(), cfa::planes().end(), cfa::is_made)) *
              raw->height,
          "writing planes") {
    std::filesystem::create_directory(folder_);
}

void PlaneFiles::put_mosaic() const {
    PlaneForm form = form_of(1);
    form.bytes = raw_->bit_depth > 16 ? 4 : 2;
    form.is_signed = false;
    NpyFile file(folder_ + "raw.npy", form);
    for (int y = 0; y < form.height; ++y) {
        const uint32_t *const row = raw_->data + static_cast<size_t>(y) * raw_->width;
        const std::vector<uint16_t> words(row, row + raw_->width);
        file.write_row(form.bytes == 4 ? static_cast<const void *>(row) : words.data());
    }
    file.commit();
}

void PlaneFiles::put(const cfa::PlaneInfo &info, int y, const int32_t *samples) {
    if (y == 0)
        files_.emplace(std::piecewise_construct, std::forward_as_tuple(&info),
                       std::forward_as_tuple(folder_ + info.name + ".npy", form_of(info.channels)));
    NpyFile &file = files_.at(&info);
    file.write_row(samples);
    if (y == cfa::height_of(raw_) - 1)
        file.commit();
    progress_.add(1);
}

PlaneForm PlaneFiles::form_of(int channels) const {
    PlaneForm form;
    form.width = cfa::width_of(raw_);
    form.height = cfa::height_of(raw_);
    form.channels = channels;
    form.bytes = 4;
    form.is_signed = true;
    return form;
}

} // namespace cfatool
