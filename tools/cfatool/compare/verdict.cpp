// From planes that differ back to the stage that is wrong, along what each plane is computed from.
#include "tools/cfatool/compare/verdict.h"

#include <algorithm>
#include <cstring>
#include <fmt/core.h>
#include <iterator>
#include <set>
#include <sstream>

#include "tools/cfatool/base/trouble.h"

namespace cfatool {
namespace {

using Seen = PlaneVerdict::Seen;

/// The features of the block that are on in either run.
struct Features {
    bool block = true, luma_moire = true, colour_moire = true, sharpening = true;

    Features(const Registers *a, const Registers *b) {
        if (a == nullptr && b == nullptr)
            return;
        const auto in_either = [=](const auto &member) {
            return (a != nullptr && a->block.hw.*member == 1) || (b != nullptr && b->block.hw.*member == 1);
        };
        block = in_either(&cfa::CfaRegHw::reg_cfa_enable);
        luma_moire = in_either(&cfa::CfaRegHw::reg_cfa_ymoire_enable);
        colour_moire = in_either(&cfa::CfaRegHw::reg_cfa_cmoire_enable);
        sharpening = in_either(&cfa::CfaRegHw::reg_cfa_shpn_enable);
    }
};

bool is_one_of(const std::string &word, const char *words) {
    std::istringstream list(words);
    return std::find(std::istream_iterator<std::string>(list), {}, word) !=
           std::istream_iterator<std::string>();
}

/// A plane, or its sites that one stage makes, and what it is computed from.
struct Part {
    PlaneVerdict verdict;
    Sites sites = Sites::all;
    std::vector<size_t> inputs; // places of the parts in the list
    const char *copied = "";    // with the stage off: the plane that this one is a copy of
};

/// Marks what is not computed, and who makes in its place what is passed on.
void switch_off(Part &part, const Features &on) {
    const std::string &stage = part.verdict.stage, &name = part.verdict.name;
    const auto made_by = [&](const char *by, const char *copied) {
        part.verdict.stage = by;
        part.copied = copied;
    };
    const bool is_output = part.verdict.plane->readers[0] == '\0';
    if (!on.block && is_output)
        return made_by("cfa_bypass", "raw");
    if (!on.luma_moire && name == "YMoire")
        return made_by("copy_to_dst", "cfa_RGB");
    if (!on.colour_moire && name == "CMOut")
        return made_by("copy_to_dst", "YMoire");
    if (!on.sharpening && name == "out_rgb")
        return made_by("copy_to_dst", "CMOut");
    if (!on.sharpening && name == "out_sg")
        return made_by("sharpen_gain_bypass", "");
    if (!on.block || (!on.luma_moire && is_one_of(stage, "cfa_DeYMoire cfa_CalYMoireWgt")) ||
        (!on.colour_moire && is_one_of(stage, "cfa_CalColorMoireSts cfa_CalPhaseDifference")) ||
        (!on.sharpening && stage.starts_with("sg_")))
        part.verdict.seen = Seen::off;
}

bool reads_mosaic(const std::string &stage) {
    return is_one_of(stage, "cfa_CalAvg cfa_CalPredictPixel cfa_CalClassifier cfa_CalVarOfColorDiffAtRB "
                            "cfa_CalRGB sg_get_bayer_luma cfa_bypass");
}

bool reads(const Part &part, const Part &input) {
    if (part.copied[0] != '\0')
        return input.verdict.name == part.copied;
    return input.verdict.plane == nullptr ? reads_mosaic(part.verdict.stage)
                                          : is_one_of(part.verdict.stage, input.verdict.plane->readers);
}

std::vector<Part> parts_of(const Features &on) {
    std::vector<Part> parts(1);
    parts[0].verdict.name = "raw";
    parts[0].verdict.stage = "input";
    parts[0].verdict.plane = nullptr;
    const auto add = [&](const cfa::PlaneInfo &plane, const char *stage, Sites sites, const char *where) {
        Part part;
        part.verdict.name = plane.name;
        part.verdict.sites = where;
        part.verdict.stage = stage;
        part.verdict.plane = &plane;
        part.sites = sites;
        switch_off(part, on);
        for (size_t i = 0; i < parts.size() && part.verdict.seen != Seen::off; ++i)
            if (reads(part, parts[i]))
                part.inputs.push_back(i);
        parts.push_back(part);
    };
    for (const cfa::PlaneInfo &plane : cfa::planes()) {
        // The image of SigH and SigV is written by the stage that fills the green sites.
        const bool two_stages = plane.image.stage[0] != '\0';
        if (two_stages)
            add(plane, plane.image.stage, Sites::green, " at green sites");
        add(plane, plane.stage, two_stages ? Sites::others : Sites::all,
            two_stages ? " at red and blue sites" : "");
    }
    return parts;
}

/// Why an image that is equal may hide a difference; empty if it shows every sample.
std::string hidden(const cfa::PlaneInfo &plane, Sites sites, const Comparison &found) {
    const cfa::DebugImage &image = plane.image;
    if (sites == Sites::others)
        return "its image shows the green sites only";
    if (image.shown == cfa::Shown::signed_map)
        return "its image shows a quarter";
    if (image.channel > 0 && plane.channels == 1)
        return "its image is shifted";
    if (image.channel < 3 && plane.channels == 3)
        return fmt::format("its image shows {} only", image.note);
    if (found.reaches_limit)
        return fmt::format("its image is limited to {}", (uint64_t{1} << image.bit_depth) - 1);
    return "";
}

class Judge {
  public:
    Judge(const RunFolder &a, const RunFolder &b, const CompareOptions &options)
        : a_(a), b_(b), options_(options) {
        options_.map.clear();
        result_.registers_known = a.registers() != nullptr || b.registers() != nullptr;
        result_.bayer = options.bayer >= 0
                            ? options.bayer
                            : static_cast<int>(a.bayer().value_or(b.bayer().value_or(UINT32_MAX)));
        options_.bayer = result_.bayer;
        parts_ = parts_of(Features(a.registers(), b.registers()));
    }

