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
        json["first"] = difference_json(found, found.list.front(), command.bayer);
    }
    for (size_t i = 0; i < found.list.size() && i < command.options.max_list; ++i)
        json["list"].push_back(difference_json(found, found.list[i], command.bayer));
    return json;
}

} // namespace

std::string comparison_json(const Comparison &found, const CompareCommand &command) {
    return json_text(picture_json(command.a, command.b, found, command));
}

std::string folders_json(const FolderComparison &found, const CompareCommand &command) {
    Json images = Json::array();
    for (const auto &[pair, comparison] : found.images)
        images.push_back(picture_json(pair.a, pair.b, comparison, command));
    const FolderComparison::Compared *const first = found.first();
    Json stage; // null if nothing differs
    if (first != nullptr)
        stage = first->pair.known != nullptr ? first->pair.known->stage : "";
    return json_text({{"a", command.a},
                      {"b", command.b},
                      {"images", images},
                      {"only_a", found.only_a},
                      {"only_b", found.only_b},
                      {"first_stage", stage}});
}

} // namespace cfatool
