// From planes that differ back to the stage that is wrong, along what each plane is computed from.
#include "tools/cfatool/compare/verdict.h"

#include <algorithm>
#include <fmt/core.h>
#include <iterator>
#include <set>

namespace cfatool {
namespace {

using Seen = PlaneVerdict::Seen;

/// Why an image that is equal may hide a difference; empty if it shows every sample.
std::string hidden(const PlanePart &part, const Comparison &found) {
    const cfa::DebugImage &image = part.plane->image;
    if (part.sites == Sites::others)
        return "its image shows the green sites only";
    if (image.shown == cfa::Shown::signed_map)
        return "its image shows a quarter";
    if (image.channel > 0 && part.plane->channels == 1)
        return "its image is shifted by a pixel";
    if (image.channel < 3 && part.plane->channels == 3)
        return fmt::format("its image shows {} only", image.note);
    if (found.reaches_limit)
        return fmt::format("its image is limited to {}", (1u << image.bit_depth) - 1);
    return "";
}

class Judge {
  public:
    Judge(const RunFolder &a, const RunFolder &b, const CompareOptions &options)
        : a_(a), b_(b), options_(options) {
        const std::optional<uint32_t> bayer = a.bayer() ? a.bayer() : b.bayer();
        result_.registers_known = a.registers() != nullptr || b.registers() != nullptr;
        result_.bayer = options.bayer >= 0 ? options.bayer : bayer ? static_cast<int>(*bayer) : -1;
        options_.bayer = result_.bayer;
        options_.map.clear();
    }

    RunVerdict verdict() {
        compare_registers();
        result_.files = compare_files(a_, b_, options_);
        for (PlanePart &part : plane_graph(a_.registers(), b_.registers())) {
            result_.planes.emplace_back();
            result_.planes.back().part = std::move(part);
            look_at(result_.planes.back());
        }
        for (size_t i = 0; i < result_.planes.size(); ++i)
            if (result_.planes[i].seen == Seen::differs)
                trace(i);
        mark_suspects();
        collect_stages();
        return std::move(result_);
    }

  private:
    void compare_registers() {
        if (a_.registers() == nullptr || b_.registers() == nullptr)
            return;
        const auto parts_a = a_.registers()->parts(), parts_b = b_.registers()->parts();
        for (size_t i = 0; i < parts_a.size(); ++i)
            for (const RegisterInfo &info : parts_a[i].table->registers)
                if (const int32_t a = info.read(*parts_a[i].part), b = info.read(*parts_b[i].part); a != b)
                    result_.registers.push_back({info.key, a, b});
    }

    /// The files that tell about a plane: exact ones of both runs, or else its image. Null if there are none.
    const FilePair *files_of(const PlanePart &part) {
        const FilePair *image = nullptr;
        for (const FilePair &pair : result_.files) {
            const bool of_it = pair.either().plane == part.plane && !pair.either().stage.empty();
            if (of_it && pair.compared() && pair.either().exact)
                return &pair;
            if (of_it && pair.a != nullptr && pair.b != nullptr)
                image = &pair;
        }
        const RunPlane *const a = a_.exact(part.name), *const b = b_.exact(part.name);
        if (a == nullptr || b == nullptr || (image != nullptr && image->either().exact))
            return image;
        crossed_ = {}; // as a NumPy file on one side and an output picture on the other
        crossed_.a = a;
        crossed_.b = b;
        compare_pair(crossed_, options_);
        return &crossed_;
    }

    std::string why_unseen(const PlanePart &part) const {
        const auto has = [&](const RunFolder &run) { return run.exact(part.name) || run.image(part.name); };
        if (has(a_) == has(b_))
            return has(a_) ? "in different forms" : "not in the folders";
        return "only in " + (has(a_) ? a_ : b_).path();
    }

