// The list of images, and the search of a run folder for them.
#include "tools/cfatool/runs/run_images.h"

#include <cstring>
#include <filesystem>
#include <set>

#include "tools/cfatool/base/trouble.h"

namespace cfatool {
namespace {

namespace fs = std::filesystem;

/// Files of the planes that are outputs.
constexpr const char *OUTPUTS[][2] = {
    {"out_dc", "out_dc.ppm"}, {"out_sg", "out_sg.ppm"}, {"out_rgb", "out.ppm"}};

std::string file_of(const cfa::PlaneInfo &plane) {
    for (const auto &[name, file] : OUTPUTS)
        if (std::strcmp(name, plane.name) == 0)
            return file;
    return plane.image.file;
}

std::vector<RunImage> all_images() {
    std::vector<RunImage> images = {{"raw.ppm", "input", "the mosaic as read", "u12", nullptr}};
    for (const cfa::PlaneInfo &plane : cfa::planes()) {
        const std::string note = plane.image.note;
        if (file_of(plane) != "")
            images.push_back({file_of(plane), plane.image.stage[0] != '\0' ? plane.image.stage : plane.stage,
                              plane.shows + (note.empty() ? "" : "; shown: " + note), plane.format, &plane});
    }
    return images;
}

/// The file in the folder or in its dbg/, empty if it is in neither.
std::string path_of(const std::string &folder, const std::string &name) {
    for (const std::string &path : {folder + "/" + name, folder + "/dbg/" + name})
        if (fs::exists(path))
            return path;
    return "";
}

/// Names of the .ppm files of a folder and of its dbg/.
std::set<std::string> picture_names(const std::string &folder) {
    std::set<std::string> names;
    for (const std::string &place : {folder, folder + "/dbg"}) {
        std::error_code error;
        for (fs::directory_iterator entry(place, error), end; entry != end; entry.increment(error))
            if (entry->path().extension() == ".ppm")
                names.insert(entry->path().filename().string());
    }
    return names;
}

} // namespace

std::span<const RunImage> run_images() {
    static const std::vector<RunImage> IMAGES = all_images();
    return IMAGES;
}

std::vector<FoundImage> find_images(const std::string &folder) {
    std::error_code error;
    const fs::directory_iterator opened(folder, error);
    if (error)
        throw file_trouble(folder, error.message());
    std::set<std::string> names = picture_names(folder);
    std::vector<FoundImage> found;
    for (const RunImage &image : run_images())
        if (names.erase(image.file) != 0)
            found.push_back({image.file, path_of(folder, image.file), &image});
    for (const std::string &name : names)
        found.push_back({name, path_of(folder, name), nullptr});
    return found;
}

} // namespace cfatool
