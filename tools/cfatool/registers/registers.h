// Both register blocks as the tool loads them, apart from the process-wide ones.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "cmodel/cfa/src/reg_parse/cfa_reg.h"
#include "cmodel/cmodel_top/src/reg_parse/cmodel_top_reg.h"

namespace cfatool {

// What the companion program uses of the register blocks.
using cfa::CurveRole;
using cfa::RegisterInfo;
using cfa::RegisterPart;
using cfa::RegisterTable;

/// One part of a block: hardware or software. Its section is table->name.
struct BlockPart {
    const RegisterTable *table;
    RegisterPart *part;
};

struct ConstBlockPart {
    const RegisterTable *table;
    const RegisterPart *part;
};

/// A set of register values, at first the defaults.
struct Registers {
    cfa::CfaReg block;
    cfa::CmodelTopReg top;

    Registers();
    Registers(const Registers &) = delete;
    Registers &operator=(const Registers &) = delete;

    /// The four parts, hardware before software, CFA before top level.
    std::array<BlockPart, 4> parts();
    std::array<ConstBlockPart, 4> parts() const;

    /// One line of an INI file.
    void apply(const std::string &section, const std::string &key, const std::string &value);

    /// Loads an INI file over the values in force: both blocks, each from its section. Throws Trouble if it
    /// cannot be read.
    void load(const std::string &path);

    /// Loads what a run in this folder does: the CFA block from cfa.ini, the top level from cmodel_top.ini,
    /// as far as they are there. Returns whether each was.
    struct Loaded {
        bool block, top;
    };
    Loaded load_run(const std::string &folder);
};

/// A register of either block.
struct FoundRegister {
    BlockPart where;
    const RegisterInfo *info;
};

/// The register of this key, in whichever part it is; info is null if there is none.
FoundRegister find_register(Registers &registers, const std::string &key);

/// "key=value" for a register of either block. Throws CommandTrouble for an unknown key, and for a value that
/// is no decimal number or does not fit.
struct RegisterSetting {
    FoundRegister to;
    int32_t value;
};
RegisterSetting parse_setting(Registers &registers, const std::string &text);

/// Every key of both blocks.
std::vector<std::string> register_keys(Registers &registers);

/// "12 bits, 0..4095" or "13 bits signed, -4096..4095".
std::string width_text(const RegisterInfo &info);

} // namespace cfatool
