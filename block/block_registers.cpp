// The registers of a block of its own: by key, from and to INI text.
#include <charconv>
#include <cstring>

#include "block/block.h"
#include "cmodel/common/ini_file.h"

namespace cfa {
namespace {

struct Found {
    const RegisterInfo *info;
    RegisterPart *part;
};

// Null where neither block has the key.
Found find(BlockRegisters &registers, const char *key) {
    if (const RegisterInfo *const info = cfa_reg_hw_table().find(key))
        return {info, &registers.cfa.hw};
    return {cmodel_top_reg_hw_table().find(key), &registers.top.hw};
}

std::string range_text(const RegisterInfo &info) {
    return std::to_string(register_min(info.bits, info.is_signed)) + " to " +
           std::to_string(register_max(info.bits, info.is_signed));
}

bool fits(const RegisterInfo &info, int64_t v) {
    return register_min(info.bits, info.is_signed) <= v && v <= register_max(info.bits, info.is_signed);
}

// What strict text is told about a line; "" if it is right.
std::string finding(const char *section, const char *key, const char *text) {
    const RegisterTable *const table = std::strcmp(section, "cfa") == 0          ? &cfa_reg_hw_table()
                                       : std::strcmp(section, "cmodel_top") == 0 ? &cmodel_top_reg_hw_table()
                                                                                 : nullptr;
    if (table == nullptr)
        return "";
    const RegisterInfo *const info = table->find(key);
    if (info == nullptr)
        return std::string("no register '") + key + "' in [" + section + "]";
    int64_t v = 0;
    const char *const end = text + std::strlen(text);
    const char *const start = *text == '+' && text[1] != '-' ? text + 1 : text;
    const auto [stop, error] = std::from_chars(start, end, v);
    if (stop != end || error == std::errc::invalid_argument)
        return std::string(key) + ": '" + text + "' is not a decimal number";
    if (error != std::errc() || !fits(*info, v))
        return std::string(key) + ": " + text + " is not " + range_text(*info);
    return "";
}

// What the parser's handler works on. The parser is C: no exception may pass through it.
struct Loading {
    Loading(const BlockRegisters &start, bool is_strict) : registers(start), strict(is_strict) {}

    BlockRegisters registers;
    bool strict;
    int line = 0;
    int first_line = 0; // of the first finding
    std::string first;
    bool no_memory = false;

    int take(const char *section, const char *key, const char *text) {
        try {
            if (strict && first.empty()) {
                first = finding(section, key, text);
                first_line = line;
            }
            registers.load_line(section, key, text);
        } catch (const std::bad_alloc &) {
            no_memory = true;
        }
        return 1;
    }
};

int handle_line(void *user, const char *section, const char *key, const char *text) {
    return static_cast<Loading *>(user)->take(section, key, text);
}

} // namespace

BlockRegisters::BlockRegisters() {
    register_reset(cfa.hw, cfa_reg_hw_table(), nullptr);
    register_reset(cfa.sw, cfa_reg_sw_table(), nullptr);
    register_reset(top.hw, cmodel_top_reg_hw_table(), nullptr);
    register_reset(top.sw, cmodel_top_reg_sw_table(), nullptr);
}

int32_t BlockRegisters::get(const char *key) const {
    const Found found = find(const_cast<BlockRegisters &>(*this), key);
    if (found.info == nullptr)
        throw CallError(CFA_ERROR_REGISTER, std::string("no register '") + key + "'");
    return found.info->read(*found.part);
}

void BlockRegisters::set(const char *key, int64_t v) {
    const Found found = find(*this, key);
    if (found.info == nullptr)
        throw CallError(CFA_ERROR_REGISTER, std::string("no register '") + key + "'");
    if (!fits(*found.info, v))
        throw CallError(CFA_ERROR_RANGE,
                        std::string(key) + ": " + std::to_string(v) + " is not " + range_text(*found.info));
    found.info->store(*found.part, static_cast<int32_t>(v));
}

void BlockRegisters::load_line(const char *section, const char *key, const char *text) {
    register_load(cfa.hw, cfa_reg_hw_table(), section, key, text);
    register_load(top.hw, cmodel_top_reg_hw_table(), section, key, text);
}

std::string BlockRegisters::ini_text() const {
    std::string text;
    const auto add = [&text](const RegisterPart &part, const RegisterTable &table) {
        text += std::string("[") + part.name + "]\n";
        for (const RegisterInfo &info : table.registers)
            text += std::string(info.key) + " = " + std::to_string(info.read(part)) + "\n";
    };
    add(cfa.hw, cfa_reg_hw_table());
    add(top.hw, cmodel_top_reg_hw_table());
    return text;
}

void load_ini(BlockRegisters &registers, std::FILE *stream, const std::string &name, bool strict) {
    Loading loading(registers, strict);
    const int bad_line = ini_load_stream(stream, handle_line, &loading, &loading.line);
    if (loading.no_memory)
        throw std::bad_alloc();
    if (std::ferror(stream) != 0)
        throw CallError(CFA_ERROR_FILE, name + ": cannot be read");
    const bool has_finding = !loading.first.empty();
    if (strict && bad_line > 0 && (!has_finding || bad_line < loading.first_line))
        throw CallError(CFA_ERROR_INI,
                        name + ":" + std::to_string(bad_line) + ": neither a section nor a setting");
    if (has_finding)
        throw CallError(CFA_ERROR_INI,
                        name + ":" + std::to_string(loading.first_line) + ": " + loading.first);
    registers = loading.registers;
}

} // namespace cfa
