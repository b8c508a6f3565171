// INI files of any line length, through the INI parser library.
#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>

namespace cfa {

/// Called once per name/value line with the section in force; returns non-zero on success.
using IniHandler = int (*)(void *user, const char *section, const char *key, const char *value);

/// Parses an INI file in constant memory, whatever the length of its lines. Returns 0, -1 when the file
/// cannot be opened, else the number of the first bad line; parsing goes on after a bad line. A line longer
/// than the parser's buffer reaches the handler with the same section and a value that converts to the same
/// integer. Its key is cut after 80 characters, and loses leading zeros if it starts with a number.
int ini_load_file(const char *path, IniHandler handler, void *user);

/// A text in memory, which must stay, as a stream. Throws std::bad_alloc.
std::unique_ptr<std::FILE, int (*)(std::FILE *)> open_text(const char *text, size_t length);

/// The same on an open stream, which stays open. `line`, if not null, holds the number of the line whenever
/// the handler is called.
int ini_load_stream(std::FILE *stream, IniHandler handler, void *user, int *line = nullptr);

} // namespace cfa
