#include "cmodel/common/register_block.h"

#include <cstdlib>
#include <cstring>

#include "log/log.h"

uint32_t tok_idx;

namespace cfa {
namespace {

// Line numbers of the records about a part: those of a list file whose first register stands on line 10.
constexpr int HEADER_LINE = 8;
constexpr int FIRST_REGISTER_LINE = 10;

// The record to be written: the part is not const.
RegisterRecord &record_of(const RegisterInfo &info, RegisterPart &part) {
    return const_cast<RegisterRecord &>(info.record(part));
}

} // namespace

const RegisterInfo *RegisterTable::find(const char *key) const {
    for (const RegisterInfo &info : registers)
        if (std::strcmp(info.key, key) == 0)
            return &info;
    return nullptr;
}

void register_reset(RegisterPart &part, const RegisterTable &table, const char *suffix) {
    for (const RegisterInfo &info : table.registers) {
        record_of(info, part) = {.name = info.key, .spare = 0, .is_set = 0};
        info.store(part, info.reset);
    }
    const bool has_suffix = suffix != nullptr && std::strcmp(suffix, "NULL") != 0;
    std::snprintf(part.name, sizeof part.name, "%s%s", table.name, has_suffix ? suffix : "");
}

int register_load(RegisterPart &part, const RegisterTable &table, const char *section, const char *key,
                  const char *value) {
    if (std::strcmp(section, part.name) != 0)
        return 1;
    if (const RegisterInfo *const info = table.find(key)) {
        // Decimal: 0x10 is 0, 12abc is 12. Beyond 64 bits the nearest 64-bit number is taken.
        const long long number = std::strtoll(value, nullptr, 10);
        info->store(part, static_cast<int32_t>(number));
        record_of(*info, part).is_set = 1;
    }
    return 1;
}

void register_log_unset(const RegisterPart &part, const RegisterTable &table) {
    int line = FIRST_REGISTER_LINE;
    for (const RegisterInfo &info : table.registers) {
        const RegisterRecord &record = info.record(part);
        if (record.is_set != 1)
            log_log(LOG_ERROR, table.label, line, "[REG] %s.%s.%s is not set in .ini file", part.name,
                    table.part, record.name);
        ++line;
    }
}

void register_print(const RegisterPart &part, const RegisterTable &table) {
    log_log(LOG_DEBUG, table.label, HEADER_LINE, "[%s]", part.name);
    int line = FIRST_REGISTER_LINE;
    for (const RegisterInfo &info : table.registers) {
        log_log(LOG_DEBUG, table.label, line, "%s.%s.%s = %ld", part.name, table.part, info.record(part).name,
                static_cast<long>(info.read(part)));
        ++line;
    }
}

void register_write_section(std::FILE *stream, const RegisterPart &part, const RegisterTable &table) {
    std::fprintf(stream, "[%s]\n", part.name);
    for (const RegisterInfo &info : table.registers)
        std::fprintf(stream, "%s = %ld\n", info.record(part).name, static_cast<long>(info.read(part)));
}

int RegisterBlock::init(const char *suffix) const {
    log_log(LOG_DEBUG, label, __LINE__, "[INIT] Init %s Reg configurations...", hw_table.name);
    register_reset(hw, hw_table, suffix);
    register_reset(sw, sw_table, suffix);
    log_log(LOG_DEBUG, label, __LINE__, "[INIT] Init %s Reg Done....", hw_table.name);
    return 0;
}

int RegisterBlock::load(const char *path, IniHandler load_line, void *block) const {
    log_log(LOG_DEBUG, label, __LINE__, "[LOAD] Load %s INI configurations...", hw_table.name);
    if (ini_load_file(path, load_line, block) < 0) {
        log_log(LOG_DEBUG, label, __LINE__, "Can't handle %s_reg.", hw_table.name);
        return 1;
    }
    log_log(LOG_DEBUG, label, __LINE__, "[LOAD] Load %s Done...", hw_table.name);
    register_log_unset(hw, hw_table);
    return 0;
}

int RegisterBlock::print() const {
    log_log(LOG_DEBUG, label, __LINE__, "[PRINT] Print %s Reg configurations ...", hw_table.name);
    register_print(hw, hw_table);
    register_print(sw, sw_table);
    log_log(LOG_DEBUG, label, __LINE__, "[PRINT] Print %s Reg Done....", hw_table.name);
    return 0;
}

int RegisterBlock::dump(const char *path, const char *hw_function, const char *sw_function) const {
    log_log(LOG_DEBUG, label, __LINE__, "[DUMP] Dump %s INI configurations in %s...", hw_table.name, path);
    register_dump_part(path, hw, hw_table, label, hw_function);
    register_dump_part(path, sw, sw_table, label, sw_function);
    log_log(LOG_DEBUG, label, __LINE__, "[DUMP] Dump %s INI Done....", hw_table.name);
    return 0;
}

} // namespace cfa
