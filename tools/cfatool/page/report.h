// The page of a run, or of two.
#pragma once

#include <string>

namespace cfatool {

/// Writes the page of a run and, unless the name is empty, of another beside it, into a folder or a file
/// .html. Returns a line about it. Throws Trouble.
std::string write_report(const std::string &run, const std::string &other, const std::string &output);

} // namespace cfatool