    RunVerdict verdict() {
        compare_registers();
        for (Part &part : parts_)
            if (part.verdict.seen != Seen::off)
                look_at(part);
        for (size_t i = 0; i < parts_.size(); ++i) {
            if (parts_[i].verdict.seen == Seen::equal)
                parts_[i].verdict.verdict = Verdict::equal;
            if (parts_[i].verdict.seen == Seen::off)
                parts_[i].verdict.verdict = Verdict::off;
            if (parts_[i].verdict.seen == Seen::differs)
                trace(i);
        }
        mark_suspects();
        for (const Part &part : parts_)
            result_.planes.push_back(part.verdict);
        collect_stages();
        return std::move(result_);
    }

  private:
    void compare_registers() {
        if (a_.registers() == nullptr || b_.registers() == nullptr)
            return;
        const auto parts_a = const_cast<Registers *>(a_.registers())->parts();
        const auto parts_b = const_cast<Registers *>(b_.registers())->parts();
        for (size_t i = 0; i < parts_a.size(); ++i)
            for (const RegisterInfo &info : parts_a[i].table->registers)
                if (const int32_t a = info.read(*parts_a[i].part), b = info.read(*parts_b[i].part); a != b)
                    result_.registers.push_back({info.key, a, b});
    }

    /// Compares the exact planes, or else the images.
    void look_at(Part &part) {
        PlaneVerdict &verdict = part.verdict;
        const RunPlane *a = a_.exact(verdict.name), *b = b_.exact(verdict.name);
        const bool exact = a != nullptr && b != nullptr;
        if (!exact) {
            a = a_.image(verdict.name);
            b = b_.image(verdict.name);
        }
        if (a == nullptr || b == nullptr) {
            const bool in_a = a != nullptr || a_.exact(verdict.name) != nullptr;
            const bool in_b = b != nullptr || b_.exact(verdict.name) != nullptr;
            verdict.unseen = in_a == in_b ? in_a ? "exact on one side only" : "not in the folders"
                                          : "only in " + (in_a ? a_ : b_).path();
            return;
        }
        verdict.a = a->path;
        verdict.b = b->path;
        try {
            compare(part, exact);
        } catch (const Trouble &trouble) {
            verdict.unseen = std::string("not readable: ") + trouble.what();
        }
    }

