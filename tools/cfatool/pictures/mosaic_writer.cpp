// Colour sites, scaling, noise, and the P5 form.
#include "tools/cfatool/pictures/mosaic_writer.h"

#include <algorithm>

#include "cmodel/common/color_id.h"
#include "tools/cfatool/base/integer_math.h"

namespace cfatool {
namespace {

constexpr uint32_t CODE_GREEN_4X4 = 16;       // on the rows that also carry red and blue
constexpr uint32_t CODE_GREEN_4X4_OTHER = 17; // on the other rows

int bytes_of(int bits) {
    return (bits + 7) / 8;
}

std::string header(const MosaicForm &form) {
    return "P5\n# Created by ZEMBRO DPU Model\n" + std::to_string(form.width) + " " +
           std::to_string(form.height) + "\n" + std::to_string(form.max()) + "\n";
}

} // namespace

int64_t site_value(uint32_t code, const Rgb &colour) {
    switch (code) {
    case cfa::CODE_R:
        return colour.r;
    case cfa::CODE_B:
        return colour.b;
    case cfa::CODE_GB:
    case cfa::CODE_GR:
    case CODE_GREEN_4X4:
    case CODE_GREEN_4X4_OTHER:
        return colour.g;
    default:
        return (colour.r + 2 * colour.g + colour.b) / 4;
    }
}

MosaicWriter::MosaicWriter(const std::string &path, const MosaicForm &form)
    : form_(form), file_(path), buffer_(static_cast<size_t>(form.width) * bytes_of(form.bits)) {
    file_.write(header(form));
}

int64_t MosaicWriter::sample_of(int x, const Rgb &colour) const {
    const int64_t max = form_.max();
    int64_t value = site_value(CM_GET_COLOR_ID(y_, x, form_.bayer), colour);
    if (form_.full != max)
        value = (std::min(value, form_.full) * max + form_.full / 2) / form_.full;
    if (form_.noise != 0)
        value += gaussian_noise(form_.seed, static_cast<uint64_t>(y_) * form_.width + x, form_.noise);
    return std::clamp<int64_t>(value, 0, max);
}

void MosaicWriter::write_row(const std::vector<Rgb> &row) {
    const int bytes = bytes_of(form_.bits);
    uint8_t *to = buffer_.data();
    for (int x = 0; x < form_.width; ++x) {
        const int64_t sample = sample_of(x, row[x]);
        for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8)
            *to++ = static_cast<uint8_t>(sample >> shift);
    }
    file_.write(buffer_.data(), buffer_.size());
    ++y_;
}

} // namespace cfatool
