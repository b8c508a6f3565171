// The files that two runs have in common, compared.
#pragma once

#include <string>
#include <vector>

#include "tools/cfatool/compare/picture_compare.h"
#include "tools/cfatool/runs/run_folder.h"

namespace cfatool {

/// A file of either run. Folders within the runs do not count: dbg/dbg_img_GH.ppm and dbg_img_GH.ppm are one.
struct FilePair {
    std::string name;                          // without folders
    const RunPlane *a = nullptr, *b = nullptr; // null where that run has no such file
    Comparison found;                          // of a pair that could be read
    std::string unreadable;                    // why not

    const RunPlane &either() const { return a != nullptr ? *a : *b; }
    bool compared() const { return a != nullptr && b != nullptr && unreadable.empty(); }
    bool differs() const { return compared() && !found.equal(); }
};

/// Compares one pair, or tells why it cannot be read.
void compare_pair(FilePair &pair, CompareOptions options);

/// All files of both runs in pipeline order, those that are in both compared.
std::vector<FilePair> compare_files(const RunFolder &a, const RunFolder &b, const CompareOptions &options);

} // namespace cfatool
