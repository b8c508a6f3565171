// What the page is told: planes, registers, verdicts.
#include <algorithm>
#include <cstring>
#include <fmt/core.h>
#include <fmt/ranges.h>
#include <nlohmann/json.hpp>

#include "tools/cfatool/base/trouble.h"
#include "tools/cfatool/compare/difference_kind.h"
#include "tools/cfatool/compare/verdict.h"
#include "tools/cfatool/page/page_runs.h"
#include "tools/cfatool/pictures/colour_sites.h"

namespace cfatool {

extern const char *const PAGE_TEXT;

namespace {

/// The command line of a run, as it may be typed: from run.json, from call.txt, or empty.
std::string call_of(const std::string &folder) {
    if (readable(folder + "/call.txt"))
        return read_whole_file(folder + "/call.txt");
    if (!readable(folder + "/run.json"))
        return "";
    const Json run = Json::parse(read_whole_file(folder + "/run.json"), nullptr, false);
    std::string call;
    if (run.is_object() && run.contains("call") && run["call"].is_array())
        for (const Json &word : run["call"])
            call += (call.empty() ? "" : " ") + (word.is_string() ? word.get<std::string>() : word.dump());
    return call;
}

/// Least and largest sample that a plane may have.
std::array<int64_t, 2> range_of(const PagePlane &plane) {
    const PlaneForm form = plane.form();
    const int64_t named = range_of_format(plane.about.range);
    const int64_t most = plane.about.exact && named > 0 ? named : form.max > 0 ? form.max : 4095;
    return {plane.about.range.starts_with("s") && plane.about.exact ? -most - 1 : 0, most};
}

/// What the list calls it: GH; beside the exact plane "GH image" for the debug image, "out_dc.ppm" for the
/// file.
std::string name_of(const PagePlane &plane, const std::vector<PagePlane> &planes) {
    std::string name = plane.id;
    for (const char *start : {"dbg_img_", "dbg_"})
        if (name.starts_with(start))
            name = name.substr(std::strlen(start));
    if (const size_t end = name.find(".ppm"); end != std::string::npos)
        name.erase(end, 4);
    const bool twin = std::any_of(planes.begin(), planes.end(), [&](const PagePlane &of) {
        const bool same_plane = of.about.plane == plane.about.plane && plane.about.plane != nullptr;
        return &of != &plane && (of.id == name || (same_plane && of.about.exact && !plane.about.exact));
    });
    return !twin ? name : plane.about.exact ? plane.id : name + " image";
}

/// Registers that are away from their reset in a run, or differ between the two.
Json registers_json(const std::vector<RunFolder> &runs) {
    Json list = Json::array();
    Registers defaults;
    const auto parts = defaults.parts();
    for (size_t i = 0; i < parts.size(); ++i)
        for (const RegisterInfo &info : parts[i].table->registers) {
            Json values = Json::array();
            bool away = false;
            for (const RunFolder &run : runs) {
                if (run.registers() == nullptr) {
                    values.push_back(nullptr);
                    continue;
                }
                const int32_t value = info.read(*const_cast<Registers *>(run.registers())->parts()[i].part);
                away |= value != info.reset;
                values.push_back(value);
            }
            if (away)
                list.push_back({{"key", info.key},
                                {"meaning", info.meaning},
                                {"reset", info.reset},
                                {"values", values}});
        }
    return list;
}

/// Stages in pipeline order, what is in no list last, with the places of their planes.
Json stages_json(const std::vector<PagePlane> &planes) {
    Json stages = Json::array();
    const auto stage = [&](const std::string &name) -> Json & {
        for (Json &found : stages)
            if (found["name"] == name)
                return found;
        stages.push_back({{"name", name}, {"planes", Json::array()}});
        return stages.back();
    };
    stage("input");
    for (const cfa::PlaneInfo &plane : cfa::planes()) {
        if (plane.image.stage[0] != '\0')
            stage(plane.image.stage);
        stage(plane.stage);
    }
    for (size_t i = 0; i < planes.size(); ++i)
        stage(planes[i].about.stage.empty() ? "other pictures" : planes[i].about.stage)["planes"].push_back(
            i);
    return stages;
}

std::string word_of(Verdict verdict) {
    std::string word = verdict_text(verdict);
    std::replace(word.begin(), word.end(), ' ', '_');
    return word;
}

/// How the two sides of a plane compare; its pair is among the files compared unless one side is missing.
Json comparison_json(const PagePlane &plane, const std::vector<FilePair> &files, int bayer) {
    const auto pair = std::find_if(files.begin(), files.end(), [&](const FilePair &of) {
        return plane.comparable() && of.compared() && of.a->path == plane.file[0]->path();
    });
    if (pair == files.end())
        return {{"verdict", plane.trouble.empty() ? "one side" : plane.trouble}};
    const Comparison &found = pair->found;
    if (!found.mismatch.empty())
        return {{"verdict", found.mismatch}};
    if (found.equal())
        return {{"verdict", "equal"}};
    return {{"verdict", "differs"},
            {"differing", found.all().differing},
            {"largest", found.all().largest},
            {"first", {found.list[0].x, found.list[0].y}},
            {"kinds", difference_kinds(pair->a->path, pair->b->path, found, found.range, bayer, Sites::all)}};
}

/// One line: which stage, which plane, where.
std::string headline_of(const RunVerdict &verdict) {
    const PlaneVerdict *const first = verdict.first_plane();
    if (first == nullptr) {
        const auto unseen =
            std::count_if(verdict.planes.begin(), verdict.planes.end(),
                          [](const PlaneVerdict &plane) { return plane.seen == PlaneVerdict::Seen::unseen; });
        return unseen == 0 ? "Every plane is equal"
                           : fmt::format("No difference seen; {} planes are not seen whole", unseen);
    }
    const std::string where =
        first->found.list.empty()
            ? first->name() + " in size or depth"
            : fmt::format("{} at {},{}", first->name(), first->found.list[0].x, first->found.list[0].y);
    if (verdict.suspects.size() == 1)
        return fmt::format("{} differs: {}", verdict.suspects[0], where);
    return fmt::format("Suspects: {}. First seen in {}", fmt::join(verdict.suspects, ", "), where);
}

} // namespace

Json PageRuns::plane_json(const PagePlane &plane) const {
    const std::string name = plane.about.plane != nullptr ? plane.about.plane->name : "";
    const PlaneForm form = plane.form();
    const bool exact_rgb = form.channels == 3 && plane.about.range == "u12" && form.max != 255;
    Json json = {
        {"id", plane.id},
        {"name", name_of(plane, planes_)},
        {"stage", plane.about.stage},
        {"shows", plane.about.shows},
        {"format", plane.about.range},
        {"size", {form.width, form.height}},
        {"channels", form.channels},
        {"has", {plane.has(Side::a), plane.has(Side::b)}},
        {"comparable", plane.comparable()},
        {"range", range_of(plane)},
        {"whole", exact_rgb || plane.about.stage == "input"}, // shown from its least to its largest code
        {"codes", nullptr},
        {"note", plane.trouble}};
    if (name == "DirInfo")
        json["codes"] = {"blend", "horizontal", "vertical"};
    return json;
}

Json PageRuns::manifest(const std::string &source) const {
    Json sides = Json::array(), planes = Json::array(), sites;
    std::optional<uint32_t> bayer;
    for (const RunFolder &run : runs_) {
        sides.push_back({{"name", run.path()}, {"call", call_of(run.path())}});
        bayer = bayer ? bayer : run.bayer();
    }
    for (const PagePlane &plane : planes_)
        planes.push_back(plane_json(plane));
    for (int i = 0; bayer && i < 16; ++i) // no pattern is larger than 4 x 4
        sites.push_back(site_name(i % 4, i / 4, *bayer));
    return {{"title", runs_[0].path() + (two() ? " : " + runs_[1].path() : "")},
            {"source", source},
            {"sides", sides},
            {"bayer", bayer ? Json(*bayer) : Json()},
            {"sites", sites},
            {"registers", registers_json(runs_)},
            {"stages", stages_json(planes_)},
            {"planes", planes}};
}

Json PageRuns::verdict() const {
    CompareOptions options;
    options.progress = true;
    const RunVerdict judged = judge(runs_[0], runs_[1], options);
    Json stages = Json::object(), planes = Json::array();
    for (const StageVerdict &stage : judged.stages)
        stages[stage.stage] = word_of(stage.verdict);
    for (const Verdict worst : WORST_FIRST) // a copy stands under the stage that makes it where that is on
        for (const PlaneVerdict &plane : judged.planes)
            if (plane.part.plane != nullptr && plane.verdict == worst)
                stages.emplace(plane.part.plane->stage, word_of(plane.verdict));
    Json first;
    for (size_t i = 0; i < planes_.size(); ++i) {
        planes.push_back(comparison_json(planes_[i], judged.files, judged.bayer));
        const PlaneVerdict *const named = judged.first_plane();
        const bool is_first = named != nullptr ? planes_[i].file[0] && planes_[i].file[0]->path() == named->a
                                               : planes.back()["verdict"] == "differs";
        if (first.is_null() && is_first)
            first = i;
    }
    if (!first.is_null() && judged.first && !judged.first_plane()->found.list.empty()) {
        const Difference &at = judged.first_plane()->found.list[0];
        Json &plane = planes[first.get<size_t>()];
        plane["first"] = {at.x, at.y}; // of the stage that is wrong
        const PlaneVerdict &named = *judged.first_plane();
        plane["kinds"] = difference_kinds(named.a, named.b, named.found, named.found.range, judged.bayer,
                                          named.part.sites);
    }
    return {{"headline", headline_of(judged)}, {"first", first}, {"stages", stages}, {"planes", planes}};
}

Json summary_json(const PlaneSummary &summary, int channels) {
    Json histogram = Json::array();
    for (int c = 0; c < channels; ++c)
        histogram.push_back(summary.histogram[static_cast<size_t>(c)]);
    return {{"least", summary.least}, {"most", summary.most}, {"histogram", histogram}};
}

std::string page_text(const Json &manifest, const std::string &tiles) {
    std::string page = PAGE_TEXT, data = json_text(manifest);
    for (size_t at = 0; (at = data.find('<', at)) != std::string::npos;)
        data.replace(at, 1, "\\u003c"); // no end of a script in a script
    const auto put = [&](const std::string &mark, const std::string &text) {
        page.replace(page.find(mark), mark.size(), text);
    };
    put("<!-- tiles -->",
        tiles.empty() ? "" : "<script type=\"application/json\" id=\"tiles\">" + tiles + "</script>");
    put("{ \"run\": \"\" }", data);
    return page;
}

} // namespace cfatool
