#include "cmodel/common/register_block.h"

#include <cstdlib>
#include <cstring>

#include "log/log.h"

uint32_t tok_idx;

namespace {

// Line numbers of the records about a part: those of a list file whose first register stands on line 10.
constexpr int HEADER_LINE = 8;
constexpr int FIRST_REGISTER_LINE = 10;

} // namespace

const RegisterInfo *RegisterTable::find(const char *key) const {
    for (const RegisterInfo &info : registers)
        if (std::strcmp(info.key, key) == 0)
            return &info;
    return nullptr;
}

void register_reset(RegisterPart &part, const RegisterTable &table, const char *suffix) {
    for (const RegisterInfo &info : table.registers) {
        info.record(part) = {.name = info.key, .spare = 0, .is_set = 0};
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
        info->record(part).is_set = 1;
    }
    return 1;
}

void register_log_unset(const RegisterPart &part, const RegisterTable &table) {
    int line = FIRST_REGISTER_LINE;
    for (const RegisterInfo &info : table.registers) {
        const RegisterRecord &record = info.const_record(part);
        if (record.is_set != 1)
            log_log(LOG_ERROR, table.label, line, "[REG] %s.%s.%s is not set in .ini file", part.name,
                    table.part, record.name);
        line++;
    }
}

void register_print(const RegisterPart &part, const RegisterTable &table) {
    log_log(LOG_DEBUG, table.label, HEADER_LINE, "[%s]", part.name);
    int line = FIRST_REGISTER_LINE;
    for (const RegisterInfo &info : table.registers) {
        log_log(LOG_DEBUG, table.label, line, "%s.%s.%s = %ld", part.name, table.part,
                info.const_record(part).name, static_cast<long>(info.read(part)));
        line++;
    }
}

void register_write_section(std::FILE *stream, const RegisterPart &part, const RegisterTable &table) {
    std::fprintf(stream, "[%s]\n", part.name);
    for (const RegisterInfo &info : table.registers)
        std::fprintf(stream, "%s = %ld\n", info.const_record(part).name, static_cast<long>(info.read(part)));
}
