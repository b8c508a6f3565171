// The members of each object stand in the order in which they are listed here.
#include "tools/cfatool/compare/compare_json.h"

#include <cmath>
#include <nlohmann/json.hpp>

#include "tools/cfatool/base/json_text.h"
#include "tools/cfatool/pictures/colour_sites.h"

namespace cfatool {
namespace {

Json difference_json(const Comparison &found, const Difference &d, int bayer) {
    Json json = {
        {"x", d.x}, {"y", d.y}, {"channel", channel_name(found.channels, d.channel)}, {"a", d.a}, {"b", d.b}};
    if (bayer >= 0)
        json["site"] = site_name(d.x, d.y, static_cast<uint32_t>(bayer));
    return json;
}

Json picture_json(const std::string &a, const std::string &b, const Comparison &found,
                  const CompareCommand &command) {
    Json json = {{"a", a}, {"b", b}, {"equal", found.equal()}};
    if (!found.mismatch.empty()) {
        json["mismatch"] = found.mismatch;
        return json;
    }
    for (int c = 0; c < found.channels; ++c) {
        const ChannelDifferences &of = found.channel[static_cast<size_t>(c)];
        json["channels"].push_back({{"name", channel_name(found.channels, c)},
                                    {"differing", of.differing},
                                    {"samples", found.pixels()},
                                    {"largest", of.largest},
                                    {"mean", found.mean(of, found.pixels())}});
    }
    const double psnr = std::round(found.psnr() * 1e4) / 1e4;
    json["psnr"] = std::isfinite(psnr) ? Json(psnr) : Json();
    if (!found.list.empty()) {
        json["box"] = {found.left, found.top, found.right - found.left + 1, found.bottom - found.top + 1};
        json["first"] = difference_json(found, found.list.front(), command.options.bayer);
    }
    for (size_t i = 0; i < found.list.size() && i < command.options.max_list; ++i)
        json["list"].push_back(difference_json(found, found.list[i], command.options.bayer));
    return json;
}

} // namespace

std::string comparison_json(const Comparison &found, const CompareCommand &command) {
    return json_text(picture_json(command.a, command.b, found, command));
}

std::string folders_json(const FolderComparison &found, const CompareCommand &command) {
    const RunVerdict &verdict = found.verdict;
    CompareCommand of_pair = command;
    of_pair.options.bayer = verdict.bayer;
    Json registers = Json::array(), images = Json::array(), unreadable = Json::array(),
         only_a = Json::array(), only_b = Json::array(), planes = Json::array(), stages = Json::array(),
         explained = Json::array();
    for (const RegisterDifference &r : verdict.registers)
        registers.push_back({{"key", r.key}, {"a", r.a}, {"b", r.b}});
    for (const FilePair &pair : verdict.files) {
        if (pair.compared())
            images.push_back(picture_json(pair.a->path, pair.b->path, pair.found, of_pair));
        else if (!pair.unreadable.empty())
            unreadable.push_back({{"name", pair.name}, {"reason", pair.unreadable}});
        else
            (pair.b == nullptr ? only_a : only_b).push_back(pair.name);
    }
    for (size_t i = 0; i < verdict.planes.size(); ++i) {
        const PlaneVerdict &plane = verdict.planes[i];
        planes.push_back({{"plane", plane.name()},
                          {"stage", plane.part.stage},
                          {"verdict", verdict_text(plane.verdict)},
                          {"not_seen", plane.unseen.empty() ? Json() : Json(plane.unseen)},
                          {"kinds", found.kinds[i]}});
    }
    for (const StageVerdict &stage : verdict.stages)
        stages.push_back({{"stage", stage.stage}, {"verdict", verdict_text(stage.verdict)}});
    for (const Explanation &e : found.explanations)
        explained.push_back({{"stage", e.stage}, {"text", explanation_text(e)}});
    const PlaneVerdict *const first = verdict.first_plane();
    const Json first_plane =
        first == nullptr || first->found.list.empty()
            ? Json()
            : Json({{"plane", first->name()},
                    {"at", difference_json(first->found, first->found.list.front(), verdict.bayer)},
                    {"kinds", found.kinds[*verdict.first]}});
    return json_text({{"a", command.a},
                      {"b", command.b},
                      {"registers", registers},
                      {"images", images},
                      {"unreadable", unreadable},
                      {"only_a", only_a},
                      {"only_b", only_b},
                      {"planes", planes},
                      {"stages", stages},
                      {"explained", explained},
                      {"suspects", verdict.suspects},
                      {"first", first_plane},
                      {"first_stage", verdict.suspects.size() == 1 ? Json(verdict.suspects[0]) : Json()}});
}

} // namespace cfatool
