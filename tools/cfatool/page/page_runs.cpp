// Planes and images of one run or two, in pipeline order.
#include "tools/cfatool/page/page_runs.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "tools/cfatool/base/trouble.h"

namespace cfatool {
namespace {

/// What stands for a file of both runs, in whichever folder it lies: GH for planes/GH.npy.
std::string id_of(const RunPlane &file) {
    const std::string name = file.name.substr(file.name.rfind('/') + 1);
    return name.ends_with(".npy") ? name.substr(0, name.size() - 4) : name;
}

bool same_form(const PlaneForm &a, const PlaneForm &b) {
    return a.width == b.width && a.height == b.height && a.channels == b.channels;
}

} // namespace

uint64_t PagePlane::samples() const {
    uint64_t sum = 0;
    for (const auto &of : file)
        sum += of ? of->form().row_samples() * static_cast<uint64_t>(of->form().height) : 0;
    return sum;
}

PageRuns::PageRuns(const std::string &run, const std::string &other) {
    runs_.emplace_back(run);
    if (!other.empty())
        runs_.emplace_back(other);
    // Two lists in one order: what only the other run has goes in front of what follows it there.
    const auto in = [](std::span<const RunPlane> list, const std::string &id) {
        return std::find_if(list.begin(), list.end(),
                            [&](const RunPlane &file) { return id_of(file) == id; });
    };
    const std::span<const RunPlane> a = runs_[0].planes();
    const std::span<const RunPlane> b = two() ? runs_[1].planes() : std::span<const RunPlane>();
    auto next = b.begin();
    for (const RunPlane &file : a) {
        const auto found = in(b, id_of(file));
        for (; found != b.end() && next <= found; ++next)
            if (in(a, id_of(*next)) == a.end())
                add(id_of(*next), nullptr, &*next);
        add(id_of(file), &file, found != b.end() ? &*found : nullptr);
    }
    for (; next != b.end(); ++next)
        if (in(a, id_of(*next)) == a.end())
            add(id_of(*next), nullptr, &*next);
    if (std::none_of(planes_.begin(), planes_.end(), [](const PagePlane &plane) { return plane.seen(); }))
        throw planes_.empty() ? file_trouble(run, "holds no plane and no image")
                              : Trouble(planes_[0].trouble);
}

void PageRuns::add(const std::string &id, const RunPlane *a, const RunPlane *b) {
    PagePlane plane{id, a != nullptr ? *a : *b, {}, ""};
    for (const auto &[from, side] : {std::pair(a, 0), std::pair(b, 1)}) {
        if (from == nullptr)
            continue;
        try {
            auto file = std::make_unique<PlaneFile>(from->path);
            if (file->form().width == 0 || file->form().height == 0)
                throw file_trouble(from->path, "a picture of no pixels");
            plane.file[static_cast<size_t>(side)] = std::move(file);
        } catch (const Trouble &trouble) {
            plane.trouble = trouble.what();
        }
    }
    if (plane.comparable() && !same_form(plane.file[0]->form(), plane.file[1]->form())) {
        PagePlane of_other{id + " (other)", *b, {}, ""};
        of_other.file[1] = std::move(plane.file[1]);
        of_other.trouble = plane.trouble = "the two differ in size";
        planes_.push_back(std::move(plane));
        planes_.push_back(std::move(of_other));
        return;
    }
    planes_.push_back(std::move(plane));
}

PlaneSamples read_side(const PagePlane &plane, Side side) {
    const PlaneForm form = plane.form();
    PlaneSamples samples{form.width, form.height, form.channels, plane.file[side == Side::b]->read()};
    if (side == Side::difference) {
        const std::vector<int32_t> other = plane.file[1]->read();
        for (size_t i = 0; i < other.size(); ++i)
            samples.samples[i] -= other[i]; // wraps
    }
    return samples;
}

std::string read_tile(const PagePlane &plane, Side side, int column, int row) {
    const PlaneForm form = plane.form();
    const int x = column * TILE, y = row * TILE;
    const int width = std::min(TILE, form.width - x), height = std::min(TILE, form.height - y);
    return plane_tile({width, height, form.channels, plane.file[side == Side::b]->read(x, y, width, height)},
                      0, 0);
}

} // namespace cfatool
