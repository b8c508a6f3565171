#include "cmodel/cmodel_top/src/reg_parse/cmodel_top_reg.h"

#include <array>

#include "cmodel/common/ini_file.h"
#include "log/log.h"

CmodelTopReg cmodel_top_reg;

namespace {

const char *const label = "cmodel_top_reg";

constexpr auto hw_registers = std::to_array<RegisterInfo>({
#define REG(key, bits, signedness, reset, ...) register_info<&CmodelTopRegHw::key>(#key, reset, __VA_ARGS__),
#include "cmodel/cmodel_top/src/reg_parse/cmodel_top_reg_hw_def.inc"
#undef REG
});

static_assert(sizeof(CmodelTopRegSw) == sizeof(RegisterPart),
              "a software register needs a table like the one above");

const RegisterTable hw_table = {"cmodel_top", "hw", "cmodel_top_reg_hw_def", hw_registers};
const RegisterTable sw_table = {"cmodel_top_sw", "sw", "cmodel_top_reg_sw_def", {}};

} // namespace

const RegisterTable &cmodel_top_reg_hw_table() {
    return hw_table;
}
const RegisterTable &cmodel_top_reg_sw_table() {
    return sw_table;
}

int cmodel_top_reg_hw_init(CmodelTopRegHw *part, const char *suffix) {
    register_reset(*part, hw_table, suffix);
    return 0;
}

int cmodel_top_reg_sw_init(CmodelTopRegSw *part, const char *suffix) {
    register_reset(*part, sw_table, suffix);
    return 0;
}

int INIT_CMODEL_TOP_REG(const char *suffix) {
    log_log(LOG_DEBUG, label, __LINE__, "[INIT] Init cmodel_top Reg configurations...");
    cmodel_top_reg_hw_init(&cmodel_top_reg.hw, suffix);
    cmodel_top_reg_sw_init(&cmodel_top_reg.sw, suffix);
    log_log(LOG_DEBUG, label, __LINE__, "[INIT] Init cmodel_top Reg Done....");
    return 0;
}

int cmodel_top_reg_hw_load(void *block, const char *section, const char *key, const char *value) {
    return register_load(static_cast<CmodelTopReg *>(block)->hw, hw_table, section, key, value);
}

int cmodel_top_reg_sw_load(void *block, const char *section, const char *key, const char *value) {
    return register_load(static_cast<CmodelTopReg *>(block)->sw, sw_table, section, key, value);
}

int cmodel_top_reg_loader(void *block, const char *section, const char *key, const char *value) {
    tok_idx = 0;
    return cmodel_top_reg_hw_load(block, section, key, value) |
           cmodel_top_reg_sw_load(block, section, key, value);
}

int LOAD_CMODEL_TOP_INI(const char *path) {
    log_log(LOG_DEBUG, label, __LINE__, "[LOAD] Load cmodel_top INI configurations...");
    if (ini_load_file(path, cmodel_top_reg_loader, &cmodel_top_reg) < 0) {
        log_log(LOG_DEBUG, label, __LINE__, "Can't handle cmodel_top_reg.");
        return 1;
    }
    log_log(LOG_DEBUG, label, __LINE__, "[LOAD] Load cmodel_top Done...");
    register_log_unset(cmodel_top_reg.hw, hw_table);
    return 0;
}

int cmodel_top_reg_hw_print(const CmodelTopRegHw *part) {
    register_print(*part, hw_table);
    return 0;
}

int cmodel_top_reg_sw_print(const CmodelTopRegSw *part) {
    register_print(*part, sw_table);
    return 0;
}

int PRINT_CMODEL_TOP_REG() {
    log_log(LOG_DEBUG, label, __LINE__, "[PRINT] Print cmodel_top Reg configurations ...");
    cmodel_top_reg_hw_print(&cmodel_top_reg.hw);
    cmodel_top_reg_sw_print(&cmodel_top_reg.sw);
    log_log(LOG_DEBUG, label, __LINE__, "[PRINT] Print cmodel_top Reg Done....");
    return 0;
}

int cmodel_top_reg_hw_dump_ini(std::FILE *stream, const CmodelTopRegHw *part) {
    register_write_section(stream, *part, hw_table);
    return 0;
}

int cmodel_top_reg_sw_dump_ini(std::FILE *stream, const CmodelTopRegSw *part) {
    register_write_section(stream, *part, sw_table);
    return 0;
}

int DUMP_CMODEL_TOP_HW_INI(const char *path) {
    return register_dump_part(path, cmodel_top_reg.hw, hw_table, label, "DUMP_CMODEL_TOP_HW_INI");
}

int DUMP_CMODEL_TOP_SW_INI(const char *path) {
    return register_dump_part(path, cmodel_top_reg.sw, sw_table, label, "DUMP_CMODEL_TOP_SW_INI");
}

int DUMP_CMODEL_TOP_INI(const char *path) {
    log_log(LOG_DEBUG, label, __LINE__, "[DUMP] Dump cmodel_top INI configurations in %s...", path);
    DUMP_CMODEL_TOP_HW_INI(path);
    DUMP_CMODEL_TOP_SW_INI(path);
    log_log(LOG_DEBUG, label, __LINE__, "[DUMP] Dump cmodel_top INI Done....");
    return 0;
}
