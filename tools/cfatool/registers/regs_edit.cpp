// regs set and regs dump.
#include "tools/cfatool/registers/regs_edit.h"

#include <algorithm>
#include <fmt/core.h>

#include "log/log.h"
#include "tools/cfatool/base/files.h"
#include "tools/cfatool/base/scratch_folder.h"
#include "tools/cfatool/base/text.h"
#include "tools/cfatool/registers/ini_text.h"

namespace cfatool {
namespace {

struct Assignment {
    std::string section;
    std::string key;
    std::string value; // as it is written
};

Assignment parse_assignment(const std::string &text) {
    Registers registers;
    const auto [to, value] = parse_setting(registers, text);
    return {to.where.table->name, to.info->key, std::to_string(value)};
}

bool sets(const IniLine &line, const Assignment &a) {
    return (line.kind == IniLine::Kind::setting || line.kind == IniLine::Kind::continuation) &&
           line.section == a.section && line.name == a.key;
}

/// Inserts lines behind line `at` (or in front of the first), with the line end that the file uses there.
void insert(std::vector<IniLine> &lines, size_t at, const std::vector<std::string> &texts) {
    const std::string end = at > 0 && !lines[at - 1].end.empty()      ? lines[at - 1].end
                            : !lines.empty() && !lines[0].end.empty() ? lines[0].end
                                                                      : "\n";
    if (at > 0 && lines[at - 1].end.empty())
        lines[at - 1].end = end; // the last line of a file that ends without a line feed
    for (size_t i = 0; i < texts.size(); ++i) {
        IniLine line;
        line.text = texts[i];
        line.end = end;
        lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(at + i), line);
    }
}

/// Whether a line from `at` on would continue a setting inserted there: an indented one before the next
/// setting or section.
bool would_be_continued(const std::vector<IniLine> &lines, size_t at) {
    using Kind = IniLine::Kind;
    for (size_t i = at; i < lines.size(); ++i) {
        if (lines[i].kind == Kind::nothing)
            continue;
        if (is_blank(lines[i].text[0]))
            return true;
        if (lines[i].kind != Kind::unread)
            return false;
    }
    return false;
}

} // namespace

std::string set_register(const std::string &bytes, const std::string &assignment) {
    const Assignment a = parse_assignment(assignment);
    std::vector<IniLine> lines = read_ini_text(bytes);
    IniLine *in_force = nullptr;
    size_t end_of_section = 0; // behind the last line of the section that is read
    for (size_t i = 0; i < lines.size(); ++i) {
        if (sets(lines[i], a))
            in_force = &lines[i];
        if (lines[i].section == a.section && lines[i].kind != IniLine::Kind::nothing)
            end_of_section = i + 1;
    }
    if (in_force != nullptr) {
        const bool continues =
            in_force->kind == IniLine::Kind::continuation; // up to a blank: a comment may follow
        const bool touches = in_force->value.empty();      // the separator
        const size_t size = continues ? in_force->value.find_first_of(BLANKS) : std::string::npos;
        in_force->text.replace(in_force->value_at, std::min(size, in_force->value.size()),
                               (touches ? " " : "") + a.value);
    } else if (end_of_section > 0 && !would_be_continued(lines, end_of_section)) {
        insert(lines, end_of_section, {a.key + " = " + a.value});
    } else {
        const std::string line = a.key + " = " + a.value;
        const bool separate = !lines.empty() && !lines.back().text.empty();
        insert(lines, lines.size(),
               separate ? std::vector<std::string>{"", "[" + a.section + "]", line}
                        : std::vector<std::string>{"[" + a.section + "]", line});
    }
    return join_ini_text(lines);
}

namespace {

/// The dump does not check its writes: what it made must load to the values that were to be written.
void verify(Registers &wanted, const std::vector<std::string> &blocks, const std::string &made,
            const std::string &path) {
    Registers loaded;
    loaded.load(made);
    const std::array<BlockPart, 4> want = wanted.parts(), got = loaded.parts();
    for (size_t i = 0; i < want.size(); ++i)
        for (const RegisterInfo &info : want[i].table->registers)
            if (std::find(blocks.begin(), blocks.end(), want[i].table->name) != blocks.end() &&
                info.read(*want[i].part) != info.read(*got[i].part))
                throw file_trouble(path, fmt::format("the dump does not hold the value of {}", info.key));
}

} // namespace

void dump_registers(Registers &registers, const std::vector<std::string> &blocks, const std::string &path) {
    log_set_quiet(1);
    cfa_reg = registers.block;
    cmodel_top_reg = registers.top;
    const ScratchFolder scratch;
    const std::string copy = scratch.path + "/registers.ini";
    if (readable(path))
        write_whole_file(copy, read_whole_file(path));
    for (const std::string &block : blocks)
        block == cfa::cfa_reg_hw_table().name ? DUMP_CFA_INI(copy.c_str())
                                              : DUMP_CMODEL_TOP_INI(copy.c_str());
    verify(registers, blocks, copy, path);
    write_whole_file(path, read_whole_file(copy));
}

} // namespace cfatool
