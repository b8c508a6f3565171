// cfatool compare: what its two forms share.
#pragma once

#include <string>

#include "tools/cfatool/compare/picture_compare.h"

namespace cfatool {

struct CompareCommand {
    std::string a;
    std::string b;
    CompareOptions options;
    int bayer = -1; // pattern id, -1 if none was given
    bool common = false;
    bool json = false;
};

/// Compares every image that two folders have in common, in pipeline order, and says which stage differs
/// first. Returns the exit status: 1 if anything differs or, unless `common`, is on one side only; 2 if an
/// image could not be read, or if there is none in common.
int compare_folders(const CompareCommand &command);

/// The result of one comparison as a JSON object.
std::string comparison_json(const Comparison &found, const CompareCommand &command);

} // namespace cfatool
