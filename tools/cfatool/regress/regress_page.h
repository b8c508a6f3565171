// Results for build servers and for eyes.
#pragma once

#include <string>

#include "tools/cfatool/regress/merged.h"

namespace cfatool {

/// One test suite: failures, errors and skipped (not run) told apart. Goes into the file case by case. Throws
/// Trouble.
void write_junit(const Plan &plan, const Merged &merged, const std::string &path);

/// A page: counts, buckets with their cases, errors. Links lead from `path` into the folder of results.
/// Throws Trouble.
void write_page(const Plan &plan, const Merged &merged, const std::string &results, const std::string &path);

} // namespace cfatool
