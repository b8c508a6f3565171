// Two run folders: image by image in pipeline order, so that the first line that differs names the guilty
// stage.
#include <algorithm>
#include <iostream>
#include <optional>

#include "tools/cfatool/base/json.h"
#include "tools/cfatool/base/trouble.h"
#include "tools/cfatool/compare/compare.h"
#include "tools/cfatool/runs/run_images.h"

namespace cfatool {
namespace {

/// An image of either folder, in pipeline order.
struct Pair {
    std::string name;
    const RunImage *known;
    std::string a; // path, empty if the folder has no such image
    std::string b;
};

std::vector<Pair> pairs_of(const std::string &folder_a, const std::string &folder_b) {
    std::vector<Pair> pairs;
    const std::vector<FoundImage> in_a = find_images(folder_a), in_b = find_images(folder_b);
    const auto path_in = [](const std::vector<FoundImage> &images, const std::string &name) {
        const auto at =
            std::find_if(images.begin(), images.end(), [&](const auto &i) { return i.name == name; });
        return at == images.end() ? "" : at->path;
    };
    const auto add = [&](const FoundImage &image) {
        if (std::none_of(pairs.begin(), pairs.end(), [&](const Pair &p) { return p.name == image.name; }))
            pairs.push_back({image.name, image.known, path_in(in_a, image.name), path_in(in_b, image.name)});
    };
    for (const RunImage &known : run_images())
        for (const std::vector<FoundImage> *images : {&in_a, &in_b})
            for (const FoundImage &image : *images)
                if (image.known == &known)
                    add(image);
    for (const std::vector<FoundImage> *images : {&in_a, &in_b})
        for (const FoundImage &image : *images)
            add(image);
    return pairs;
}

std::string result_text(const Comparison &found, int bayer) {
    if (!found.mismatch.empty())
        return found.mismatch;
    if (found.equal())
        return found.all().largest == 0 ? "equal" : "equal within the tolerance";
    const ChannelDifferences all = found.all();
    return std::to_string(all.differing) + " of " + std::to_string(found.pixels() * found.channels) +
           " samples differ, largest " + std::to_string(all.largest) + ", first at " +
           difference_text(found, found.list.front(), bayer);
}

std::string stage_of(const Pair &pair) {
    return pair.known != nullptr ? std::string(pair.known->stage)
                                 : "an image that is no part of the pipeline";
}

/// What has been found so far.
struct Progress {
    size_t compared = 0, one_sided = 0, unreadable = 0, different = 0;
    std::string first; // of the images that differ: stage, image, pixel
    const char *first_stage = nullptr;
    std::vector<std::string> json;
};

/// Compares one pair of files and prints its line. A file that cannot be read is reported and counted.
void compare_pair(const Pair &pair, const CompareCommand &command, Progress &progress) {
    CompareCommand single = command;
    single.a = pair.a;
    single.b = pair.b;
    std::optional<Comparison> found;
    try {
        found = compare_pictures(pair.a, pair.b, command.options);
    } catch (const Trouble &trouble) {
        std::cerr << trouble.what() << "\n";
        ++progress.unreadable;
        return;
    }
    ++progress.compared;
    const std::string text = result_text(*found, command.bayer);
    if (!found->equal() && progress.different++ == 0) {
        progress.first = stage_of(pair) + ", " + pair.name + ": " + text;
        progress.first_stage = pair.known != nullptr ? pair.known->stage : "";
    }
    progress.json.push_back(comparison_json(*found, single));
    if (!command.json)
        std::cout << pair.name
                  << std::string(std::max<size_t>(30, pair.name.size() + 1) - pair.name.size(), ' ') << text
                  << "\n";
}

void print_json(const CompareCommand &command, const Progress &progress, const std::vector<Pair> &pairs) {
    std::vector<std::string> only_a, only_b;
    for (const Pair &pair : pairs)
        if (pair.a.empty() != pair.b.empty())
            (pair.b.empty() ? only_a : only_b).push_back(json_text(pair.name));
    std::cout << json_list("{}",
                           {json_member("a", json_text(command.a)), json_member("b", json_text(command.b)),
                            json_member("images", json_list("[]", progress.json)),
                            json_member("only_a", json_list("[]", only_a)),
                            json_member("only_b", json_list("[]", only_b)),
                            json_member("first_stage", progress.first_stage == nullptr
                                                           ? "null"
                                                           : json_text(progress.first_stage))})
              << "\n";
}

} // namespace

int compare_folders(const CompareCommand &command) {
    Progress progress;
    const std::vector<Pair> pairs = pairs_of(command.a, command.b);
    for (const Pair &pair : pairs) {
        if (!pair.a.empty() && !pair.b.empty()) {
            compare_pair(pair, command, progress);
            continue;
        }
        ++progress.one_sided;
        if (!command.json)
            std::cout << pair.name
                      << std::string(std::max<size_t>(30, pair.name.size() + 1) - pair.name.size(), ' ')
                      << "only in " << (pair.b.empty() ? command.a : command.b) << "\n";
    }
    if (progress.compared + progress.unreadable == 0)
        throw CommandTrouble("no image is in both " + command.a + " and " + command.b);
    if (command.json)
        print_json(command, progress, pairs);
    else if (progress.different > 0)
        std::cout << "first stage that differs: " << progress.first << "\n";
    else
        std::cout << "no difference in " << progress.compared << " images"
                  << (progress.one_sided > 0 ? ", " + std::to_string(progress.one_sided) + " on one side only"
                                             : "")
                  << "\n";
    if (progress.unreadable > 0)
        return STATUS_TROUBLE;
    return progress.different > 0 || (progress.one_sided > 0 && !command.common) ? STATUS_FOUND : STATUS_GOOD;
}

} // namespace cfatool
