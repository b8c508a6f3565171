// cfatool chart: test charts as mosaics.
#include <fmt/core.h>
#include <iostream>
#include <memory>

#include "tools/cfatool/base/numbers.h"
#include "tools/cfatool/base/suggestion.h"
#include "tools/cfatool/charts/chart_file.h"
#include "tools/cfatool/subcommands.h"

namespace cfatool {
namespace {

constexpr int64_t NOT_GIVEN = -1;

struct ChartOptions {
    bool list = false;
    std::string name;
    std::string size;
    int64_t bayer = NOT_GIVEN;
    int bits = 12;
    uint64_t seed = 1;
    int64_t noise = NOT_GIVEN;
    int64_t period = NOT_GIVEN;
    int64_t angle = NOT_GIVEN;
    std::string rgb;
    std::string output;
};

void print_list() {
    for (const Chart &chart : charts())
        std::cout << fmt::format("{:<15} {}\n", chart.name, chart.description);
}

const Chart &find_chart(const std::string &name) {
    std::vector<std::string> names;
    for (const Chart &chart : charts()) {
        if (name == chart.name)
            return chart;
        names.emplace_back(chart.name);
    }
    throw UsageTrouble("unknown chart '" + name + "'" + suggestion(name, names));
}

/// Refuses an option that the chart would ignore.
void refuse(bool given, const char *option, const Chart &chart) {
    if (given)
        throw UsageTrouble(std::string(chart.name) + " takes no " + option);
}

Canvas canvas_of(const ChartOptions &options, const Chart &chart, const MosaicForm &form) {
    refuse(options.period != NOT_GIVEN && chart.period == 0, "--period", chart);
    refuse(options.angle != NOT_GIVEN && chart.angle < 0, "--angle", chart);
    refuse(!options.rgb.empty() && std::string(chart.name) != "flat", "--rgb", chart);
    Canvas canvas;
    canvas.seed = options.seed;
    canvas.period = options.period != NOT_GIVEN ? options.period : chart.period;
    canvas.angle = options.angle != NOT_GIVEN ? options.angle : chart.angle;
    const int64_t middle = form.max() / 2 + 1;
    canvas.colour = {middle, middle, middle};
    if (!options.rgb.empty()) {
        const auto rgb = parse_list(options.rgb, "--rgb", ',', 3, 0, form.max());
        canvas.colour = {rgb[0], rgb[1], rgb[2]};
    }
    return canvas;
}

MosaicForm form_of(const ChartOptions &options, const Chart &chart) {
    const Size size = parse_size(options.size, "--size");
    MosaicForm form;
    form.width = size.width;
    form.height = size.height;
    form.bayer = static_cast<uint32_t>(options.bayer);
    form.bits = options.bits;
    form.noise = options.noise != NOT_GIVEN ? options.noise : default_noise(chart, form);
    form.seed = options.seed;
    return form;
}

void run(const ChartOptions &options) {
    if (options.list)
        return print_list();
    const std::pair<bool, const char *> needed[] = {{!options.name.empty(), "NAME"},
                                                    {!options.size.empty(), "--size"},
                                                    {options.bayer != NOT_GIVEN, "--bayer"},
                                                    {!options.output.empty(), "-o"}};
    for (const auto &[given, name] : needed)
        if (!given)
            throw UsageTrouble(std::string(name) + " is required");
    const Chart &chart = find_chart(options.name);
    const MosaicForm form = form_of(options, chart);
    write_chart(options.output, chart, form, canvas_of(options, chart, form));
}

} // namespace

void chart_command(Command &command) {
    const auto options = std::make_shared<ChartOptions>();
    command.flag("--list", options->list, "Name the charts, a line each");
    command.word("NAME", options->name, "The chart", Need::optional);
    command.text("--size", options->size, "WxH", "Width and height in pixels, 1 to 65535 each");
    command.number("--bayer", options->bayer, 0, 15, "Pattern id, 0 to 15: 0 BGGR, 1 GBRG, 2 GRBG, 3 RGGB");
    command.number("--bits", options->bits, 2, 31, "Depth of the samples, 2 to 31 (12)");
    command.number("--seed", options->seed, 0, INT64_MAX, "Seed of noise and random charts (1)");
    command.thousandths(
        "--noise", options->noise, 0, 1000000000,
        "Standard deviation of normal noise, in sample steps (scene: 4 at 12 bits; others 0)");
    command.thousandths("--period", options->period, 1000, 1000000, "Distance of what repeats, in pixels");
    command.thousandths("--angle", options->angle, 0, 360000, "Angle in degrees");
    command.text("--rgb", options->rgb, "R,G,B", "Colour of the flat chart, in samples");
    command.text("-o", options->output, "FILE", "The file to write");
    command.footer("Example: cfatool chart scene --size 640x480 --bayer 3 -o scene.ppm\n"
                   "The same arguments give the same bytes on every machine.");
    command.run(options, run);
}

} // namespace cfatool
