#include "tools/cfatool/compare/plane_graph.h"

#include <algorithm>
#include <iterator>
#include <sstream>

namespace cfatool {
namespace {

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
    return std::any_of(std::istream_iterator<std::string>(list), {},
                       [&](const std::string &one) { return one == word; });
}

/// Marks what is not made, and who passes something on in place of a stage that is off.
void switch_off(PlanePart &part, const Features &on) {
    const auto made_by = [&](const char *stage, const char *copied) {
        part.stage = stage;
        part.copied = copied;
    };
    const bool is_output = part.plane->readers[0] == '\0';
    if (!on.block && is_output)
        return made_by("cfa_bypass", "raw");
    if (!on.luma_moire && part.name == "YMoire")
        return made_by("copy_to_dst", "cfa_RGB");
    if (!on.colour_moire && part.name == "CMOut")
        return made_by("copy_to_dst", "YMoire");
    if (!on.sharpening && part.name == "out_rgb")
        return made_by("copy_to_dst", "CMOut");
    if (!on.sharpening && part.name == "out_sg")
        return made_by("sharpen_gain_bypass", "");
    part.off = !on.block || (!on.luma_moire && is_one_of(part.stage, "cfa_DeYMoire cfa_CalYMoireWgt")) ||
               (!on.colour_moire && is_one_of(part.stage, "cfa_CalColorMoireSts cfa_CalPhaseDifference")) ||
               (!on.sharpening && part.stage.starts_with("sg_"));
}

bool reads(const PlanePart &part, const PlanePart &input) {
    if (!part.copied.empty())
        return input.name == part.copied;
    if (input.plane != nullptr)
        return !input.off && is_one_of(part.stage, input.plane->readers);
    return is_one_of(part.stage, "cfa_CalAvg cfa_CalPredictPixel cfa_CalClassifier "
                                 "cfa_CalVarOfColorDiffAtRB cfa_CalRGB sg_get_bayer_luma");
}

} // namespace

std::vector<PlanePart> plane_graph(const Registers *a, const Registers *b) {
    const Features on(a, b);
    std::vector<PlanePart> parts = {{"raw", nullptr, "input", Sites::all, false, "", {}}};
    const auto add = [&](const cfa::PlaneInfo &plane, const char *stage, Sites sites) {
        PlanePart part = {plane.name, &plane, stage, sites, false, "", {}};
        switch_off(part, on);
        for (size_t i = 0; i < parts.size() && !part.off; ++i)
            if (reads(part, parts[i]))
                part.inputs.push_back(i);
        parts.push_back(part);
    };
    for (const cfa::PlaneInfo &plane : cfa::planes()) {
        const char *const first_stage = plane.image.stage; // of SigH and SigV: it fills the green sites
        if (first_stage[0] != '\0')
            add(plane, first_stage, Sites::green);
        add(plane, plane.stage, first_stage[0] != '\0' ? Sites::others : Sites::all);
    }
    return parts;
}

const char *sites_text(Sites sites) {
    constexpr const char *TEXTS[] = {"", " at green sites", " at red and blue sites"};
    return TEXTS[static_cast<int>(sites)];
}

} // namespace cfatool
