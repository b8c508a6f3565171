// The registers of the CFA block, cfa_reg: record, reset, INI load, print, dump.
#pragma once

#include <cstdio>

#include "cmodel/common/register_block.h"

namespace cfa {

struct CfaRegHw : RegisterPart {
#define REG(key, bits, signedness, ...) Register<bits, signedness> key;
#define CURVE_REG REG
#include "cmodel/cfa/src/reg_parse/cfa_reg_hw_def.inc"
#undef CURVE_REG
#undef REG
};

struct CfaRegSw : RegisterPart {
#define REG(key, bits, signedness, ...) Register<bits, signedness> key;
#include "cmodel/cfa/src/reg_parse/cfa_reg_sw_def.inc"
#undef REG
};

struct CfaReg {
    CfaRegHw hw; // hw.name is the name of the block and its INI section: "cfa" and a suffix
    CfaRegSw sw; // "cfa_sw" and the same suffix
};

/// The tables behind it, in the order of the list files; the same for the life of the process.
const RegisterTable &cfa_reg_hw_table();
const RegisterTable &cfa_reg_sw_table();

} // namespace cfa

/// The block in force. Stages read cfa_reg.hw.reg_cfa_...; only the functions below write it.
extern cfa::CfaReg cfa_reg;

/// Resets every register and names both parts. "NULL" stands for no suffix. Returns 0.
int INIT_CFA_REG(const char *suffix);

/// Loads an INI file over the values in force and logs which registers it did not set.
/// Returns 0, or 1 when the file cannot be opened; the registers then stay as they are.
int LOAD_CFA_INI(const char *path);

/// Logs every register at DEBUG. Returns 0.
int PRINT_CFA_REG();

/// Writes the block into an INI file, each part over its own section where the file has one, else at its end.
/// A file that does not exist is created. All return 0.
int DUMP_CFA_INI(const char *path);
int DUMP_CFA_HW_INI(const char *path);
int DUMP_CFA_SW_INI(const char *path);

// What the functions above are made of. All return the same as above; the load handlers always return 1.
int cfa_reg_hw_init(cfa::CfaRegHw *part, const char *suffix);
int cfa_reg_sw_init(cfa::CfaRegSw *part, const char *suffix);
int cfa_reg_loader(void *block, const char *section, const char *key, const char *value);
int cfa_reg_hw_load(void *block, const char *section, const char *key, const char *value);
int cfa_reg_sw_load(void *block, const char *section, const char *key, const char *value);
int cfa_reg_hw_print(const cfa::CfaRegHw *part);
int cfa_reg_sw_print(const cfa::CfaRegSw *part);
int cfa_reg_hw_dump_ini(std::FILE *stream, const cfa::CfaRegHw *part);
int cfa_reg_sw_dump_ini(std::FILE *stream, const cfa::CfaRegSw *part);
