// Registers for a test: the defaults at the start, the defaults again at the end.
#pragma once

#include "cmodel/cfa/src/reg_parse/cfa_reg.h"

struct FreshRegisters {
    FreshRegisters();
    ~FreshRegisters();
};

/// A register by its key.
int32_t reg(const char *key);

/// Gives every register that passes the filter (part of its key) any value of its width.
void randomize_registers(uint32_t seed, const char *filter);
