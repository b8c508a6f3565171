// The files of a run folder, named and put in order.
#include "tools/cfatool/runs/run_folder.h"

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "tools/cfatool/base/files.h"
#include "tools/cfatool/base/json_text.h"
#include "tools/cfatool/base/trouble.h"
#include "tools/cfatool/runs/run_images.h"

namespace cfatool {
namespace {

constexpr const char *RAW = "raw";

/// The exact plane of this name below the folder; empty if there is none.
std::string npy_of(const std::string &folder, const std::string &name) {
    for (const char *place : {"planes/", ""})
        if (std::filesystem::exists(folder + "/" + place + name + ".npy"))
            return place + name + ".npy";
    return "";
}

/// Every sample of the plane stands in this image as it is.
bool is_exact(const RunImage &image) {
    return image.plane == nullptr || image.file != image.plane->image.file;
}

bool made_from(const RunPlane &file, const std::string &plane) {
    return file.plane != nullptr ? file.plane->name == plane : plane == RAW && file.stage == "input";
}

/// The registers away from reset that a run has written down. Returns whether it has.
bool load_record(const std::string &path, Registers &registers) {
    if (!readable(path))
        return false;
    const Json record = Json::parse(read_whole_file(path), nullptr, false);
    if (!record.is_object() || !record.contains("registers") || !record["registers"].is_object())
        throw file_trouble(path, "is no record of a run");
    for (const auto &[key, value] : record["registers"].items())
        if (const FoundRegister found = find_register(registers, key);
            found.info != nullptr && value.is_number_integer())
            found.info->store(*found.where.part, value.get<int32_t>());
    return true;
}

} // namespace

RunFolder::RunFolder(const std::string &path) : path_(path) {
    std::vector<FoundImage> images = find_images(path);
    const auto add_npy = [&](const char *name, const cfa::PlaneInfo *plane, const char *stage,
                             const char *shows, const char *range) {
        if (const std::string file = npy_of(path, name); !file.empty())
            planes_.push_back({file, path + "/" + file, stage, shows, range, plane, true});
    };
    const auto add_images = [&](const cfa::PlaneInfo *plane, bool known) {
        for (const FoundImage &image : images)
            if (known ? image.known != nullptr && image.known->plane == plane : image.known == nullptr)
                planes_.push_back({image.path.substr(path.size() + 1), image.path,
                                   known ? image.known->stage : "", known ? image.known->shows : "",
                                   known ? image.known->range : "", plane, known && is_exact(*image.known)});
    };
    add_npy(RAW, nullptr, "input", "the mosaic as read", "u12");
    add_images(nullptr, true);
    for (const cfa::PlaneInfo &plane : cfa::planes()) {
        add_npy(plane.name, &plane, plane.stage, plane.shows, plane.format);
        add_images(&plane, true);
    }
    add_images(nullptr, false);

    auto registers = std::make_shared<Registers>();
    const Registers::Loaded loaded = registers->load_run(path);
    const bool recorded = !loaded.block && !loaded.top && load_record(path + "/run.json", *registers);
    if (loaded.top || recorded)
        bayer_ = static_cast<uint32_t>(int32_t{registers->top.hw.reg_img_bayerid});
    if (loaded.block || loaded.top || recorded)
        registers_ = registers;
}

const RunPlane *RunFolder::find(const std::string &name) const {
    const auto found =
        std::find_if(planes_.begin(), planes_.end(), [&](const RunPlane &file) { return file.name == name; });
    return found != planes_.end() ? &*found : nullptr;
}

const RunPlane *RunFolder::exact(const std::string &plane) const {
    const auto found = std::find_if(planes_.begin(), planes_.end(), [&](const RunPlane &file) {
        return file.exact && made_from(file, plane);
    });
    return found != planes_.end() ? &*found : nullptr;
}

const RunPlane *RunFolder::image(const std::string &plane) const {
    const auto found = std::find_if(planes_.begin(), planes_.end(), [&](const RunPlane &file) {
        return !file.exact && made_from(file, plane);
    });
    return found != planes_.end() ? &*found : nullptr;
}

} // namespace cfatool
