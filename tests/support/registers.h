// Registers for a test: the defaults at the start, the defaults again at the end.
#pragma once

#include "cmodel/cfa/src/reg_parse/cfa_reg.h"
#include "cmodel/cmodel_top/src/reg_parse/cmodel_top_reg.h"

struct FreshRegisters {
    FreshRegisters() { reset(); }
    ~FreshRegisters() { reset(); }
    static void reset() {
        INIT_CFA_REG("NULL");
        INIT_CMODEL_TOP_REG("NULL");
    }
};
