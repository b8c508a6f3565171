#include "tools/cfatool/compare/crop_window.h"

#include <algorithm>
#include <optional>

namespace cfatool {
namespace {

constexpr int REFERENCE = 256;     // of a large picture, pixels around the one in question stand for all
constexpr int SMALLEST[] = {4, 3}; // picture that the block takes

/// Whether a window has what must be kept as the reference has it.
bool keeps(const CropWindow &window, const CropWindow &reference, const CropQuestion &question) {
    for (const Kept &kept : question.kept) {
        const FRAME *const want = reference.plane(kept.plane), *const got = window.plane(kept.plane);
        for (int y = question.y - kept.reach; y <= question.y + kept.reach && want != nullptr; ++y)
            for (int x = question.x - kept.reach; x <= question.x + kept.reach; ++x) {
                if (!reference.holds(x, y))
                    continue;
                if (!window.holds(x, y))
                    return false;
                for (int c = 0; c < static_cast<int>(want->channels); ++c)
                    if (cfa::value(want, y - reference.at.y, x - reference.at.x, c) !=
                        cfa::value(got, y - window.at.y, x - window.at.x, c))
                        return false;
            }
    }
    return true;
}

/// from..to in steps of the pattern, within 0..size and at least `least` long.
void align(int from, int to, int size, int period, int least, int &begin, int &length) {
    begin = std::max(from, 0) / period * period;
    int end = std::min((to + period - 1) / period * period, size);
    end = std::min(std::max(end, begin + least), size);
    while (end - begin < least && begin > 0)
        begin -= period;
    length = end - begin;
}

class Cutter {
  public:
    Cutter(const FRAME *mosaic, const Registers &registers, const CropQuestion &question)
        : mosaic_(mosaic), registers_(registers), question_(question),
          period_(int32_t{registers.top.hw.reg_img_bayerid} > 7 ? 4 : 2),
          reference_(mosaic, around(is_large() ? REFERENCE : std::max(width(), height())), registers) {
        if (question.other == nullptr)
            return;
        other_.emplace(mosaic, reference_.at, *question.other);
        if (makes_again(*other_))
            question_.kept.resize(1);
        else
            other_.reset();
    }

    CropWindow cut() const {
        for (int reach = 0;; ++reach) {
            const Crop crop = around(reach);
            CropWindow window(mosaic_, crop, registers_);
            const bool all = crop.width >= reference_.at.width && crop.height >= reference_.at.height;
            if (all || enough(window))
                return all ? std::move(window) : shrink(std::move(window));
        }
    }

  private:
    int width() const { return cfa::width_of(mosaic_); }
    int height() const { return cfa::height_of(mosaic_); }
    bool is_large() const { return int64_t{width()} * height() > 4 * REFERENCE * REFERENCE; }

    /// Whether the samples of the other run are the model's.
    bool makes_again(const CropWindow &window) const {
        const FRAME *const plane = window.plane(question_.kept[0].plane);
        bool same = plane != nullptr && plane->channels == question_.samples.size();
        for (size_t c = 0; same && c < question_.samples.size(); ++c)
            same = cfa::value(plane, question_.y - window.at.y, question_.x - window.at.x,
                              static_cast<int>(c)) == question_.samples[c];
        return same;
    }

    bool enough(const CropWindow &window) const {
        return keeps(window, reference_, question_) &&
               (!other_ || keeps(CropWindow(mosaic_, window.at, *question_.other), *other_, question_));
    }

    Crop around(int reach) const {
        Crop crop;
        align(question_.x - reach, question_.x + reach + 1, width(), period_, SMALLEST[0], crop.x,
              crop.width);
        align(question_.y - reach, question_.y + reach + 1, height(), period_, SMALLEST[1], crop.y,
              crop.height);
        return crop;
    }

    /// Takes away what is not needed, side by side.
    CropWindow shrink(CropWindow window) const {
        for (bool smaller = true; smaller;) {
            smaller = false;
            for (int side = 0; side < 4; ++side) {
                Crop crop = window.at;
                (side < 2 ? crop.width : crop.height) -= period_;
                crop.x += side == 0 ? period_ : 0;
                crop.y += side == 2 ? period_ : 0;
                if (crop.width < SMALLEST[0] || crop.height < SMALLEST[1])
                    continue;
                if (CropWindow trial(mosaic_, crop, registers_); enough(trial)) {
                    window = std::move(trial);
                    smaller = true;
                }
            }
        }
        return window;
    }

    const FRAME *mosaic_;
    const Registers &registers_;
    CropQuestion question_;
    int period_;
    CropWindow reference_;
    std::optional<CropWindow> other_; // the reference of the other run
};

} // namespace

CropWindow::CropWindow(const FRAME *mosaic, const Crop &crop, const Registers &registers) : at(crop) {
    raw.reset(cfa::new_frame(FRAME_TYPE_IMG, FRAME_FMT_MONO, static_cast<uint32_t>(crop.width),
                             static_cast<uint32_t>(crop.height), 1, mosaic->bit_depth));
    for (int y = 0; y < crop.height; ++y)
        std::copy_n(mosaic->data + cfa::sample_index(mosaic, crop.y + y, crop.x, 0), crop.width,
                    &cfa::sample(raw.get(), y, 0));
    planes = planes_of_run(registers, raw.get());
}

CropWindow smallest_window(const FRAME *mosaic, const Registers &registers, const CropQuestion &question) {
    return Cutter(mosaic, registers, question).cut();
}

} // namespace cfatool
