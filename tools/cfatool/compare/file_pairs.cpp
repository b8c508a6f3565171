#include "tools/cfatool/compare/file_pairs.h"

#include <filesystem>
#include <map>
#include <tuple>

#include "tools/cfatool/base/progress.h"
#include "tools/cfatool/base/trouble.h"

namespace cfatool {
namespace {

/// Pipeline order: the mosaic, the planes of the list, exact ones first, then everything else by name.
using Place = std::tuple<size_t, bool, std::string>;
Place place_of(const RunPlane &file, const std::string &name) {
    const size_t behind = cfa::planes().size() + 1;
    const size_t place = file.plane != nullptr ? static_cast<size_t>(file.plane - cfa::planes().data()) + 1
                         : file.stage.empty()  ? behind
                                               : 0;
    return {place, !name.ends_with(".npy"), name};
}

} // namespace

void compare_pair(FilePair &pair, CompareOptions options) {
    const RunPlane &file = *pair.a;
    options.map.clear();
    options.range = range_of_format(file.range);
    if (!file.exact && file.plane != nullptr) {
        const uint64_t limit = (uint64_t{1} << file.plane->image.bit_depth) - 1;
        if (options.range == 0 || options.range > limit)
            options.limit = options.range = static_cast<uint32_t>(limit);
    }
    try {
        pair.found = compare_pictures(file.path, pair.b->path, options);
    } catch (const Trouble &trouble) {
        pair.unreadable = trouble.what();
    }
}

std::vector<FilePair> compare_files(const RunFolder &a, const RunFolder &b, const CompareOptions &options) {
    std::map<Place, FilePair> pairs;
    const auto add = [&](const RunFolder &run, const RunPlane *FilePair::*side) {
        for (const RunPlane &file : run.planes()) {
            const std::string name = file.name.substr(file.name.rfind('/') + 1); // npos + 1 is 0
            FilePair &pair = pairs[place_of(file, name)];
            pair.name = name;
            pair.*side = &file;
        }
    };
    add(a, &FilePair::a);
    add(b, &FilePair::b);
    std::vector<FilePair> list;
    uint64_t bytes = 0;
    const auto bytes_of = [](const FilePair &pair) {
        std::error_code error;
        const uintmax_t size = std::filesystem::file_size(pair.a->path, error);
        return error ? 0 : uint64_t{size};
    };
    for (auto &[place, pair] : pairs) {
        bytes += pair.a != nullptr ? bytes_of(pair) : 0;
        list.push_back(std::move(pair));
    }
    Progress progress(bytes, "comparing");
    for (FilePair &pair : list) {
        if (pair.a != nullptr && pair.b != nullptr)
            compare_pair(pair, options);
        if (pair.a != nullptr && options.progress)
            progress.add(bytes_of(pair));
    }
    return list;
}

} // namespace cfatool
