// Colour sites, scaling, noise, and the P5 form.
#include "tools/cfatool/pictures/mosaic_writer.h"

#include <algorithm>

#include "cmodel/common/color_id.h"
#include "cmodel/common/ppm_stream.h"
#include "tools/cfatool/base/integer_math.h"

namespace cfatool {

MosaicWriter::MosaicWriter(const std::string &path, const MosaicForm &form)
    : form_(form), sample_bytes_(cfa::ppm_sample_bytes(form.bits)), file_(path),
      buffer_(static_cast<size_t>(form.width) * sample_bytes_) {
    file_.write(cfa::ppm_header_text('5', form.width, form.height, form.bits));
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
    uint8_t *to = buffer_.data();
    for (int x = 0; x < form_.width; ++x) {
        const int64_t sample = sample_of(x, row[x]);
        for (int shift = 8 * (sample_bytes_ - 1); shift >= 0; shift -= 8)
            *to++ = static_cast<uint8_t>(sample >> shift);
    }
    file_.write(buffer_.data(), buffer_.size());
    ++y_;
}

} // namespace cfatool
