// Register values for the subcommands.
#include "tools/cfatool/registers/registers.h"

#include <fmt/core.h>

#include "cmodel/common/ini_file.h"
#include "tools/cfatool/base/files.h"
#include "tools/cfatool/base/numbers.h"
#include "tools/cfatool/base/suggestion.h"
#include "tools/cfatool/base/trouble.h"

namespace cfatool {
namespace {

int load_line(void *user, const char *section, const char *key, const char *value) {
    static_cast<Registers *>(user)->apply(section, key, value);
    return 1;
}

} // namespace

Registers::Registers() {
    for (const BlockPart &p : parts())
        register_reset(*p.part, *p.table, nullptr);
}

std::array<BlockPart, 4> Registers::parts() {
    return {{{&cfa::cfa_reg_hw_table(), &block.hw},
             {&cfa::cfa_reg_sw_table(), &block.sw},
             {&cfa::cmodel_top_reg_hw_table(), &top.hw},
             {&cfa::cmodel_top_reg_sw_table(), &top.sw}}};
}

std::array<ConstBlockPart, 4> Registers::parts() const {
    return {{{&cfa::cfa_reg_hw_table(), &block.hw},
             {&cfa::cfa_reg_sw_table(), &block.sw},
             {&cfa::cmodel_top_reg_hw_table(), &top.hw},
             {&cfa::cmodel_top_reg_sw_table(), &top.sw}}};
}

void Registers::apply(const std::string &section, const std::string &key, const std::string &value) {
    for (const BlockPart &p : parts())
        register_load(*p.part, *p.table, section.c_str(), key.c_str(), value.c_str());
}

void Registers::load(const std::string &path) {
    if (is_folder(path))
        throw file_trouble(path, "is a folder");
    if (cfa::ini_load_file(path.c_str(), load_line, this) == -1)
        throw errno_trouble(path);
}

Registers::Loaded Registers::load_run(const std::string &folder) {
    const std::string cfa_ini = folder + "/cfa.ini", top_ini = folder + "/cmodel_top.ini";
    const Loaded loaded = {readable(cfa_ini), readable(top_ini)};
    Registers from_file; // a section of the other block in it does not count
    if (loaded.block) {
        from_file.load(cfa_ini);
        block = from_file.block;
    }
    if (loaded.top) {
        from_file.top = top;
        from_file.load(top_ini);
        top = from_file.top;
    }
    return loaded;
}

FoundRegister find_register(Registers &registers, const std::string &key) {
    for (const BlockPart &p : registers.parts())
        if (const RegisterInfo *info = p.table->find(key.c_str()))
            return {p, info};
    return {{nullptr, nullptr}, nullptr};
}

RegisterSetting parse_setting(Registers &registers, const std::string &text) {
    const size_t equals = text.find('=');
    if (equals == std::string::npos)
        throw CommandTrouble(fmt::format("'{}' is not of the form key=value", text));
    const std::string key = text.substr(0, equals), value = text.substr(equals + 1);
    const FoundRegister found = find_register(registers, key);
    if (found.info == nullptr)
        throw CommandTrouble(
            fmt::format("unknown key '{}'{}", key, suggestion(key, register_keys(registers))));
    const RegisterInfo &info = *found.info;
    const bool negative = value.starts_with('-');
    const int64_t number = parse_decimal(value.substr(negative), key, 0, INT64_MAX) * (negative ? -1 : 1);
    if (number < cfa::register_min(info.bits, info.is_signed) ||
        number > cfa::register_max(info.bits, info.is_signed))
        throw CommandTrouble(fmt::format("{}: {} does not fit {}", key, value, width_text(info)));
    return {found, static_cast<int32_t>(number)};
}

std::vector<std::string> register_keys(Registers &registers) {
    std::vector<std::string> keys;
    for (const BlockPart &p : registers.parts())
        for (const RegisterInfo &info : p.table->registers)
            keys.emplace_back(info.key);
    return keys;
}

std::string width_text(const RegisterInfo &info) {
    return fmt::format("{} {}{}, {}..{}", info.bits, info.bits == 1 ? "bit" : "bits",
                       info.is_signed ? " signed" : "", cfa::register_min(info.bits, info.is_signed),
                       cfa::register_max(info.bits, info.is_signed));
}

} // namespace cfatool
