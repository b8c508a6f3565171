#include "cmodel/cmodel_top/src/reg_parse/cmodel_top_reg.h"

#include <array>

using namespace cfa;

CmodelTopReg cmodel_top_reg;

namespace {

constexpr auto HW_REGISTERS = std::to_array<RegisterInfo>({
#define REG(key, bits, signedness, reset, meaning)                                                           \
    register_info<&CmodelTopRegHw::key>(#key, reset, {}, meaning),
#include "cmodel/cmodel_top/src/reg_parse/cmodel_top_reg_hw_def.inc"
#undef REG
});

static_assert(sizeof(CmodelTopRegSw) == sizeof(RegisterPart),
              "a software register needs a table like the one above");

const RegisterTable HW_TABLE = {"cmodel_top", "hw", "cmodel_top_reg_hw_def", HW_REGISTERS};
const RegisterTable SW_TABLE = {"cmodel_top_sw", "sw", "cmodel_top_reg_sw_def", {}};

const RegisterBlock BLOCK = {"cmodel_top_reg", cmodel_top_reg.hw, cmodel_top_reg.sw, HW_TABLE, SW_TABLE};

} // namespace

const RegisterTable &cfa::cmodel_top_reg_hw_table() {
    return HW_TABLE;
}
const RegisterTable &cfa::cmodel_top_reg_sw_table() {
    return SW_TABLE;
}

int INIT_CMODEL_TOP_REG(const char *suffix) {
    return BLOCK.init(suffix);
}
int LOAD_CMODEL_TOP_INI(const char *path) {
    return BLOCK.load(path, cmodel_top_reg_loader, &cmodel_top_reg);
}
int PRINT_CMODEL_TOP_REG() {
    return BLOCK.print();
}
int DUMP_CMODEL_TOP_INI(const char *path) {
    return BLOCK.dump(path, "DUMP_CMODEL_TOP_HW_INI", "DUMP_CMODEL_TOP_SW_INI");
}
int DUMP_CMODEL_TOP_HW_INI(const char *path) {
    return register_dump_part(path, cmodel_top_reg.hw, HW_TABLE, BLOCK.label, "DUMP_CMODEL_TOP_HW_INI");
}
int DUMP_CMODEL_TOP_SW_INI(const char *path) {
    return register_dump_part(path, cmodel_top_reg.sw, SW_TABLE, BLOCK.label, "DUMP_CMODEL_TOP_SW_INI");
}

int cmodel_top_reg_hw_init(CmodelTopRegHw *part, const char *suffix) {
    register_reset(*part, HW_TABLE, suffix);
    return 0;
}
int cmodel_top_reg_sw_init(CmodelTopRegSw *part, const char *suffix) {
    register_reset(*part, SW_TABLE, suffix);
    return 0;
}
int cmodel_top_reg_loader(void *reg, const char *section, const char *key, const char *value) {
    tok_idx = 0;
    return cmodel_top_reg_hw_load(reg, section, key, value) |
           cmodel_top_reg_sw_load(reg, section, key, value);
}
int cmodel_top_reg_hw_load(void *reg, const char *section, const char *key, const char *value) {
    return register_load(static_cast<CmodelTopReg *>(reg)->hw, HW_TABLE, section, key, value);
}
int cmodel_top_reg_sw_load(void *reg, const char *section, const char *key, const char *value) {
    return register_load(static_cast<CmodelTopReg *>(reg)->sw, SW_TABLE, section, key, value);
}
int cmodel_top_reg_hw_print(const CmodelTopRegHw *part) {
    register_print(*part, HW_TABLE);
    return 0;
}
int cmodel_top_reg_sw_print(const CmodelTopRegSw *part) {
    register_print(*part, SW_TABLE);
    return 0;
}
int cmodel_top_reg_hw_dump_ini(std::FILE *stream, const CmodelTopRegHw *part) {
    register_write_section(stream, *part, HW_TABLE);
    return 0;
}
int cmodel_top_reg_sw_dump_ini(std::FILE *stream, const CmodelTopRegSw *part) {
    register_write_section(stream, *part, SW_TABLE);
    return 0;
}
