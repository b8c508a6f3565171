// Two run folders in words: registers, what is equal, what differs and what is not seen, then the stage.
#include <algorithm>
#include <fmt/core.h>
#include <fmt/ranges.h>
#include <iostream>
#include <map>

#include "tools/cfatool/base/trouble.h"
#include "tools/cfatool/compare/compare_json.h"
#include "tools/cfatool/compare/difference_kind.h"

namespace cfatool {
namespace {

using Names = std::vector<std::string>;

template <class Take> Names names_of(const RunVerdict &verdict, Take take) {
    Names names;
    for (const FilePair &pair : verdict.files)
        if (take(pair))
            names.push_back(pair.name);
    return names;
}

void print_names(const std::string &what, const Names &names) {
    if (!names.empty())
        std::cout << fmt::format("{} ({}): {}\n", what, names.size(), fmt::join(names, " "));
}

void print_files(const FolderComparison &found, const CompareCommand &command) {
    const RunVerdict &verdict = found.verdict;
    print_names("equal",
                names_of(verdict, [](const FilePair &p) { return p.compared() && p.found.equal(); }));
    const cfa::PlaneInfo *exact = nullptr; // that differs: its image says nothing new
    for (const FilePair &pair : verdict.files) {
        if (!pair.differs() || (exact != nullptr && pair.either().plane == exact && !pair.either().exact))
            continue;
        std::cout << fmt::format("{:<29} {}\n", pair.name, result_text(pair.found, verdict.bayer));
        exact = pair.either().exact ? pair.either().plane : exact;
    }
    print_names("not readable", names_of(verdict, [](const FilePair &p) { return !p.unreadable.empty(); }));
    print_names("only in " + command.a, names_of(verdict, [](const FilePair &p) { return p.b == nullptr; }));
    print_names("only in " + command.b, names_of(verdict, [](const FilePair &p) { return p.a == nullptr; }));
}

/// What keeps the verdict from being more than suspects.
void print_unseen(const RunVerdict &verdict) {
    std::map<std::string, Names> by_reason;
    for (const PlaneVerdict &plane : verdict.planes)
        if (plane.seen == PlaneVerdict::Seen::unseen && plane.verdict == Verdict::suspect)
            by_reason[plane.unseen].push_back(plane.name());
    for (const auto &[reason, names] : by_reason)
        std::cout << fmt::format("not seen, {}: {}\n", reason, fmt::join(names, ", "));
}

std::string first_text(const FolderComparison &found) {
    const FilePair *const file = found.first_file();
    const PlaneVerdict *const plane = found.verdict.first_plane();
    std::string text =
        plane != nullptr
            ? fmt::format("{}: {}", plane->name(), result_text(plane->found, found.verdict.bayer))
            : fmt::format("{}: {}", file->name, result_text(file->found, found.verdict.bayer));
    for (size_t i = 0; plane != nullptr && i < found.kinds[*found.verdict.first].size(); ++i)
        text += "; " + found.kinds[*found.verdict.first][i];
    return text;
}

void print_verdict(const FolderComparison &found, size_t one_sided) {
    const Names &suspects = found.verdict.suspects;
    if (found.first_file() == nullptr) {
        const size_t compared =
            names_of(found.verdict, [](const FilePair &p) { return p.compared(); }).size();
        std::cout << fmt::format("no difference in {} file{}{}\n", compared, compared == 1 ? "" : "s",
                                 one_sided > 0 ? fmt::format(", {} on one side only", one_sided) : "");
    } else if (suspects.empty())
        std::cout << fmt::format("what differs is no part of the pipeline: {}\n", first_text(found));
    else if (suspects.front() == "input")
        std::cout << fmt::format("the mosaics differ: {}\n", first_text(found));
    else if (suspects.size() == 1)
        std::cout << fmt::format("first stage that differs: {}, {}\n", suspects[0], first_text(found));
    else
        std::cout << fmt::format("suspects: {}\nfirst difference: {}\n", fmt::join(suspects, ", "),
                                 first_text(found));
    for (const Explanation &explanation : found.explanations)
        std::cout << explanation_text(explanation) << "\n";
}

void print_text(const FolderComparison &found, const CompareCommand &command, size_t one_sided) {
    const RunVerdict &verdict = found.verdict;
    for (const RegisterDifference &r : verdict.registers)
        std::cout << fmt::format("register {}: {} against {}\n", r.key, r.a, r.b);
    if (!command.quiet) {
        print_files(found, command);
        print_unseen(verdict);
        Names off;
        for (const StageVerdict &stage : verdict.stages)
            if (stage.verdict == Verdict::off)
                off.push_back(stage.stage);
        print_names("off", off);
        if (!verdict.registers_known)
            std::cout << "no registers in either folder: every stage is taken as on\n";
    }
    print_verdict(found, one_sided);
}

void find_kinds(FolderComparison &found, const CompareCommand &command) {
    const RunVerdict &verdict = found.verdict;
    found.kinds.resize(verdict.planes.size());
    const bool whole = command.options.crop.empty() && command.options.tolerance == 0;
    for (size_t i = 0; i < verdict.planes.size() && whole; ++i)
        if (const PlaneVerdict &plane = verdict.planes[i];
            plane.seen == PlaneVerdict::Seen::differs && (command.json || i == verdict.first))
            found.kinds[i] = difference_kinds(plane.a, plane.b, plane.found, plane.found.range, verdict.bayer,
                                              plane.part.sites);
}

} // namespace

const FilePair *FolderComparison::first_file() const {
    const auto first = std::find_if(verdict.files.begin(), verdict.files.end(),
                                    [](const FilePair &pair) { return pair.differs(); });
    return first != verdict.files.end() ? &*first : nullptr;
}

int compare_folders(const CompareCommand &command) {
    const RunFolder a(command.a), b(command.b);
    FolderComparison found;
    CompareOptions options = command.options;
    options.progress = true;
    found.verdict = judge(a, b, options);
    const std::vector<FilePair> &files = found.verdict.files;
    const auto count = [&](const auto &what) {
        return static_cast<size_t>(std::count_if(files.begin(), files.end(), what));
    };
    const size_t one_sided = count([](const FilePair &p) { return p.a == nullptr || p.b == nullptr; });
    const size_t unreadable = count([](const FilePair &p) { return !p.unreadable.empty(); });
    if (one_sided == files.size())
        throw CommandTrouble(fmt::format("no image is in both {} and {}", command.a, command.b));
    find_kinds(found, command);
    if (command.explain)
        found.explanations = explain(a, b, found.verdict);
    if (command.json)
        std::cout << folders_json(found, command) << "\n";
    else
        print_text(found, command, one_sided);
    for (const FilePair &pair : files)
        if (!pair.unreadable.empty())
            std::cerr << pair.unreadable << "\n";
    if (unreadable > 0)
        return STATUS_TROUBLE;
    return found.first_file() != nullptr || (one_sided > 0 && !command.common) ? STATUS_FOUND : STATUS_GOOD;
}

} // namespace cfatool
