// cfatool probe: every image of a run at one pixel, in pipeline order.
#include <algorithm>
#include <iostream>
#include <memory>

#include "tools/cfatool/base/json.h"
#include "tools/cfatool/compare/picture_compare.h"
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
        throw file_trouble(path, "has no pixel " + std::to_string(x) + "," + std::to_string(y) + ": it is " +
                                     std::to_string(info.width) + "x" + std::to_string(info.height));
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
        text += "/" + std::to_string(row[at + static_cast<size_t>(c)]);
    return text;
}

void print_neighbourhood(const Window &window, int x, int y) {
    size_t width = 0;
    for (int r = window.top; r <= window.bottom; ++r)
        for (int c = window.left; c <= window.right; ++c)
            width = std::max(width, pixel_text(window, c, r).size());
    for (int r = window.top; r <= window.bottom; ++r) {
        std::cout << "    ";
        for (int c = window.left; c <= window.right; ++c) {
            const std::string text = pixel_text(window, c, r);
            const bool centre = c == x && r == y;
            std::cout << std::string(width - text.size(), ' ') << (centre ? "[" : " ") << text
                      << (centre ? "]" : " ");
        }
        std::cout << "\n";
    }
}

std::string image_json(const FoundImage &image, const Window &window) {
    std::vector<std::string> rows;
    for (const std::vector<uint32_t> &row : window.rows) {
        std::vector<std::string> samples;
        for (const uint32_t sample : row)
            samples.push_back(std::to_string(sample));
        rows.push_back(json_list("[]", samples));
    }
    return json_list("{}",
                     {json_member("image", json_text(image.name)),
                      json_member("stage", image.known != nullptr ? json_text(image.known->stage) : "null"),
                      json_member("left", std::to_string(window.left)),
                      json_member("top", std::to_string(window.top)),
                      json_member("channels", std::to_string(window.channels)),
                      json_member("rows", json_list("[]", rows))});
}

/// "pixel 5,7, a Gr site of pattern 2" where the run has its top-level registers.
std::string heading(const ProbeOptions &options, int x, int y) {
    std::string text = "pixel " + std::to_string(x) + "," + std::to_string(y) + " of " + options.folder;
    const std::string ini = options.folder + "/cmodel_top.ini";
    if (!readable(ini))
        return text;
    Registers registers;
    registers.load(ini);
    const auto bayer = static_cast<uint32_t>(int32_t{registers.top.hw.reg_img_bayerid});
    return text + ", " + site_name(x, y, bayer) + " site of pattern " + std::to_string(bayer);
}

void run(const ProbeOptions &options) {
    const auto pixel = parse_list(options.pixel, "X,Y", ',', 2, 0, INT32_MAX);
    const int x = static_cast<int>(pixel[0]), y = static_cast<int>(pixel[1]);
    const std::vector<FoundImage> images = find_images(options.folder);
    if (images.empty())
        throw file_trouble(options.folder, "holds no .ppm image");
    std::vector<std::string> json;
    if (!options.json)
        std::cout << heading(options, x, y) << "\n";
    for (const FoundImage &image : images) {
        const Window window = read_window(image.path, x, y, options.window);
        if (options.json) {
            json.push_back(image_json(image, window));
            continue;
        }
        const std::string value = pixel_text(window, x, y);
        std::cout << image.name << std::string(image.name.size() < 29 ? 29 - image.name.size() : 1, ' ')
                  << value << std::string(value.size() < 16 ? 16 - value.size() : 1, ' ')
                  << (image.known != nullptr ? image.known->shows : "") << "\n";
        if (options.window > 0)
            print_neighbourhood(window, x, y);
    }
    if (options.json)
        std::cout << json_list("[]", json) << "\n";
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
