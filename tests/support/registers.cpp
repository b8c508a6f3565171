#include "tests/support/registers.h"

using namespace cfa;

FreshRegisters::FreshRegisters() {
    INIT_CFA_REG("NULL");
}

FreshRegisters::~FreshRegisters() {
    INIT_CFA_REG("NULL");
}
