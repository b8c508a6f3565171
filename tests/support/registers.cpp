#include "tests/support/registers.h"

FreshRegisters::FreshRegisters() {
    INIT_CFA_REG("NULL");
}

FreshRegisters::~FreshRegisters() {
    INIT_CFA_REG("NULL");
}
