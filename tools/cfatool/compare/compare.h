// cfatool compare: what its two forms share.
#pragma once

#include <string>

#include "tools/cfatool/compare/explain.h"
#include "tools/cfatool/compare/verdict.h"

namespace cfatool {

struct CompareCommand {
    std::string a;
    std::string b;
    CompareOptions options; // with the pattern id, -1 if none was given
    bool common = false;
    bool explain = false;
    bool json = false;
    bool quiet = false;
};

/// What was found in two folders.
struct FolderComparison {
    RunVerdict verdict;
    std::vector<std::vector<std::string>> kinds; // of each plane that differs; as text of the first alone
    std::vector<Explanation> explanations;

    /// The first file that differs, null if there is none.
    const FilePair *first_file() const;
};

/// Compares everything that two folders have in common, and says which stage is wrong or may be. Returns the
/// exit status: 1 if anything differs or, unless `common`, is on one side only; 2 if a file could not be
/// read, or if there is none in common.
int compare_folders(const CompareCommand &command);

} // namespace cfatool
