// What cfatool compare finds, as JSON for scripts.
#pragma once

#include <string>

#include "tools/cfatool/compare/compare.h"

namespace cfatool {

/// One pair of pictures.
std::string comparison_json(const Comparison &found, const CompareCommand &command);

/// Two folders: every pair, what is on one side only, and the first stage that differs.
std::string folders_json(const FolderComparison &found, const CompareCommand &command);

} // namespace cfatool
