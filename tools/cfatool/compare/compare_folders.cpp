// Two run folders: image by image in pipeline order, so that the first line that differs names the guilty
// stage.
#include <fmt/core.h>
#include <iostream>
#include <map>

#include "tools/cfatool/base/trouble.h"
#include "tools/cfatool/compare/compare_json.h"

namespace cfatool {
namespace {

/// The images of both folders in pipeline order, then the others by name.
std::vector<ImagePair> pairs_of(const std::string &folder_a, const std::string &folder_b) {
    std::map<std::pair<const RunImage *, std::string>, ImagePair> pairs; // by place in the list, by name
    const RunImage *const behind = run_images().data() + run_images().size();
    const auto add = [&](const std::string &folder, std::string ImagePair::*path) {
        for (const FoundImage &image : find_images(folder)) {
            ImagePair &pair = pairs[{image.known != nullptr ? image.known : behind, image.name}];
            pair.name = image.name;
            pair.known = image.known;
            pair.*path = image.path;
        }
    };
    add(folder_a, &ImagePair::a);
    add(folder_b, &ImagePair::b);
    std::vector<ImagePair> list;
    for (const auto &[place, pair] : pairs)
        list.push_back(pair);
    return list;
}

void print_line(const std::string &name, const std::string &text, const CompareCommand &command) {
    if (!command.json)
        std::cout << fmt::format("{:<29} {}\n", name, text);
}

/// Compares one pair of files and prints its line. A file that cannot be read is reported and counted.
void compare_pair(const ImagePair &pair, const CompareCommand &command, FolderComparison &found) {
    try {
        found.images.push_back({pair, compare_pictures(pair.a, pair.b, command.options)});
        print_line(pair.name, result_text(found.images.back().found, command.bayer), command);
    } catch (const Trouble &trouble) {
        std::cerr << trouble.what() << "\n";
        ++found.unreadable;
    }
}

void print_verdict(const FolderComparison &found, const CompareCommand &command) {
    const size_t one_sided = found.only_a.size() + found.only_b.size();
    if (const FolderComparison::Compared *const first = found.first(); first != nullptr)
        std::cout << fmt::format("first stage that differs: {}, {}: {}\n",
                                 first->pair.known != nullptr ? first->pair.known->stage
                                                              : "an image that is no part of the pipeline",
                                 first->pair.name, result_text(first->found, command.bayer));
    else
        std::cout << fmt::format("no difference in {} images{}\n", found.images.size(),
                                 one_sided > 0 ? fmt::format(", {} on one side only", one_sided) : "");
}

} // namespace

const FolderComparison::Compared *FolderComparison::first() const {
    for (const Compared &image : images)
        if (!image.found.equal())
            return &image;
    return nullptr;
}

int compare_folders(const CompareCommand &command) {
    FolderComparison found;
    for (const ImagePair &pair : pairs_of(command.a, command.b)) {
        if (!pair.a.empty() && !pair.b.empty()) {
            compare_pair(pair, command, found);
            continue;
        }
        (pair.b.empty() ? found.only_a : found.only_b).push_back(pair.name);
        print_line(pair.name, "only in " + (pair.b.empty() ? command.a : command.b), command);
    }
    if (found.images.empty() && found.unreadable == 0)
        throw CommandTrouble(fmt::format("no image is in both {} and {}", command.a, command.b));
    if (command.json)
        std::cout << folders_json(found, command) << "\n";
    else
        print_verdict(found, command);
    if (found.unreadable > 0)
        return STATUS_TROUBLE;
    const bool one_sided = !found.only_a.empty() || !found.only_b.empty();
    return found.first() != nullptr || (one_sided && !command.common) ? STATUS_FOUND : STATUS_GOOD;
}

} // namespace cfatool
