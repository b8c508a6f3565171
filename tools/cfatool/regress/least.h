// A kept case made as small as still ends as it did.
#pragma once

#include <cstdint>
#include <string>

#include "tools/cfatool/regress/makers.h"
#include "tools/cfatool/regress/results.h"

namespace cfatool {

/// Keeps the least of these inputs that end like `bad` in a new folder, if that comes out again. Every trial
/// is a process of its own and may take `limit_ms`, all of them ten times as long. `reference` may be null.
/// REQUIRES to be in a worker of a pool. Throws Trouble and cfa::Error.
void make_least(const Inputs &inputs, const Result &bad, OutputMaker &block, OutputMaker *reference,
                int64_t limit_ms, const std::string &folder);

} // namespace cfatool
