#include "cmodel/cfa/src/reg_parse/cfa_reg.h"

#include <array>

#include "cmodel/common/ini_file.h"
#include "log/log.h"

CfaReg cfa_reg;

namespace {

const char *const label = "cfa_reg";

constexpr auto hw_registers = std::to_array<RegisterInfo>({
#define REG(key, bits, signedness, reset, ...) register_info<&CfaRegHw::key>(#key, reset, __VA_ARGS__),
#include "cmodel/cfa/src/reg_parse/cfa_reg_hw_def.inc"
#undef REG
});

static_assert(sizeof(CfaRegSw) == sizeof(RegisterPart),
              "a software register needs a table like the one above");

const RegisterTable hw_table = {"cfa", "hw", "cfa_reg_hw_def", hw_registers};
const RegisterTable sw_table = {"cfa_sw", "sw", "cfa_reg_sw_def", {}};

} // namespace

const RegisterTable &cfa_reg_hw_table() {
    return hw_table;
}
const RegisterTable &cfa_reg_sw_table() {
    return sw_table;
}

int cfa_reg_hw_init(CfaRegHw *part, const char *suffix) {
    register_reset(*part, hw_table, suffix);
    return 0;
}

int cfa_reg_sw_init(CfaRegSw *part, const char *suffix) {
    register_reset(*part, sw_table, suffix);
    return 0;
}

int INIT_CFA_REG(const char *suffix) {
    log_log(LOG_DEBUG, label, __LINE__, "[INIT] Init cfa Reg configurations...");
    cfa_reg_hw_init(&cfa_reg.hw, suffix);
    cfa_reg_sw_init(&cfa_reg.sw, suffix);
    log_log(LOG_DEBUG, label, __LINE__, "[INIT] Init cfa Reg Done....");
    return 0;
}

int cfa_reg_hw_load(void *block, const char *section, const char *key, const char *value) {
    return register_load(static_cast<CfaReg *>(block)->hw, hw_table, section, key, value);
}

int cfa_reg_sw_load(void *block, const char *section, const char *key, const char *value) {
    return register_load(static_cast<CfaReg *>(block)->sw, sw_table, section, key, value);
}

int cfa_reg_loader(void *block, const char *section, const char *key, const char *value) {
    tok_idx = 0;
    return cfa_reg_hw_load(block, section, key, value) | cfa_reg_sw_load(block, section, key, value);
}

int LOAD_CFA_INI(const char *path) {
    log_log(LOG_DEBUG, label, __LINE__, "[LOAD] Load cfa INI configurations...");
    if (ini_load_file(path, cfa_reg_loader, &cfa_reg) < 0) {
        log_log(LOG_DEBUG, label, __LINE__, "Can't handle cfa_reg.");
        return 1;
    }
    log_log(LOG_DEBUG, label, __LINE__, "[LOAD] Load cfa Done...");
    register_log_unset(cfa_reg.hw, hw_table);
    return 0;
}

int cfa_reg_hw_print(const CfaRegHw *part) {
    register_print(*part, hw_table);
    return 0;
}

int cfa_reg_sw_print(const CfaRegSw *part) {
    register_print(*part, sw_table);
    return 0;
}

int PRINT_CFA_REG() {
    log_log(LOG_DEBUG, label, __LINE__, "[PRINT] Print cfa Reg configurations ...");
    cfa_reg_hw_print(&cfa_reg.hw);
    cfa_reg_sw_print(&cfa_reg.sw);
    log_log(LOG_DEBUG, label, __LINE__, "[PRINT] Print cfa Reg Done....");
    return 0;
}

int cfa_reg_hw_dump_ini(std::FILE *stream, const CfaRegHw *part) {
    register_write_section(stream, *part, hw_table);
    return 0;
}

int cfa_reg_sw_dump_ini(std::FILE *stream, const CfaRegSw *part) {
    register_write_section(stream, *part, sw_table);
    return 0;
}

int DUMP_CFA_HW_INI(const char *path) {
    return register_dump_part(path, cfa_reg.hw, hw_table, label, "DUMP_CFA_HW_INI");
}

int DUMP_CFA_SW_INI(const char *path) {
    return register_dump_part(path, cfa_reg.sw, sw_table, label, "DUMP_CFA_SW_INI");
}

int DUMP_CFA_INI(const char *path) {
    log_log(LOG_DEBUG, label, __LINE__, "[DUMP] Dump cfa INI configurations in %s...", path);
    DUMP_CFA_HW_INI(path);
    DUMP_CFA_SW_INI(path);
    log_log(LOG_DEBUG, label, __LINE__, "[DUMP] Dump cfa INI Done....");
    return 0;
}
