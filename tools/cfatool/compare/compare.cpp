// cfatool compare: two pictures, or two run folders.
#include "tools/cfatool/compare/compare.h"

#include <cinttypes>
#include <cmath>
#include <iostream>
#include <memory>

#include "tools/cfatool/base/json.h"
#include "tools/cfatool/runs/run_images.h"
#include "tools/cfatool/subcommands.h"

namespace cfatool {
namespace {

/// The line of one channel, or of all together. REQUIRES samples > 0.
std::string channel_line(const char *name, const Comparison &found, const ChannelDifferences &of,
                         uint64_t samples) {
    char line[120];
    const double share = 100.0 * static_cast<double>(of.differing) / static_cast<double>(samples);
    std::snprintf(line, sizeof line, "  %-5s %12" PRIu64 " %10.5f%% %12" PRIu32 " %14.6f\n", name,
                  of.differing, share, of.largest, found.mean(of, samples));
    return line;
}

std::string fixed(double number, int decimals) {
    char text[40];
    std::snprintf(text, sizeof text, "%.*f", decimals, number);
    return text;
}

void print_differences(const Comparison &found, const CompareCommand &command) {
    std::cout << "        differing      share      largest           mean\n";
    for (int c = 0; c < found.channels; ++c)
        std::cout << channel_line(channel_name(found.channels, c), found,
                                  found.channel[static_cast<size_t>(c)], found.pixels());
    if (found.channels > 1)
        std::cout << channel_line("all", found, found.all(), found.pixels() * 3);
    std::cout << "PSNR " << fixed(found.psnr(), 2) << " dB\n"
              << "bounding box " << found.left << "," << found.top << "," << found.right - found.left + 1
              << "," << found.bottom - found.top + 1 << " (X,Y,W,H)\n"
              << "first difference: " << difference_text(found, found.list.front(), command.bayer) << "\n";
    for (size_t i = 0; i < found.list.size() && i < command.options.max_list; ++i)
        std::cout << "  " << difference_text(found, found.list[i], command.bayer) << "\n";
}

void print_text(const Comparison &found, const CompareCommand &command) {
    if (!found.mismatch.empty()) {
        std::cout << found.mismatch << "\n";
        return;
    }
    const uint64_t tolerance = command.options.tolerance;
    const std::string within = " within the tolerance of " + std::to_string(tolerance);
    std::cout << command.a << " and " << command.b << (found.equal() ? " are equal" : " differ")
              << (found.equal() && tolerance > 0 ? within : "") << ": " << found.width << "x" << found.height
              << ", " << (found.channels == 1 ? "1 channel" : "3 channels") << ", maximum value " << found.max
              << (!found.equal() && tolerance > 0 ? ", tolerance " + std::to_string(tolerance) : "") << "\n";
    if (!found.equal())
        print_differences(found, command);
    else if (found.all().largest > 0)
        std::cout << "largest difference " << found.all().largest << "\n";
}

std::string difference_json(const Comparison &found, const Difference &d, int bayer) {
    std::vector<std::string> members = {
        json_member("x", std::to_string(d.x)), json_member("y", std::to_string(d.y)),
        json_member("channel", json_text(channel_name(found.channels, d.channel))),
        json_member("a", std::to_string(d.a)), json_member("b", std::to_string(d.b))};
    if (bayer >= 0)
        members.push_back(json_member("site", json_text(site_name(d.x, d.y, static_cast<uint32_t>(bayer)))));
    return json_list("{}", members);
}

} // namespace

std::string comparison_json(const Comparison &found, const CompareCommand &command) {
    std::vector<std::string> members = {json_member("a", json_text(command.a)),
                                        json_member("b", json_text(command.b)),
                                        json_member("equal", found.equal() ? "true" : "false")};
    if (!found.mismatch.empty()) {
        members.push_back(json_member("mismatch", json_text(found.mismatch)));
        return json_list("{}", members);
    }
    std::vector<std::string> channels;
    for (int c = 0; c < found.channels; ++c) {
        const ChannelDifferences &of = found.channel[static_cast<size_t>(c)];
        channels.push_back(json_list("{}", {json_member("name", json_text(channel_name(found.channels, c))),
                                            json_member("differing", std::to_string(of.differing)),
                                            json_member("samples", std::to_string(found.pixels())),
                                            json_member("largest", std::to_string(of.largest)),
                                            json_member("mean", fixed(found.mean(of, found.pixels()), 9))}));
    }
    members.push_back(json_member("channels", json_list("[]", channels)));
    const double psnr = found.psnr();
    members.push_back(json_member("psnr", std::isfinite(psnr) ? fixed(psnr, 4) : "null"));
    if (!found.list.empty()) {
        members.push_back(
            json_member("box", json_list("[]", {std::to_string(found.left), std::to_string(found.top),
                                                std::to_string(found.right - found.left + 1),
                                                std::to_string(found.bottom - found.top + 1)})));
        members.push_back(json_member("first", difference_json(found, found.list.front(), command.bayer)));
    }
    std::vector<std::string> list;
    for (size_t i = 0; i < found.list.size() && i < command.options.max_list; ++i)
        list.push_back(difference_json(found, found.list[i], command.bayer));
    if (!list.empty())
        members.push_back(json_member("list", json_list("[]", list)));
    return json_list("{}", members);
}

namespace {

int run(const CompareCommand &command) {
    const bool folders = is_folder(command.a);
    if (folders != is_folder(command.b))
        throw CommandTrouble("one of " + command.a + " and " + command.b + " is a folder, the other is not");
    if (folders && !command.options.map.empty())
        throw CommandTrouble("--map goes with two pictures, not with folders");
    if (!folders && command.common)
        throw CommandTrouble("--common goes with two folders, not with pictures");
    if (folders)
        return compare_folders(command);
    const Comparison found = compare_pictures(command.a, command.b, command.options);
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
    command.number("--bayer", compare->bayer, 0, 15, "Name the colour of a site by this pattern id");
    command.text("--map", options.map, "FILE.png",
                 "Paint where and how much: blue little, magenta, yellow much");
    command.number("--max-list", options.max_list, 0, INT32_MAX, "List up to N samples that differ (0)");
    command.flag("--common", compare->common, "Folders: images on one side only do not count");
    command.flag("--json", compare->json, "Print JSON");
    command.footer("Examples: cfatool compare out.ppm rtl_out.ppm --bayer 3 --map where.png\n"
                   "          cfatool compare run/ rtl_run/     names the first stage that differs\n"
                   "Exit status: 0 equal, 1 different or an image on one side only, 2 trouble.");
    command.run(compare, run);
}

} // namespace cfatool
