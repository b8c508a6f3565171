// Which debug images a run writes, and whether they can all be open at once.
#include <algorithm>
#include <optional>
#include <set>
#include <string>
#include <tuple>

#include <sys/stat.h>

#include "cmodel/cfa/src/kit/debug_image.h"
#include "cmodel/cfa/src/lines/debug_rows.h"

namespace cfa {

namespace {

// What tells files apart: device and number; for one that is yet to be made those of its folder and its name.
using Place = std::tuple<dev_t, ino_t, std::string>;

Place place_in_folder(const std::string &path) {
    const size_t name = path.rfind('/') + 1; // 0 without a folder
    struct stat folder;
    if (stat(name == 0 ? "." : path.substr(0, name).c_str(), &folder) != 0)
        return {0, 0, path};
    return {folder.st_dev, folder.st_ino, path.substr(name)};
}

// Null for a file that cannot clash: a device or a FIFO.
std::optional<Place> place_of(const std::string &path) {
    struct stat status;
    if (stat(path.c_str(), &status) != 0)
        return place_in_folder(path);
    if (S_ISCHR(status.st_mode) || S_ISFIFO(status.st_mode))
        return std::nullopt;
    return Place(status.st_dev, status.st_ino, "");
}

// A link to nothing may lead to another image; the reader of a FIFO may take one image after another.
bool may_wait_for_another(const std::string &path) {
    struct stat own, target;
    if (lstat(path.c_str(), &own) != 0)
        return false;
    return stat(path.c_str(), &target) != 0 || S_ISFIFO(target.st_mode);
}

} // namespace

std::vector<const PlaneInfo *> shown_planes() {
    std::vector<const PlaneInfo *> shown;
    for (const PlaneInfo &plane : planes())
        if (has_image(plane))
            shown.push_back(&plane);
    for (const auto &[late, early] :
         {std::pair{"SigH", "AHDiff"}, {"SigV", "AHDiff"}, {"pd_wt", "cdist_wt"}}) {
        const auto first = std::find(shown.begin(), shown.end(), find_plane(early));
        const auto moved = std::find(shown.begin(), shown.end(), find_plane(late));
        if (moved != shown.end())
            std::rotate(first, moved, moved + 1);
    }
    return shown;
}

bool debug_rows_fit(const char *rgb_path) {
    std::set<Place> places;
    const auto apart = [&](const std::string &path) {
        const std::optional<Place> place = place_of(path);
        return !place || places.insert(*place).second;
    };
    for (const PlaneInfo *plane : shown_planes()) {
        const std::string path = debug_path_of(plane->image.file);
        if (may_wait_for_another(path) || !apart(path))
            return false;
    }
    return rgb_path == nullptr || apart(rgb_path);
}

} // namespace cfa
