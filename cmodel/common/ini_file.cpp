#include "cmodel/common/ini_file.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include <ini.h>

#include "cmodel/common/error.h"

namespace cfa {

namespace {

bool is_blank(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

// One side of a line, kept short. A number at its front keeps its value: the sign and one of its leading
// zeros stay, and of its digits more than 64 bits can hold.
struct Field {
    size_t limit;
    std::string text;

    void add(char c) {
        if (c == '0' && (text == "0" || text == "+0" || text == "-0"))
            return;
        if (text.size() < limit)
            text += c;
        else if (!is_blank(c))
            text.back() = 'x'; // blanks at the end would be trimmed and leave a shorter name
    }
};

// Takes a line character by character and keeps a form of it that means the same to the parser.
//   ; or # first       empty line
//   [ first            [, 49 characters of the name, and ] if one comes before a comment
//   otherwise          name of 80 characters, separator, value of 42 characters, without comment
// Leading white space becomes one blank (that there is some makes a continuation
// line), a byte-order mark stays.
class ShortLine {
  public:
    explicit ShortLine(bool first_line) : bom_left_(first_line ? BOM : "") {}

    void add(char c) {
        if (*bom_left_ != '\0' && c == *bom_left_) {
            bom_ += c;
            ++bom_left_;
            return;
        }
        if (*bom_left_ != '\0') { // no mark, or not all of it: text
            for (const char part : std::exchange(bom_, ""))
                add_text(part);
            bom_left_ = "";
        }
        add_text(c);
    }

    std::string text() const {
        const std::string start = bom_ + (indented_ ? " " : "");
        if (section_)
            return start + "[" + name_.text + (closed_ ? "]" : "");
        return start + name_.text + separator_ + value_.text;
    }

  private:
    static constexpr const char *BOM = "\xEF\xBB\xBF";
    enum class Kind { start, section, name, value, done };

    void add_text(char c) {
        const bool comment = after_blank_ && c == ';';
        after_blank_ = is_blank(c);
        switch (kind_) {
        case Kind::start:
            add_first(c);
            break;
        case Kind::section:
            closed_ = c == ']';
            if (closed_ || comment)
                kind_ = Kind::done;
            else if (name_.text.size() < SECTION_LIMIT)
                name_.text += c;
            break;
        case Kind::name:
            if (comment)
                kind_ = Kind::done;
            else if (c == '=' || c == ':')
                start_value(c);
            else
                name_.add(c);
            break;
        case Kind::value:
            if (comment)
                kind_ = Kind::done;
            else if (!value_.text.empty() || !is_blank(c))
                value_.add(c);
            break;
        case Kind::done:
            break;
        }
    }

    void add_first(char c) {
        if (is_blank(c)) {
            indented_ = true;
        } else if (c == ';' || c == '#') {
            kind_ = Kind::done;
        } else if (c == '[') {
            section_ = true;
            kind_ = Kind::section;
        } else if (c == '=' || c == ':') {
            start_value(c);
        } else {
            kind_ = Kind::name;
            name_.add(c);
        }
    }

    void start_value(char c) {
        separator_ = c;
        kind_ = Kind::value;
    }

    static constexpr size_t SECTION_LIMIT = 49;

    const char *bom_left_;
    std::string bom_;
    Kind kind_ = Kind::start;
    bool after_blank_ = false;
    bool indented_ = false;
    bool section_ = false;
    bool closed_ = false;
    Field name_{80, ""};
    std::string separator_;
    Field value_{42, ""};
};

using Stream = std::unique_ptr<std::FILE, int (*)(std::FILE *)>;

struct Source {
    std::FILE *stream;
    int &line; // the number of lines read
    bool no_memory = false;
};

// One line of any length, at most size - 1 characters of it in `line`; null at the end of the file.
// REQUIRES size >= 128: a short line has at most 127 characters.
char *read_line(char *line, int size, Source &source) {
    const size_t room = static_cast<size_t>(size) - 1;
    ShortLine short_line(source.line == 0);
    size_t length = 0;
    bool ended = false; // by a NUL: the parser sees no further
    int c = std::getc(source.stream);
    if (c == EOF)
        return nullptr;
    for (; c != EOF && c != '\n'; c = std::getc(source.stream)) {
        const char character = static_cast<char>(c);
        ended = ended || character == '\0';
        if (length < room)
            line[length] = character;
        ++length;
        if (!ended)
            short_line.add(character);
    }
    ++source.line;
    if (length > room) {
        const std::string text = short_line.text();
        length = std::min(text.size(), room);
        std::memcpy(line, text.data(), length);
    }
    line[length] = '\0';
    return line;
}

// The reader for ini_parse_stream, which is C: no exception may pass through it.
char *read_line_for_parser(char *line, int size, void *user) {
    auto &source = *static_cast<Source *>(user);
    try {
        return read_line(line, size, source);
    } catch (const std::bad_alloc &) {
        source.no_memory = true;
        return nullptr;
    }
}

} // namespace

int ini_load_file(const char *path, IniHandler handler, void *user) {
    std::FILE *const stream = std::fopen(path, "r");
    if (stream == nullptr) {
        if (errno == ENOMEM) // not a missing file: the defaults would go unnoticed
            allocation_error();
        return -1;
    }
    const Stream closed(stream, std::fclose);
    return ini_load_stream(stream, handler, user);
}

std::unique_ptr<std::FILE, int (*)(std::FILE *)> open_text(const char *text, size_t length) {
    // Opened for reading alone, the text is not written to. One without any byte cannot be opened everywhere.
    char *const bytes = const_cast<char *>(length > 0 ? text : "\n");
    Stream stream(fmemopen(bytes, length > 0 ? length : 1, "r"), std::fclose);
    if (stream == nullptr)
        allocation_error();
    return stream;
}

int ini_load_stream(std::FILE *stream, IniHandler handler, void *user, int *line) {
    int ignored = 0;
    Source source{.stream = stream, .line = line != nullptr ? *line : ignored};
    source.line = 0;
    const int result = ini_parse_stream(read_line_for_parser, &source, handler, user);
    if (source.no_memory)
        allocation_error();
    return result;
}

} // namespace cfa
