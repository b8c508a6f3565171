// Line by line: encoding, sections, keys, numbers.
#include "tools/cfatool/registers/regs_check.h"

#include <algorithm>
#include <cstdlib>

#include "tools/cfatool/base/suggestion.h"
#include "tools/cfatool/registers/ini_text.h"

namespace cfatool {
namespace {

constexpr size_t LONGEST_LINE = 199;

std::string lower(std::string text) {
    for (char &c : text)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return text;
}

/// Lower case, without blanks and brackets: what a section name was meant to be.
std::string bare(const std::string &section) {
    std::string name = lower(section);
    std::erase_if(name, [](char c) { return c == ' ' || c == '\t' || c == '[' || c == ']'; });
    return name;
}

std::string quoted(const std::string &text) {
    constexpr size_t SHOWN = 60;
    std::string shown;
    for (const char c : text.substr(0, SHOWN))
        shown += static_cast<unsigned char>(c) < ' ' ? '?' : c;
    return "'" + shown + (text.size() > SHOWN ? "..." : "") + "'";
}

/// UTF-16 shows by its mark or by every second byte being 0.
bool is_utf16(const std::string &bytes) {
    const std::string head = bytes.substr(0, 4);
    if (head.substr(0, 2) == "\xFF\xFE" || head.substr(0, 2) == "\xFE\xFF")
        return true;
    return head.size() == 4 && ((head[0] == 0 && head[2] == 0) || (head[1] == 0 && head[3] == 0));
}

class Check {
  public:
    CheckResult run(const std::string &bytes) {
        if (is_utf16(bytes)) {
            add(1, "UTF-16 text: none of it is read; save the file as plain text");
            return std::move(result_);
        }
        for (const IniLine &line : read_ini_text(bytes)) {
            ++number_;
            check_form(line);
            check_content(line);
        }
        check_consistency(registers_, last_line_, result_.findings);
        std::stable_sort(result_.findings.begin(), result_.findings.end(),
                         [](const Finding &a, const Finding &b) { return a.line < b.line; });
        count_unset();
        return std::move(result_);
    }

  private:
    void add(int line, const std::string &message) { result_.findings.push_back({line, message}); }
    void add(const std::string &message) { add(number_, message); }

    void check_form(const IniLine &line) {
        if (number_ == 1 && line.text.compare(0, 3, "\xEF\xBB\xBF") == 0)
            add("byte-order mark: skipped here, part of the first line for other readers");
        if (line.text.find('\0') != std::string::npos)
            add("NUL byte: the rest of the line is not read");
        if (line.text.size() > LONGEST_LINE)
            add("line of " + std::to_string(line.text.size()) + " characters: readers that cut at " +
                std::to_string(LONGEST_LINE) + " read its tail as a setting");
    }

    void check_content(const IniLine &line) {
        switch (line.kind) {
        case IniLine::Kind::nothing:
            return;
        case IniLine::Kind::unread:
            add(line.text.find('[') != std::string::npos ? "section header without ]: passed over"
                                                         : "no = and no : in this line: passed over");
            return;
        case IniLine::Kind::section:
            check_section(line.section);
            return;
        case IniLine::Kind::setting:
            setting_line_ = number_;
            check_setting(line);
            return;
        case IniLine::Kind::continuation:
            check_continuation(line);
            return;
        }
    }

    void check_section(const std::string &section) {
        similar_section_ = false;
        for (const BlockPart &p : registers_.parts()) {
            if (section == p.table->name) {
                std::vector<std::string> &seen = sections_;
                if (std::find(seen.begin(), seen.end(), section) == seen.end())
                    seen.push_back(section);
            } else if (bare(section) == p.table->name) {
                similar_section_ = true;
                add("section [" + section + "] is not read; the block's section is [" + p.table->name + "]");
            }
        }
    }

    const BlockPart *part_of(const std::string &section) {
        parts_ = registers_.parts();
        const auto part = std::find_if(parts_.begin(), parts_.end(),
                                       [&](const BlockPart &p) { return section == p.table->name; });
        return part == parts_.end() ? nullptr : &*part;
    }

