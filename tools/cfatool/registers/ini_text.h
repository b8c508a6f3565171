// An INI file line by line, as the parser reads it, with the places in it: for checks and for edits in place.
//
// The parser's rules: ; and # begin a comment line, ; behind white space an inline comment. The section name
// ends at the first ], cut at 49 characters, blanks kept. A key ends at the first = or :. A line that begins
// with white space continues the key above it, whatever it holds: all of it, comment and all, is one more
// value of that key, whose name is cut at 49 characters. Lines without separator or without ] are passed
// over. A line ends at a NUL. A byte-order mark on line 1 is skipped.
#pragma once

#include <string>
#include <vector>

namespace cfatool {

struct IniLine {
    enum class Kind { nothing, section, setting, continuation, unread };

    std::string text; // as it stands, without line end
    std::string end;  // "\n", "\r\n", or "" at the end of the file
    Kind kind = Kind::nothing;
    std::string section; // in force behind this line
    std::string name;    // setting and continuation: the key
    std::string value;   // setting and continuation: as the parser hands it on
    size_t value_at = 0; // place of the value in the text
};

/// Splits and reads a whole file.
std::vector<IniLine> read_ini_text(const std::string &bytes);

/// The lines as one file again.
std::string join_ini_text(const std::vector<IniLine> &lines);

} // namespace cfatool