    void compare(Part &part, bool exact) {
        PlaneVerdict &verdict = part.verdict;
        CompareOptions options = options_;
        options.sites = Sites::all;
        if (verdict.plane != nullptr) {
            options.range = range_of_format(verdict.plane->format);
            const uint64_t limit = (uint64_t{1} << verdict.plane->image.bit_depth) - 1;
            if (!exact && (options.range == 0 || options.range > limit))
                options.limit = static_cast<uint32_t>(limit);
        }
        verdict.found = compare_pictures(verdict.a, verdict.b, options);
        if (part.sites != Sites::all && verdict.found.mismatch.empty() && !verdict.found.equal()) {
            if (result_.bayer < 0) {
                verdict.unseen = "no pattern id tells its sites";
                return;
            }
            options.sites = part.sites;
            verdict.found = compare_pictures(verdict.a, verdict.b, options);
        }
        verdict.unseen =
            exact || !verdict.found.equal() ? "" : hidden(*verdict.plane, part.sites, verdict.found);
        verdict.seen = !verdict.found.equal()   ? Seen::differs
                       : verdict.unseen.empty() ? Seen::equal
                                                : Seen::unseen;
    }

    /// What may have made part i differ: itself, what is not seen before it, or what differs before it.
    struct Causes {
        std::set<size_t> makers; // parts that differ or are not seen
        bool by_input = false;
    };
    Causes causes_of(size_t i) const {
        Causes causes;
        std::vector<size_t> open = {i};
        causes.makers.insert(i);
        while (!open.empty()) {
            const size_t at = open.back();
            open.pop_back();
            for (const size_t input : parts_[at].inputs) {
                const PlaneVerdict &of = parts_[input].verdict;
                const bool same_step = of.stage == parts_[i].verdict.stage && parts_[i].copied[0] == '\0';
                if (of.seen == Seen::differs && !same_step)
                    causes.by_input = true;
                // A mosaic that is not seen is taken as equal.
                else if (of.seen == Seen::unseen && of.plane != nullptr && causes.makers.insert(input).second)
                    open.push_back(input);
            }
        }
        return causes;
    }

    void trace(size_t i) {
        PlaneVerdict &verdict = parts_[i].verdict;
        const Causes causes = causes_of(i);
        const bool alone = std::all_of(causes.makers.begin(), causes.makers.end(), [&](size_t maker) {
            return parts_[maker].verdict.stage == verdict.stage;
        });
        verdict.verdict = causes.by_input ? Verdict::differs_by_input
                          : alone         ? Verdict::differs_here
                                          : Verdict::suspect;
        if (!result_.first)
            result_.first = i;
    }

    void mark_suspects() {
        if (!result_.first)
            return;
        for (const size_t maker : causes_of(*result_.first).makers) {
            PlaneVerdict &verdict = parts_[maker].verdict;
            if (std::find(result_.suspects.begin(), result_.suspects.end(), verdict.stage) ==
                result_.suspects.end())
                result_.suspects.push_back(verdict.stage);
            if (verdict.seen == Seen::unseen)
                verdict.verdict = Verdict::suspect;
        }
    }

    /// The worst of its planes is the verdict on a stage.
    void collect_stages() {
        constexpr Verdict WORST_FIRST[] = {Verdict::differs_here, Verdict::suspect, Verdict::differs_by_input,
                                           Verdict::not_seen,     Verdict::equal,   Verdict::off};
        const auto rank = [&](Verdict v) {
            return std::find(std::begin(WORST_FIRST), std::end(WORST_FIRST), v);
        };
        for (size_t i = 0; i < result_.planes.size(); ++i) {
            const PlaneVerdict &plane = result_.planes[i];
            auto stage = std::find_if(result_.stages.begin(), result_.stages.end(),
                                      [&](const StageVerdict &s) { return s.stage == plane.stage; });
            if (stage == result_.stages.end())
                stage = result_.stages.insert(stage, {plane.stage, Verdict::off, {}});
            stage->planes.push_back(i);
            if (rank(plane.verdict) < rank(stage->verdict))
                stage->verdict = plane.verdict;
        }
    }

    const RunFolder &a_, &b_;
    CompareOptions options_;
    std::vector<Part> parts_;
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
