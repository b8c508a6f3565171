// A parser of INI texts without any limit on a line, against which the INI reader is held.
#pragma once

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <string>
#include <vector>

/// What a name/value line says.
struct Setting {
    std::string section;
    std::string key; // "-" for a key that cannot be a register's
    long long number;
    bool operator==(const Setting &) const = default;
};

struct Parsed {
    int result;
    std::vector<Setting> settings;
};

/// The handler of both parsers.
inline int keep_setting(void *user, const char *section, const char *key, const char *value) {
    const std::string name = key;
    const bool possible = name.empty() || (name.size() <= 30 && (std::isalpha(name[0]) || name[0] == '['));
    static_cast<Parsed *>(user)->settings.push_back(
        {section, possible ? name : "-", std::strtoll(value, nullptr, 10)});
    return 1;
}

inline bool blank(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

inline std::string trimmed(std::string s) {
    while (!s.empty() && blank(s.back()))
        s.pop_back();
    size_t start = 0;
    while (start < s.size() && blank(s[start]))
        start++;
    return s.substr(start);
}

// The first of these characters, or the ; of a comment behind a blank, or the end.
inline size_t find_stop(const std::string &s, size_t from, const std::string &characters) {
    for (size_t i = from; i < s.size(); i++)
        if (characters.find(s[i]) != std::string::npos || (s[i] == ';' && i > from && blank(s[i - 1])))
            return i;
    return s.size();
}

// The rules of the file format without any limit on a line.
class UnlimitedParser {
  public:
    Parsed parse(const std::string &text) {
        int number = 0;
        for (size_t at = 0; at < text.size();) {
            const size_t end = std::min(text.find('\n', at), text.size());
            std::string line = text.substr(at, end - at);
            if (number++ == 0 && line.starts_with("\xEF\xBB\xBF"))
                line = " " + line.substr(3); // there is no previous name yet that this blank could continue
            if (!take(line.c_str()) && parsed_.result == 0)
                parsed_.result = number;
            at = end + 1;
        }
        return parsed_;
    }

  private:
    bool take(const std::string &line) { // up to a NUL
        const std::string text = trimmed(line);
        if (text.empty() || text[0] == ';' || text[0] == '#')
            return true;
        if (!name_.empty() && blank(line[0]))
            return set(name_, trimmed(text.substr(0, find_stop(text, 0, ""))));
        if (text[0] == '[') {
            const size_t end = find_stop(text, 1, "]");
            if (end == text.size() || text[end] != ']')
                return false;
            section_ = text.substr(1, end - 1).substr(0, 49);
            name_ = "";
            return true;
        }
        const size_t end = find_stop(text, 0, "=:");
        if (end == text.size() || text[end] == ';')
            return false;
        const std::string key = trimmed(text.substr(0, end));
        name_ = key.substr(0, 49);
        return set(key, trimmed(text.substr(end + 1, find_stop(text, end + 1, "") - end - 1)));
    }

    bool set(const std::string &key, const std::string &value) {
        return keep_setting(&parsed_, section_.c_str(), key.c_str(), value.c_str()) != 0;
    }

    Parsed parsed_{};
    std::string section_;
    std::string name_;
};
