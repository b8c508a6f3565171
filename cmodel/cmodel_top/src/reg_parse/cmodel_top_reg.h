// The registers of the top level, cmodel_top_reg: record, reset, INI load, print, dump.
#pragma once

#include <cstdio>

#include "cmodel/common/register_block.h"

namespace cfa {

struct CmodelTopRegHw : RegisterPart {
#define REG(key, bits, signedness, ...) Register<bits, signedness> key;
#include "cmodel/cmodel_top/src/reg_parse/cmodel_top_reg_hw_def.inc"
#undef REG
};

struct CmodelTopRegSw : RegisterPart {
#define REG(key, bits, signedness, ...) Register<bits, signedness> key;
#include "cmodel/cmodel_top/src/reg_parse/cmodel_top_reg_sw_def.inc"
#undef REG
};

struct CmodelTopReg {
    CmodelTopRegHw hw; // hw.name is the name of the block and its INI section: "cmodel_top" and a suffix
    CmodelTopRegSw sw; // "cmodel_top_sw" and the same suffix
};

/// The tables behind it, in the order of the list files; the same for the life of the process.
const RegisterTable &cmodel_top_reg_hw_table();
const RegisterTable &cmodel_top_reg_sw_table();

} // namespace cfa

/// The block in force. The block reads cmodel_top_reg.hw.reg_img_bayerid only.
extern cfa::CmodelTopReg cmodel_top_reg;

/// Resets every register and names both parts. "NULL" stands for no suffix, and so does a null. Returns 0.
int INIT_CMODEL_TOP_REG(const char *suffix);

/// Loads an INI file over the values in force and logs which registers it did not set.
/// Returns 0, or 1 when the file cannot be opened; the registers then stay as they are.
int LOAD_CMODEL_TOP_INI(const char *path);

/// Logs every register at DEBUG. Returns 0.
int PRINT_CMODEL_TOP_REG();

/// Writes the block into an INI file, each part over its own section where the file has one, else at its end.
/// A file that does not exist is created. All return 0.
int DUMP_CMODEL_TOP_INI(const char *path);
int DUMP_CMODEL_TOP_HW_INI(const char *path);
int DUMP_CMODEL_TOP_SW_INI(const char *path);

// What the functions above are made of. All return the same as above; the load handlers always return 1.
int cmodel_top_reg_hw_init(cfa::CmodelTopRegHw *part, const char *suffix);
int cmodel_top_reg_sw_init(cfa::CmodelTopRegSw *part, const char *suffix);
int cmodel_top_reg_loader(void *block, const char *section, const char *key, const char *value);
int cmodel_top_reg_hw_load(void *block, const char *section, const char *key, const char *value);
int cmodel_top_reg_sw_load(void *block, const char *section, const char *key, const char *value);
int cmodel_top_reg_hw_print(const cfa::CmodelTopRegHw *part);
int cmodel_top_reg_sw_print(const cfa::CmodelTopRegSw *part);
int cmodel_top_reg_hw_dump_ini(std::FILE *stream, const cfa::CmodelTopRegHw *part);
int cmodel_top_reg_sw_dump_ini(std::FILE *stream, const cfa::CmodelTopRegSw *part);
