// cfatool compare: what its two forms share.
#pragma once

#include <string>
#include <vector>

#include "tools/cfatool/compare/picture_compare.h"
#include "tools/cfatool/runs/run_folder.h"
#include "tools/cfatool/runs/run_images.h"

namespace cfatool {

struct CompareCommand {
    std::string a;
    std::string b;
    CompareOptions options;
    int bayer = -1; // pattern id, -1 if none was given
    bool common = false;
    bool json = false;
};

/// An image of either folder.
struct ImagePair {
    std::string name;
    const RunImage *known = nullptr; // null for an image that is not in the list
    std::string a, b;                // paths, empty if the folder has no such image
};

/// What was found in two folders, in pipeline order.
struct FolderComparison {
    struct Compared {
        ImagePair pair;
        Comparison found;
    };
    std::vector<Compared> images; // in both and readable
    std::vector<std::string> only_a, only_b;
    size_t unreadable = 0;

    /// The first image that differs, null if there is none.
    const Compared *first() const;
};

/// Compares every image that two folders have in common, in pipeline order, and says which stage differs
/// first. Returns the exit status: 1 if anything differs or, unless `common`, is on one side only; 2 if an
/// image could not be read, or if there is none in common.
int compare_folders(const CompareCommand &command);

} // namespace cfatool
