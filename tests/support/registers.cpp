#include "tests/support/registers.h"

#include <string>

#include <doctest/doctest.h>

#include "tests/support/planes.h"

FreshRegisters::FreshRegisters() {
    INIT_CFA_REG("NULL");
}

FreshRegisters::~FreshRegisters() {
    INIT_CFA_REG("NULL");
}

int32_t reg(const char *key) {
    const RegisterInfo *const info = cfa_reg_hw_table().find(key);
    REQUIRE(info != nullptr);
    return info->read(cfa_reg.hw);
}

void randomize_registers(uint32_t seed, const char *filter) {
    Noise noise(seed);
    for (const RegisterInfo &info : cfa_reg_hw_table().registers)
        if (std::string(info.key).find(filter) != std::string::npos)
            info.store(cfa_reg.hw, noise.in(register_min(info.bits, info.is_signed),
                                            register_max(info.bits, info.is_signed)));
}
