// A failing case made as small as still fails.
#pragma once

#include <functional>

#include "tools/cfatool/regress/inputs.h"

namespace cfatool {

/// Cuts rows and columns off the picture, in pairs so that the pattern stays, and sets registers back to
/// their resets, as long as `fails` says yes. REQUIRES that the inputs fail.
Inputs minimised(const Inputs &inputs, const std::function<bool(const Inputs &)> &fails);

} // namespace cfatool
