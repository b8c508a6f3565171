// cfatool probe: every image of a run at one pixel, in pipeline order.
#include <algorithm>
#include <fmt/core.h>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "tools/cfatool/base/files.h"
#include "tools/cfatool/base/json_text.h"
#include "tools/cfatool/pictures/colour_sites.h"
#include "tools/cfatool/pictures/picture_crop.h"
#include "tools/cfatool/registers/registers.h"
#include "tools/cfatool/runs/run_images.h"
#include "tools/cfatool/subcommands.h"

namespace cfatool {
namespace {

struct ProbeOptions {
    std::string folder;
    std::string pixel;
    int window = 0;
    bool json = false;
};

/// The window of one image, channels interleaved; positions outside the picture are left out by the limits.
struct Window {
    int left, top, right, bottom; // inclusive, within the picture
    int channels;
    std::vector<std::vector<uint32_t>> rows;
};

Window read_window(const std::string &path, int x, int y, int radius) {
    PictureReader reader(path);
    const PictureInfo &info = reader.info();
    if (x >= info.width || y >= info.height)
        throw file_trouble(path,
                           fmt::format("has no pixel {},{}: it is {}x{}", x, y, info.width, info.height));
    Window window{std::max(x - radius, 0),
                  std::max(y - radius, 0),
                  std::min(x + radius, info.width - 1),
                  std::min(y + radius, info.height - 1),
                  info.channels,
                  {}};
    std::vector<uint32_t> row;
    for (int r = 0; r < info.height; ++r) {
        reader.read_row(row);
        if (r >= window.top && r <= window.bottom)
            window.rows.emplace_back(row.begin() + window.left * info.channels,
                                     row.begin() + (window.right + 1) * info.channels);
    }
    reader.finish();
    return window;
}

/// The samples of one pixel, "12" or "12/34/56".
std::string pixel_text(const Window &window, int x, int y) {
    const std::vector<uint32_t> &row = window.rows[static_cast<size_t>(y - window.top)];
    const size_t at = static_cast<size_t>(x - window.left) * static_cast<size_t>(window.channels);
    std::string text = std::to_string(row[at]);
    for (int c = 1; c < window.channels; ++c)
        text += fmt::format("/{}", row[at + static_cast<size_t>(c)]);
    return text;
}

/// The samples of a window in rows, (x, y) in brackets.
std::string neighbourhood(const Window &window, int x, int y) {
    size_t width = 0;
    for (int r = window.top; r <= window.bottom; ++r)
        for (int c = window.left; c <= window.right; ++c)
            width = std::max(width, pixel_text(window, c, r).size());
    std::string text;
    for (int r = window.top; r <= window.bottom; ++r) {
        text += "    ";
        for (int c = window.left; c <= window.right; ++c) {
            const bool centre = c == x && r == y;
            text += fmt::format("{:>{}}{}", (centre ? "[" : " ") + pixel_text(window, c, r), width + 1,
                                centre ? "]" : " ");
        }
        text += "\n";
    }
    return text;
}

Json image_json(const FoundImage &image, const Window &window) {
    return {
        {"image", image.name},         {"stage", image.known != nullptr ? Json(image.known->stage) : Json()},
        {"left", window.left},         {"top", window.top},
        {"channels", window.channels}, {"rows", window.rows}};
}

/// "pixel 5,7, a Gr site of pattern 2" where the run has its top-level registers.
std::string heading(const ProbeOptions &options, int x, int y) {
    std::string text = fmt::format("pixel {},{} of {}", x, y, options.folder);
    const std::string ini = options.folder + "/cmodel_top.ini";
    if (!readable(ini))
        return text;
    Registers registers;
    registers.load(ini);
    const auto bayer = static_cast<uint32_t>(int32_t{registers.top.hw.reg_img_bayerid});
    return fmt::format("{}, {} site of pattern {}", text, site_name(x, y, bayer), bayer);
}

void run(const ProbeOptions &options) {
    const auto pixel = parse_list(options.pixel, "X,Y", ',', 2, 0, INT32_MAX);
    const int x = static_cast<int>(pixel[0]), y = static_cast<int>(pixel[1]);
    const std::vector<FoundImage> images = find_images(options.folder);
    if (images.empty())
        throw file_trouble(options.folder, "holds no .ppm image");
    Json json = Json::array();
    std::string text = heading(options, x, y) + "\n";
    for (const FoundImage &image : images) {
        const Window window = read_window(image.path, x, y, options.window);
        json.push_back(image_json(image, window));
        text += fmt::format("{:<28} {:<15} {}\n", image.name, pixel_text(window, x, y),
                            image.known != nullptr ? image.known->shows : "");
        if (options.window > 0)
            text += neighbourhood(window, x, y);
    }
    std::cout << (options.json ? json_text(json) + "\n" : text);
}

} // namespace

void probe_command(Command &command) {
    const auto options = std::make_shared<ProbeOptions>();
    command.word("RUN_DIR", options->folder, "Folder of a run: debug images, outputs, raw.ppm, INI files");
    command.word("PIXEL", options->pixel, "Column and row, X,Y, from 0");
    command.number("--window", options->window, 0, 32, "Show the pixels around it up to this distance (0)");
    command.flag("--json", options->json, "Print JSON");
    command.footer("Example: cfatool probe run/ 17,42 --window 2\n"
                   "Three channels are shown as R/G/B.");
    command.run(options, run);
}

} // namespace cfatool
