// What a user may have meant by a name that does not exist.
#pragma once

#include <string>
#include <vector>

namespace cfatool {

/// The candidate nearest to `name` by edit distance; empty if none is near.
std::string nearest(const std::string &name, const std::vector<std::string> &candidates);

/// "; did you mean 'chart'?" or nothing.
std::string suggestion(const std::string &name, const std::vector<std::string> &candidates);

} // namespace cfatool