    void look_at(PlaneVerdict &plane) {
        if (plane.part.off) {
            plane.seen = Seen::off;
            plane.verdict = Verdict::off;
            return;
        }
        const FilePair *const files = files_of(plane.part);
        if (files == nullptr || !files->compared()) {
            plane.unseen = files == nullptr ? why_unseen(plane.part) : "not readable";
            return;
        }
        plane.a = files->a->path;
        plane.b = files->b->path;
        plane.found = files->found;
        if (plane.part.sites != Sites::all && files->differs())
            compare_sites(plane, files->either().exact);
        if (plane.unseen.empty() && plane.found.equal() && !files->either().exact)
            plane.unseen = hidden(plane.part, plane.found);
        if (!plane.unseen.empty())
            return;
        plane.seen = plane.found.equal() ? Seen::equal : Seen::differs;
        plane.verdict = Verdict::equal;
    }

    /// Only those sites of a plane that differs somewhere.
    void compare_sites(PlaneVerdict &plane, bool exact) {
        if (!exact && plane.part.sites == Sites::others) {
            plane.found = {};
            plane.unseen = "its image shows the green sites only";
        } else if (result_.bayer < 0) {
            plane.unseen = "no pattern id tells its sites";
        } else if (plane.found.mismatch.empty()) {
            CompareOptions options = options_;
            options.sites = plane.part.sites;
            plane.found = compare_pictures(plane.a, plane.b, options);
        }
    }

    /// What may have made a plane differ: what differs before it, or else its own stage and, through planes
    /// that are not seen, the stages before it. A mosaic that is not seen is taken as equal.
    struct Causes {
        std::set<size_t> places; // of itself and of planes that are not seen
        bool by_input = false;
    };
    Causes causes_of(size_t i) const {
        Causes causes = {{i}, false};
        std::vector<size_t> open = {i};
        while (!open.empty()) {
            const size_t at = open.back();
            open.pop_back();
            for (const size_t input : result_.planes[at].part.inputs) {
                const PlaneVerdict &of = result_.planes[input];
                if (of.seen == Seen::differs)
                    causes.by_input = true;
                else if (of.seen == Seen::unseen && input != 0 && causes.places.insert(input).second)
                    open.push_back(input);
            }
        }
        return causes;
    }

    void trace(size_t i) {
        const Causes causes = causes_of(i);
        const bool alone = std::all_of(causes.places.begin(), causes.places.end(), [&](size_t place) {
            return result_.planes[place].part.stage == result_.planes[i].part.stage;
        });
        result_.planes[i].verdict = causes.by_input ? Verdict::differs_by_input
                                    : alone         ? Verdict::differs_here
                                                    : Verdict::suspect;
        if (!result_.first)
            result_.first = i;
    }

    void mark_suspects() {
        if (!result_.first)
            return;
        for (const size_t place : causes_of(*result_.first).places) {
            PlaneVerdict &plane = result_.planes[place];
            std::vector<std::string> &suspects = result_.suspects;
            if (std::find(suspects.begin(), suspects.end(), plane.part.stage) == suspects.end())
                suspects.push_back(plane.part.stage);
            if (plane.seen == Seen::unseen)
                plane.verdict = Verdict::suspect;
        }
    }

    /// The worst of its planes is the verdict on a stage.
    void collect_stages() {
        const auto rank = [&](Verdict verdict) {
            return std::find(std::begin(WORST_FIRST), std::end(WORST_FIRST), verdict);
        };
        std::vector<StageVerdict> &stages = result_.stages;
        for (size_t i = 0; i < result_.planes.size(); ++i) {
            const PlaneVerdict &plane = result_.planes[i];
            auto stage = std::find_if(stages.begin(), stages.end(),
                                      [&](const StageVerdict &s) { return s.stage == plane.part.stage; });
            if (stage == stages.end())
                stage = stages.insert(stage, {plane.part.stage, Verdict::off, {}});
            stage->planes.push_back(i);
            if (rank(plane.verdict) < rank(stage->verdict))
                stage->verdict = plane.verdict;
        }
    }

    const RunFolder &a_, &b_;
    CompareOptions options_;
    FilePair crossed_;
    RunVerdict result_;
};

} // namespace

const char *verdict_text(Verdict verdict) {
    constexpr const char *TEXTS[] = {"equal",   "differs here", "differs by its input",
                                     "suspect", "not seen",     "off"};
    return TEXTS[static_cast<int>(verdict)];
}

RunVerdict judge(const RunFolder &a, const RunFolder &b, const CompareOptions &options) {
    return Judge(a, b, options).verdict();
}

} // namespace cfatool
