// Just enough JSON for what scripts read.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace cfatool {

/// A text in quotes.
inline std::string json_text(const std::string &text) {
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            quoted += std::string("\\") + c;
        } else if (static_cast<unsigned char>(c) < ' ') {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(c));
            quoted += escape;
        } else {
            quoted += c;
        }
    }
    return quoted + "\"";
}

/// "name": value
inline std::string json_member(const std::string &name, const std::string &value) {
    return json_text(name) + ": " + value;
}

/// Elements set apart by commas between two brackets: "[]" or "{}".
inline std::string json_list(const char *brackets, const std::vector<std::string> &elements) {
    std::string list(1, brackets[0]);
    for (size_t i = 0; i < elements.size(); ++i)
        list += (i == 0 ? "" : ", ") + elements[i];
    return list + brackets[1];
}

} // namespace cfatool
