// Text of web pages.
#pragma once

#include <string>

namespace cfatool {

/// A text with what HTML and XML read as their own escaped.
std::string html_text(const std::string &text);

/// A relative path as a link.
std::string link_text(const std::string &path);

} // namespace cfatool
