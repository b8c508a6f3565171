// What kind of difference it is, where that is plain.
#pragma once

#include <string>
#include <vector>

#include "tools/cfatool/compare/picture_compare.h"

namespace cfatool {

/// What all samples that differ have in common: a constant, one bit, swapped bytes, a plane shifted by a row
/// or a column, an outer row or column, one colour's sites, one channel, the largest value. Each a line such
/// as "bit 3 is 0 in B"; none for fewer than four samples or where nothing is plain. `found` is a comparison
/// of these files without a crop; `range` the largest sample of the plane, 0 if unknown; `bayer` the pattern
/// id, -1 if unknown; `sites` those that were compared. Throws Trouble.
std::vector<std::string> difference_kinds(const std::string &a, const std::string &b, const Comparison &found,
                                          uint32_t range, int bayer, Sites sites);

} // namespace cfatool
