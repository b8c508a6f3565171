// PNG files and thumbnails of a report.
#include "tools/cfatool/runs/report_images.h"

#include <algorithm>
#include <openssl/evp.h>
#include <optional>

#include "tools/cfatool/pictures/png_file.h"
#include "tools/cfatool/pictures/preview_colours.h"

namespace cfatool {
namespace {

/// Averages blocks of factor x factor pixels; what is left over at the right and the bottom is dropped.
class Thumbnail {
  public:
    Thumbnail(const std::string &path, const PictureInfo &info, int factor)
        : width_(info.width / factor), height_(std::max(info.height / factor, 1)), factor_(factor),
          rows_per_line_(std::min(factor, info.height)), png_(path, width_, height_),
          sums_(3 * static_cast<size_t>(width_)) {}

    void add(const std::vector<uint8_t> &row) {
        if (lines_ == height_)
            return;
        const size_t pixels = static_cast<size_t>(width_) * static_cast<size_t>(factor_);
        for (size_t x = 0; x < pixels; ++x)
            for (size_t c = 0; c < 3; ++c)
                sums_[x / static_cast<size_t>(factor_) * 3 + c] += row[3 * x + c];
        if (++rows_ < rows_per_line_)
            return;
        std::vector<uint8_t> line;
        for (uint32_t &sum : sums_) {
            line.push_back(static_cast<uint8_t>(sum / static_cast<uint32_t>(factor_ * rows_per_line_)));
            sum = 0;
        }
        png_.write_row(line);
        rows_ = 0;
        ++lines_;
    }
    void commit() { png_.commit(); }

  private:
    int width_, height_, factor_, rows_per_line_;
    PngWriter png_;
    std::vector<uint32_t> sums_;
    int rows_ = 0;
    int lines_ = 0;
};

void find_limits(ReportImage &image) {
    PictureReader reader(image.image.path);
    image.info = reader.info();
    std::vector<uint32_t> row;
    image.least = UINT32_MAX;
    for (int y = 0; y < image.info.height; ++y) {
        reader.read_row(row);
        for (const uint32_t sample : row) {
            image.least = std::min(image.least, sample);
            image.most = std::max(image.most, sample);
        }
    }
    reader.finish();
    image.least = std::min(image.least, image.most);
}

void write_pngs(const ReportImage &image, const std::string &folder) {
    PictureReader reader(image.image.path);
    const PictureInfo &info = reader.info();
    const Look look = look_of_name(image.image.name);
    PngWriter png(folder + "/" + image.full, info.width, info.height);
    std::optional<Thumbnail> thumbnail;
    if (image.thumbnail != image.full)
        thumbnail.emplace(folder + "/" + image.thumbnail, info, (info.width + THUMBNAIL - 1) / THUMBNAIL);
    std::vector<uint32_t> samples;
    std::vector<uint8_t> row;
    for (int y = 0; y < info.height; ++y) {
        reader.read_row(samples);
        row.clear();
        for (size_t i = 0; i < samples.size(); i += static_cast<size_t>(info.channels)) {
            const uint32_t rgb = preview_colour(&samples[i], info, look, image.gain * 1000);
            for (const int shift : {16, 8, 0})
                row.push_back(static_cast<uint8_t>(rgb >> shift));
        }
        png.write_row(row);
        if (thumbnail)
            thumbnail->add(row);
    }
    png.commit();
    if (thumbnail)
        thumbnail->commit();
}

} // namespace

ReportImage make_report_image(const FoundImage &found, const std::string &folder) {
    ReportImage image;
    image.image = found;
    find_limits(image);
    if (image.samples() == 0)
        return image;
    const bool debug = found.name.rfind("dbg_", 0) == 0 && look_of_name(found.name) == Look::plain;
    if (debug && image.most > 0 && image.most < image.info.max / 2)
        image.gain = std::min<int64_t>(image.info.max / image.most, 1000);
    const std::string png = found.name.substr(0, found.name.rfind('.')) + ".png";
    image.full = "images/" + png;
    image.thumbnail = image.info.width <= THUMBNAIL ? image.full : "thumbs/" + png;
    write_pngs(image, folder);
    return image;
}

std::string samples_base64(const ReportImage &image) {
    std::vector<uint8_t> bytes;
    PictureReader reader(image.image.path);
    std::vector<uint32_t> row;
    for (int y = 0; y < image.info.height; ++y) {
        reader.read_row(row);
        for (const uint32_t sample : row)
            for (int shift = image.most > 65535 ? 24 : 8; shift >= 0; shift -= 8)
                bytes.push_back(static_cast<uint8_t>(sample >> shift));
    }
    std::string text((bytes.size() + 2) / 3 * 4, '\0');
    EVP_EncodeBlock(reinterpret_cast<uint8_t *>(text.data()), bytes.data(), static_cast<int>(bytes.size()));
    return text;
}

} // namespace cfatool
