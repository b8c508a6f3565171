// cfatool probe: every plane and image of a run at one pixel, in pipeline order.
#include <algorithm>
#include <fmt/core.h>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "tools/cfatool/base/json_text.h"
#include "tools/cfatool/base/numbers.h"
#include "tools/cfatool/pictures/colour_sites.h"
#include "tools/cfatool/runs/plane_file.h"
#include "tools/cfatool/runs/run_folder.h"
#include "tools/cfatool/subcommands.h"

namespace cfatool {
namespace {

struct ProbeOptions {
    std::string folder;
    std::string pixel;
    int window = 0;
    bool json = false;
};

/// The window of one plane, channels interleaved; positions outside the plane are left out by the limits.
struct Window {
    int left, top, right, bottom; // inclusive, within the plane
    int channels;
    std::vector<Json> rows; // each a list of numbers, null for a sample that the image does not hold
};

/// How far the samples of an image lie before those of the plane that it shows, in raster order.
int shift_of(const RunPlane &file) {
    const bool shifted = !file.exact && file.plane != nullptr && file.plane->channels == 1;
    const int channel = shifted ? file.plane->image.channel : 0;
    return channel < 3 ? channel : 0;
}

Window read_window(const RunPlane &plane, int x, int y, int radius) {
    const PlaneFile file(plane.path);
    const PlaneForm &form = file.form();
    if (x >= form.width || y >= form.height)
        throw file_trouble(plane.path,
                           fmt::format("has no pixel {},{}: it is {}x{}", x, y, form.width, form.height));
    Window window{std::max(x - radius, 0),
                  std::max(y - radius, 0),
                  std::min(x + radius, form.width - 1),
                  std::min(y + radius, form.height - 1),
                  form.channels,
                  {}};
    const int shift = shift_of(plane), first = std::max(window.top - shift, 0);
    const std::vector<int32_t> samples = file.read(0, first, form.width, window.bottom - first + 1);
    for (int r = window.top; r <= window.bottom; ++r) {
        Json row = Json::array();
        for (int i = window.left * form.channels; i < (window.right + 1) * form.channels; ++i) {
            const int64_t at = int64_t{r - first} * form.width * form.channels + i - shift;
            const int32_t sample = at < 0 ? 0 : samples[static_cast<size_t>(at)];
            row.push_back(at < 0           ? Json()
                          : form.is_signed ? Json(sample)
                                           : Json(static_cast<uint32_t>(sample)));
        }
        window.rows.push_back(row);
    }
    return window;
}

/// The samples of one pixel, "12" or "12/34/56".
std::string pixel_text(const Window &window, int x, int y) {
    const Json &row = window.rows[static_cast<size_t>(y - window.top)];
    const size_t at = static_cast<size_t>(x - window.left) * static_cast<size_t>(window.channels);
    std::string text;
    for (size_t i = at; i < at + static_cast<size_t>(window.channels); ++i)
        text += (i > at ? "/" : "") + (row[i].is_null() ? std::string("not shown") : row[i].dump());
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

/// "pixel 5,7, a Gr site of pattern 2" where the run has its top-level registers.
std::string heading(const RunFolder &run, int x, int y) {
    const std::string text = fmt::format("pixel {},{} of {}", x, y, run.path());
    if (!run.bayer())
        return text + "\n";
    return fmt::format("{}, {} site of pattern {}\n", text, site_name(x, y, *run.bayer()), *run.bayer());
}

int run(const ProbeOptions &options) {
    const auto pixel = parse_list(options.pixel, "X,Y", ',', 2, 0, INT32_MAX);
    const int x = static_cast<int>(pixel[0]), y = static_cast<int>(pixel[1]);
    const RunFolder folder(options.folder);
    if (folder.planes().empty())
        throw file_trouble(options.folder, "holds no plane and no image");
    Json json = Json::array();
    std::string text = heading(folder, x, y), trouble;
    size_t read = 0;
    for (const RunPlane &plane : folder.planes()) {
        const std::string name = plane.name.substr(plane.name.rfind('/') + 1); // npos + 1 is 0
        try {
            const Window window = read_window(plane, x, y, options.window);
            json.push_back({{"image", name},
                            {"stage", plane.stage.empty() ? Json() : Json(plane.stage)},
                            {"left", window.left},
                            {"top", window.top},
                            {"channels", window.channels},
                            {"rows", window.rows}});
            text += fmt::format("{:<28} {:<15} {}\n", name, pixel_text(window, x, y),
                                shift_of(plane) > 0 ? plane.plane->shows : plane.shows);
            text += options.window > 0 ? neighbourhood(window, x, y) : "";
            ++read;
        } catch (const Trouble &reason) {
            trouble += reason.what() + std::string("\n");
        }
    }
    if (read > 0)
        std::cout << (options.json ? json_text(json) + "\n" : text);
    std::cerr << (read > 0 ? trouble : trouble.substr(0, trouble.find('\n') + 1));
    return trouble.empty() ? STATUS_GOOD : STATUS_TROUBLE;
}

} // namespace

void probe_command(Command &command) {
    const auto options = std::make_shared<ProbeOptions>();
    command.word("RUN_DIR", options->folder,
                 "Folder of a run: planes, debug images, outputs, raw.ppm, INI files");
    command.word("PIXEL", options->pixel, "Column and row, X,Y, from 0");
    command.number("--window", options->window, 0, 32, "Show the pixels around it up to this distance (0)");
    command.flag("--json", options->json, "Print JSON");
    command.footer(
        "Example: cfatool probe run/ 17,42 --window 2\n"
        "Three channels are shown as R/G/B. The debug images of GH_lp and GV_lp, which are shifted by a\n"
        "pixel, are put back into their place. A file that cannot be read does not stop the others.");
    command.run(options, run);
}

} // namespace cfatool
