// Which stage is wrong: the judgement on two runs.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/cfatool/compare/file_pairs.h"
#include "tools/cfatool/compare/plane_graph.h"

namespace cfatool {

enum class Verdict {
    equal,            // all its planes are seen, every sample, and equal
    differs_here,     // a plane differs while everything it is computed from is equal
    differs_by_input, // its planes differ, and so does something they are computed from
    suspect,          // it may be the one: what would tell is not seen
    not_seen,         // not all of its planes are seen; nothing speaks against it
    off,              // switched off in both runs
};

/// The worst of several is the verdict on them all.
constexpr Verdict WORST_FIRST[] = {Verdict::differs_here, Verdict::suspect, Verdict::differs_by_input,
                                   Verdict::not_seen,     Verdict::equal,   Verdict::off};

/// "equal", "differs here", "differs by its input", "suspect", "not seen", "off".
const char *verdict_text(Verdict verdict);

/// What is known about one plane, or about the sites of SigH and SigV that one stage makes.
struct PlaneVerdict {
    enum class Seen { equal, differs, unseen, off };

    PlanePart part;
    Seen seen = Seen::unseen;
    std::string unseen; // why: "not in the folders", "its image is limited to 255"
    std::string a, b;   // the files compared, empty if there are none
    Comparison found;   // of a plane that differs: first wrong pixel, counts, largest difference
    Verdict verdict = Verdict::not_seen;

    /// "SigH at green sites".
    std::string name() const { return part.name + sites_text(part.sites); }
};

struct StageVerdict {
    std::string stage;
    Verdict verdict = Verdict::off;
    std::vector<size_t> planes; // places in RunVerdict::planes
};

struct RegisterDifference {
    std::string key;
    int32_t a, b;
};

struct RunVerdict {
    std::vector<RegisterDifference> registers; // that differ, where both runs have them
    bool registers_known = false;              // of at least one run; else every stage is taken as on
    int bayer = -1;                            // pattern id, -1 if neither run says it
    std::vector<FilePair> files;               // what was compared, in pipeline order
    std::vector<PlaneVerdict> planes;          // in pipeline order, the mosaic first
    std::vector<StageVerdict> stages;          // in pipeline order
    std::vector<std::string> suspects;         // in pipeline order; a single one is the stage that is wrong
    std::optional<size_t> first;               // place of the first plane that differs

    const PlaneVerdict *first_plane() const { return first ? &planes[*first] : nullptr; }
};

/// Compares everything that two runs have in common; what exact planes do not tell, debug images may. A file
/// that cannot be read counts as not seen. The runs must outlive the verdict. `options` as for two pictures.
RunVerdict judge(const RunFolder &a, const RunFolder &b, const CompareOptions &options);

} // namespace cfatool
