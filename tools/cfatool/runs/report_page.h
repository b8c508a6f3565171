// The page of a report.
#pragma once

#include <string>
#include <vector>

#include "tools/cfatool/runs/report_images.h"

namespace cfatool {

/// One register that differs from its default.
struct ReportRegister {
    std::string section, key, meaning;
    int32_t reset, value;
};

struct Report {
    std::string folder;    // of the run
    std::string call;      // the command line
    bool call_is_recorded; // it was written down with the run; otherwise one that makes the run again
    std::vector<std::string> register_files;
    std::vector<ReportRegister> registers;
    std::vector<ReportImage> images; // in pipeline order
};

/// The whole page, HTML in UTF-8. It refers to the PNG files of the images and to nothing else. Small runs
/// carry their samples, so that the page shows the values of all images at the pixel under the pointer.
std::string report_page(const Report &report);

/// Text for HTML: & < > and quotes escaped.
std::string html_text(const std::string &text);

} // namespace cfatool