    /// The register that a setting of this key in this section sets, or null.
    const RegisterInfo *register_of(const IniLine &line) {
        const BlockPart *part = part_of(line.section);
        return part != nullptr ? part->table->find(line.name.c_str()) : nullptr;
    }

    void check_setting(const IniLine &line) {
        const RegisterInfo *info = register_of(line);
        if (info != nullptr) {
            check_value(*info, line);
            return;
        }
        const FoundRegister elsewhere = find_register(registers_, lower(line.name));
        if (similar_section_)
            return; // its header has been reported
        if (elsewhere.info != nullptr && elsewhere.where.table->name != line.section) {
            add(std::string(elsewhere.info->key) + " is not read in " +
                (line.section.empty() ? "no section" : "section [" + line.section + "]") +
                "; it belongs in [" + elsewhere.where.table->name + "]");
        } else if (part_of(line.section) != nullptr) {
            const bool case_only = elsewhere.info != nullptr;
            add("unknown key " + quoted(line.name) +
                (case_only ? std::string("; names are lower case: '") + elsewhere.info->key + "'"
                           : suggestion(line.name, register_keys(registers_))));
        }
    }

    void check_value(const RegisterInfo &info, const IniLine &line) {
        const auto first = last_line_.find(&info);
        if (first != last_line_.end() && line.kind == IniLine::Kind::setting)
            add(std::string(info.key) + " is set again: line " + std::to_string(first->second) +
                " has no effect");
        last_line_[&info] = number_;
        registers_.apply(line.section, line.name, line.value);

        char *end = nullptr;
        const long long number = std::strtoll(line.value.c_str(), &end, 10);
        const std::string stored =
            std::to_string(cfa::register_truncate(static_cast<int32_t>(number), info.bits, info.is_signed));
        const bool fits = number >= cfa::register_min(info.bits, info.is_signed) &&
                          number <= cfa::register_max(info.bits, info.is_signed);
        if (line.value.empty() || *end != '\0' || end == line.value.c_str())
            add(std::string(info.key) + ": " + quoted(line.value) + " is not a decimal number: " + stored +
                " is stored");
        else if (!fits)
            add(std::string(info.key) + ": " + line.value.substr(0, 40) + " does not fit " +
                width_text(info) + ": " + stored + " is stored");
    }

    /// An indented line: one more value of the key above, whatever it was meant to be.
    void check_continuation(const IniLine &line) {
        const size_t start = line.text.find_first_not_of(" \t\v\f\r");
        const std::vector<IniLine> alone =
            read_ini_text("[" + line.section + "]\n" + line.text.substr(start));
        const IniLine &meant = alone.back();
        const std::string above = "indented, so it continues line " + std::to_string(setting_line_);
        if (const RegisterInfo *info = register_of(line)) {
            add(above + " and sets " + info->key + " again, to " + quoted(line.value));
            check_value(*info, line);
        } else if (meant.kind == IniLine::Kind::section ||
                   find_register(registers_, meant.name).info != nullptr) {
            add(above + " (" + quoted(line.name) + ") and is not read");
        }
    }

    void count_unset() {
        for (const BlockPart &p : registers_.parts()) {
            if (std::find(sections_.begin(), sections_.end(), p.table->name) == sections_.end() ||
                p.table->registers.empty())
                continue;
            UnsetRegisters unset{p.table->name, p.table->registers.size(), {}};
            for (const RegisterInfo &info : p.table->registers)
                if (info.record(*p.part).is_set == 0)
                    unset.keys.emplace_back(info.key);
            result_.unset.push_back(std::move(unset));
        }
    }

    CheckResult result_;
    Registers registers_;
    std::vector<BlockPart> parts_;
    std::map<const RegisterInfo *, int> last_line_;
    std::vector<std::string> sections_; // of ours, in the file
    bool similar_section_ = false;      // the section in force is one of ours misspelt
    int number_ = 0;
    int setting_line_ = 0; // line of the last key
};

} // namespace

CheckResult check_registers(const std::string &bytes) {
    return Check().run(bytes);
}

} // namespace cfatool
