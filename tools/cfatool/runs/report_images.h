// The images of a report: PNG files, thumbnails, and the samples that the page shows under the pointer.
#pragma once

#include <string>

#include "tools/cfatool/pictures/picture_reader.h"
#include "tools/cfatool/runs/run_images.h"

namespace cfatool {

struct ReportImage {
    FoundImage image;
    PictureInfo info;
    uint32_t least = 0, most = 0; // of its samples
    int64_t gain = 1;             // the PNG is brightened by this factor
    std::string full;             // PNG below the report folder; empty for a picture of no pixels
    std::string thumbnail;        // PNG below the report folder, the same file for a small picture

    uint64_t samples() const { return info.row_samples() * static_cast<uint64_t>(info.height); }
};

/// Widest thumbnail in pixels.
constexpr int THUMBNAIL = 256;

/// Writes the PNG files of one image below `folder`, which has images/ and thumbs/.
/// Throws Trouble for a missing, short or malformed picture and for failed writes.
ReportImage make_report_image(const FoundImage &image, const std::string &folder);

/// Every sample of a picture in base64: two bytes each, four if the largest needs them, high byte first.
/// REQUIRES less than 500 million samples.
std::string samples_base64(const ReportImage &image);

} // namespace cfatool
