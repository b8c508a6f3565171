// Line by line: encoding, sections, keys, numbers.
#include "tools/cfatool/registers/regs_check.h"

#include <algorithm>
#include <cstdlib>
#include <fmt/core.h>
#include <set>

#include "tools/cfatool/base/suggestion.h"
#include "tools/cfatool/base/text.h"
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
    std::string shown = text.substr(0, SHOWN);
    const auto is_control = [](char c) { return static_cast<unsigned char>(c) < ' '; };
    std::replace_if(shown.begin(), shown.end(), is_control, '?');
    return fmt::format("'{}{}'", shown, text.size() > SHOWN ? "..." : "");
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
    void add(int line, const std::string &message) {
        Finding &added = result_.findings.emplace_back();
        added.line = line;
        added.message = message;
    }
    void add(const std::string &message) { add(number_, message); }

    void check_form(const IniLine &line) {
        if (number_ == 1 && line.text.compare(0, 3, "\xEF\xBB\xBF") == 0)
            add("byte-order mark: skipped here, part of the first line for other readers");
        if (line.text.find('\0') != std::string::npos)
            add("NUL byte: the rest of the line is not read");
        if (line.text.size() > LONGEST_LINE)
            add(fmt::format("line of {} characters: readers that cut at {} read its tail as a setting",
                            line.text.size(), LONGEST_LINE));
    }

    void check_content(const IniLine &line) {
        switch (line.kind) {
        case IniLine::Kind::nothing:
            return;
        case IniLine::Kind::unread:
            add(line.text.find('[') != std::string::npos ? "section header without ]: passed over"
                                                         : "no = and no : in this line: passed over");
            return;
        case IniLine::Kind::section: {
            const size_t behind = line.text.find_first_not_of(" \t\r\v\f", line.text.find(']') + 1);
            if (behind != std::string::npos && line.text[behind] != ';' && line.text[behind] != '#')
                add("text behind ]: passed over");
            check_section(line.section);
            return;
        }
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
                sections_.insert(section);
            } else if (bare(section) == p.table->name) {
                similar_section_ = true;
                add(fmt::format("section [{}] is not read; the block's section is [{}]", section,
                                p.table->name));
            }
        }
    }

    const RegisterTable *table_of(const std::string &section) {
        for (const BlockPart &p : registers_.parts())
            if (section == p.table->name)
                return p.table;
        return nullptr;
    }

    /// The register that a setting of this key in this section sets, or null.
    const RegisterInfo *register_of(const IniLine &line) {
        const RegisterTable *table = table_of(line.section);
        return table != nullptr ? table->find(line.name.c_str()) : nullptr;
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
            const std::string place = line.section.empty() ? "no section" : "section [" + line.section + "]";
            add(fmt::format("{} is not read in {}; it belongs in [{}]", elsewhere.info->key, place,
                            elsewhere.where.table->name));
        } else if (table_of(line.section) != nullptr) {
            const bool case_only = elsewhere.info != nullptr;
            add(fmt::format("unknown key {}{}", quoted(line.name),
                            case_only ? fmt::format("; names are lower case: '{}'", elsewhere.info->key)
                                      : suggestion(line.name, register_keys(registers_))));
        }
    }

    void check_value(const RegisterInfo &info, const IniLine &line) {
        const auto first = last_line_.find(&info);
        if (first != last_line_.end() && line.kind == IniLine::Kind::setting)
            add(fmt::format("{} is set again: line {} has no effect", info.key, first->second));
        last_line_[&info] = number_;
        registers_.apply(line.section, line.name, line.value);

        char *end = nullptr;
        const long long number = std::strtoll(line.value.c_str(), &end, 10);
        const int32_t stored =
            cfa::register_truncate(static_cast<int32_t>(number), info.bits, info.is_signed);
        const bool fits = number >= cfa::register_min(info.bits, info.is_signed) &&
                          number <= cfa::register_max(info.bits, info.is_signed);
        if (line.value.empty() || *end != '\0' || end == line.value.c_str())
            add(fmt::format("{}: {} is not a decimal number: {} is stored", info.key, quoted(line.value),
                            stored));
        else if (!fits)
            add(fmt::format("{}: {} does not fit {}: {} is stored", info.key, line.value.substr(0, 40),
                            width_text(info), stored));
    }

    /// An indented line: one more value of the key above, whatever it was meant to be.
    void check_continuation(const IniLine &line) {
        const size_t start = line.text.find_first_not_of(BLANKS);
        const std::vector<IniLine> alone =
            read_ini_text("[" + line.section + "]\n" + line.text.substr(start));
        const IniLine &meant = alone.back();
        const std::string above = fmt::format("indented, so it continues line {}", setting_line_);
        if (const RegisterInfo *info = register_of(line)) {
            add(fmt::format("{} and sets {} again, to {}", above, info->key, quoted(line.value)));
            check_value(*info, line);
        } else if (meant.kind == IniLine::Kind::section ||
                   find_register(registers_, meant.name).info != nullptr) {
            add(above + " (" + quoted(line.name) + ") and is not read");
        }
    }

    void count_unset() {
        for (const BlockPart &p : registers_.parts()) {
            if (!sections_.contains(p.table->name) || p.table->registers.empty())
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
    std::map<const RegisterInfo *, int> last_line_;
    std::set<std::string> sections_; // of ours, in the file
    bool similar_section_ = false;   // the section in force is one of ours misspelt
    int number_ = 0;
    int setting_line_ = 0; // line of the last key
};

} // namespace

bool is_utf16(const std::string &bytes) {
    const std::string head = bytes.substr(0, 4);
    if (head.substr(0, 2) == "\xFF\xFE" || head.substr(0, 2) == "\xFE\xFF")
        return true;
    return head.size() == 4 && ((head[0] == 0 && head[2] == 0) || (head[1] == 0 && head[3] == 0));
}

CheckResult check_registers(const std::string &bytes) {
    return Check().run(bytes);
}

} // namespace cfatool
