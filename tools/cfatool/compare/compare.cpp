// cfatool compare: two pictures, or two run folders.
#include "tools/cfatool/compare/compare.h"

#include <fmt/core.h>
#include <iostream>
#include <memory>

#include "tools/cfatool/base/files.h"
#include "tools/cfatool/compare/compare_json.h"
#include "tools/cfatool/runs/run_images.h"
#include "tools/cfatool/subcommands.h"

namespace cfatool {
namespace {

/// The line of one channel, or of all together. REQUIRES samples > 0.
std::string channel_line(const char *name, const Comparison &found, const ChannelDifferences &of,
                         uint64_t samples) {
    const double share = 100.0 * static_cast<double>(of.differing) / static_cast<double>(samples);
    return fmt::format("  {:<5} {:>12} {:>10.5f}% {:>12} {:>14.6f}\n", name, of.differing, share, of.largest,
                       found.mean(of, samples));
}

void print_differences(const Comparison &found, const CompareCommand &command) {
    std::cout << "        differing      share      largest           mean\n";
    for (int c = 0; c < found.channels; ++c)
        std::cout << channel_line(channel_name(found.channels, c), found,
                                  found.channel[static_cast<size_t>(c)], found.pixels());
    if (found.channels > 1)
        std::cout << channel_line("all", found, found.all(), found.pixels() * 3);
    if (found.range > 0)
        std::cout << fmt::format("PSNR {:.2f} dB\n", found.psnr());
    std::cout << fmt::format("bounding box {},{},{},{} (X,Y,W,H)\nfirst difference: {}\n", found.left,
                             found.top, found.right - found.left + 1, found.bottom - found.top + 1,
                             difference_text(found, found.list.front(), command.options.bayer));
    for (size_t i = 0; i < found.list.size() && i < command.options.max_list; ++i)
        std::cout << "  " << difference_text(found, found.list[i], command.options.bayer) << "\n";
}

void print_text(const Comparison &found, const CompareCommand &command) {
    if (!found.mismatch.empty()) {
        std::cout << found.mismatch << "\n";
        return;
    }
    const bool equal = found.equal();
    const uint32_t tolerance = command.options.tolerance;
    const std::string verdict = !equal ? "differ"
                                : tolerance == 0
                                    ? "are equal"
                                    : fmt::format("are equal within the tolerance of {}", tolerance);
    std::cout << fmt::format("{} and {} {}: {}x{}, {}{}{}\n", command.a, command.b, verdict, found.width,
                             found.height, found.channels == 1 ? "1 channel" : "3 channels",
                             found.max > 0 ? fmt::format(", maximum value {}", found.max) : "",
                             !equal && tolerance > 0 ? fmt::format(", tolerance {}", tolerance) : "");
    if (!equal && !command.quiet)
        print_differences(found, command);
    else if (!command.quiet && found.all().largest > 0)
        std::cout << "largest difference " << found.all().largest << "\n";
}

/// The largest sample of the plane that an image of this name shows, 0 if it is none of ours.
uint32_t range_of_image(const std::string &path) {
    const std::string name = path.substr(path.rfind('/') + 1); // npos + 1 is 0
    for (const RunImage &image : run_images())
        if (image.file == name &&
            (image.plane == nullptr || image.plane->image.shown != cfa::Shown::signed_map))
            return range_of_format(image.range);
    return 0;
}

/// Says which one is missing.
void check_there(const std::string &path) {
    if (!is_folder(path))
        open_to_read(path);
}

int run(const CompareCommand &command) {
    const bool folders = is_folder(command.a);
    if (folders != is_folder(command.b)) {
        check_there(command.a);
        check_there(command.b);
        throw CommandTrouble("one of " + command.a + " and " + command.b + " is a folder, the other is not");
    }
    if (folders && !command.options.map.empty())
        throw CommandTrouble("--map goes with two pictures, not with folders");
    if (!folders && (command.common || command.explain))
        throw CommandTrouble("--common and --explain go with two folders, not with pictures");
    if (folders)
        return compare_folders(command);
    CompareOptions options = command.options;
    keep_apart(command.a, options.map);
    keep_apart(command.b, options.map);
    options.range = range_of_image(command.a);
    const Comparison found = compare_pictures(command.a, command.b, options);
    if (command.json)
        std::cout << comparison_json(found, command) << "\n";
    else
        print_text(found, command);
    return found.equal() ? STATUS_GOOD : STATUS_FOUND;
}

} // namespace

void compare_command(Command &command) {
    const auto compare = std::make_shared<CompareCommand>();
    CompareOptions &options = compare->options;
    options.max_list = 0;
    command.word("A", compare->a, "P5 or P6 picture, or a run folder");
    command.word("B", compare->b, "What to compare it with");
    command.number("--tolerance", options.tolerance, 0, UINT32_MAX, "Largest difference that passes (0)");
    command.text("--crop", options.crop, "X,Y,W,H", "Only this part of the pictures");
    command.number("--bayer", options.bayer, 0, 15, "Name the colour of a site by this pattern id");
    command.text("--map", options.map, "FILE.png",
                 "Paint where and how much: blue little, magenta, yellow much");
    command.number("--max-list", options.max_list, 0, INT32_MAX, "List up to N samples that differ (0)");
    command.flag("--common", compare->common, "Folders: images on one side only do not count");
    command.flag("--explain", compare->explain, "Folders: run each wrong stage again on B's exact planes");
    command.flag("--quiet", compare->quiet, "Print registers that differ and the verdict only");
    command.flag("--json", compare->json, "Print JSON");
    command.footer(
        "Examples: cfatool compare out.ppm rtl_out.ppm --bayer 3 --map where.png\n"
        "          cfatool compare run/ rtl_run/     names the stage that is wrong, or those that may be\n"
        "Exit status: 0 equal, 1 different or an image on one side only, 2 trouble; registers do not count.");
    command.run(compare, run);
}

} // namespace cfatool
