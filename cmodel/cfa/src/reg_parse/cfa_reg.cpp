#include "cmodel/cfa/src/reg_parse/cfa_reg.h"

#include <array>

using namespace cfa;

CfaReg cfa_reg;

namespace {

constexpr auto HW_REGISTERS = std::to_array<RegisterInfo>({
#define REG(key, bits, signedness, reset, meaning) register_info<&CfaRegHw::key>(#key, reset, {}, meaning),
#define CURVE_REG(key, bits, signedness, reset, curve, role, fraction_bits, meaning)                         \
    register_info<&CfaRegHw::key>(#key, reset, {#curve, CurveRole::role, fraction_bits}, meaning),
#include "cmodel/cfa/src/reg_parse/cfa_reg_hw_def.inc"
#undef CURVE_REG
#undef REG
});

static_assert(sizeof(CfaRegSw) == sizeof(RegisterPart),
              "a software register needs a table like the one above");

const RegisterTable HW_TABLE = {"cfa", "hw", "cfa_reg_hw_def", HW_REGISTERS};
const RegisterTable SW_TABLE = {"cfa_sw", "sw", "cfa_reg_sw_def", {}};

const RegisterBlock BLOCK = {"cfa_reg", cfa_reg.hw, cfa_reg.sw, HW_TABLE, SW_TABLE};

} // namespace

const RegisterTable &cfa::cfa_reg_hw_table() {
    return HW_TABLE;
}
const RegisterTable &cfa::cfa_reg_sw_table() {
    return SW_TABLE;
}

int INIT_CFA_REG(const char *suffix) {
    return BLOCK.init(suffix);
}
int LOAD_CFA_INI(const char *path) {
    return BLOCK.load(path, cfa_reg_loader, &cfa_reg);
}
int PRINT_CFA_REG() {
    return BLOCK.print();
}
int DUMP_CFA_INI(const char *path) {
    return BLOCK.dump(path, "DUMP_CFA_HW_INI", "DUMP_CFA_SW_INI");
}
int DUMP_CFA_HW_INI(const char *path) {
    return register_dump_part(path, cfa_reg.hw, HW_TABLE, BLOCK.label, "DUMP_CFA_HW_INI");
}
int DUMP_CFA_SW_INI(const char *path) {
    return register_dump_part(path, cfa_reg.sw, SW_TABLE, BLOCK.label, "DUMP_CFA_SW_INI");
}

int cfa_reg_hw_init(CfaRegHw *part, const char *suffix) {
    register_reset(*part, HW_TABLE, suffix);
    return 0;
}
int cfa_reg_sw_init(CfaRegSw *part, const char *suffix) {
    register_reset(*part, SW_TABLE, suffix);
    return 0;
}
int cfa_reg_loader(void *reg, const char *section, const char *key, const char *value) {
    tok_idx = 0;
    return cfa_reg_hw_load(reg, section, key, value) | cfa_reg_sw_load(reg, section, key, value);
}
int cfa_reg_hw_load(void *reg, const char *section, const char *key, const char *value) {
    return register_load(static_cast<CfaReg *>(reg)->hw, HW_TABLE, section, key, value);
}
int cfa_reg_sw_load(void *reg, const char *section, const char *key, const char *value) {
    return register_load(static_cast<CfaReg *>(reg)->sw, SW_TABLE, section, key, value);
}
int cfa_reg_hw_print(const CfaRegHw *part) {
    register_print(*part, HW_TABLE);
    return 0;
}
int cfa_reg_sw_print(const CfaRegSw *part) {
    register_print(*part, SW_TABLE);
    return 0;
}
int cfa_reg_hw_dump_ini(std::FILE *stream, const CfaRegHw *part) {
    register_write_section(stream, *part, HW_TABLE);
    return 0;
}
int cfa_reg_sw_dump_ini(std::FILE *stream, const CfaRegSw *part) {
    register_write_section(stream, *part, SW_TABLE);
    return 0;
}
