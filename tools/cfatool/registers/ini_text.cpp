// The parser's rules, one physical line after the other.
#include "tools/cfatool/registers/ini_text.h"

#include <algorithm>

#include "tools/cfatool/base/text.h"

namespace cfatool {
namespace {

constexpr size_t NAME_SIZE = 49; // characters kept of a section name and of the key that a line continues

/// Place of the first of `stops`, of an inline comment, or of the end. White space before `from` does not
/// count.
size_t find_stop(const std::string &text, size_t from, const char *stops) {
    bool after_blank = false;
    for (size_t i = from; i < text.size(); ++i) {
        if (std::string(stops).find(text[i]) != std::string::npos || (after_blank && text[i] == ';'))
            return i;
        after_blank = is_blank(text[i]);
    }
    return text.size();
}

/// The place behind the last character before `end` that is not blank, at least `begin`.
size_t trimmed_end(const std::string &text, size_t begin, size_t end) {
    while (end > begin && is_blank(text[end - 1]))
        --end;
    return end;
}

size_t skip_blanks(const std::string &text, size_t from, size_t end) {
    while (from < end && is_blank(text[from]))
        ++from;
    return from;
}

/// What a line inherits from the lines above it.
struct State {
    std::string section;
    std::string previous; // key that an indented line continues, "" for none
};

/// The value between two places of the text, without the blanks around it.
void set_value(IniLine &line, const std::string &text, size_t from, size_t end) {
    const size_t begin = skip_blanks(text, from, end);
    // Of an empty value the place right behind the separator counts.
    line.value_at = begin == end ? from : begin;
    line.value = text.substr(begin, trimmed_end(text, begin, end) - begin);
}

/// `text` is the line up to its NUL and without blanks at its end, `start` its first character to be read.
void read_line(IniLine &line, const std::string &text, size_t start, bool indented, State &state) {
    using Kind = IniLine::Kind;
    if (start == text.size() || text[start] == ';' || text[start] == '#') {
        line.kind = Kind::nothing;
    } else if (indented && !state.previous.empty()) {
        line.kind = Kind::continuation;
        line.name = state.previous;
        set_value(line, text, start, text.size()); // no comment ends it
    } else if (text[start] == '[') {
        const size_t close = find_stop(text, start + 1, "]");
        line.kind = close < text.size() && text[close] == ']' ? Kind::section : Kind::unread;
        if (line.kind == Kind::section)
            state = {text.substr(start + 1, std::min(close - start - 1, NAME_SIZE)), ""};
    } else {
        const size_t separator = find_stop(text, start, "=:");
        line.kind = separator < text.size() && text[separator] != ';' ? Kind::setting : Kind::unread;
        if (line.kind == Kind::setting) {
            line.name = text.substr(start, trimmed_end(text, start, separator) - start);
            state.previous = line.name.substr(0, NAME_SIZE);
            set_value(line, text, separator + 1, find_stop(text, separator + 1, ""));
        }
    }
    line.section = state.section;
}

} // namespace

std::vector<IniLine> read_ini_text(const std::string &bytes) {
    std::vector<IniLine> lines;
    State state;
    for (size_t begin = 0; begin < bytes.size();) {
        const size_t feed = std::min(bytes.find('\n', begin), bytes.size());
        const bool carriage = feed < bytes.size() && feed > begin && bytes[feed - 1] == '\r';
        IniLine line;
        line.text = bytes.substr(begin, feed - begin - carriage);
        line.end = feed < bytes.size() ? (carriage ? "\r\n" : "\n") : "";
        const std::string mark = "\xEF\xBB\xBF";
        const size_t first = lines.empty() && line.text.compare(0, mark.size(), mark) == 0 ? mark.size() : 0;
        const size_t seen = trimmed_end(line.text, first, std::min(line.text.find('\0'), line.text.size()));
        const std::string text = line.text.substr(0, seen);
        const size_t start = skip_blanks(text, first, text.size());
        read_line(line, text, start, start > 0, state);
        lines.push_back(std::move(line));
        begin = feed + 1;
    }
    return lines;
}

std::string join_ini_text(const std::vector<IniLine> &lines) {
    std::string bytes;
    for (const IniLine &line : lines)
        bytes += line.text + line.end;
    return bytes;
}

} // namespace cfatool
