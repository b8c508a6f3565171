// Registers for a test: the defaults at the start, the defaults again at the end.
#pragma once

#include "cmodel/cfa/src/reg_parse/cfa_reg.h"

struct FreshRegisters {
    FreshRegisters();
    ~FreshRegisters();
};
