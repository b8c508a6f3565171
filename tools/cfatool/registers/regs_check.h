// What a register file holds that loading accepts without a word.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "tools/cfatool/registers/registers.h"

namespace cfatool {

struct Finding {
    int line = 0; // from 1
    std::string message;
};

/// The registers of a block that the file names but leaves at their defaults.
struct UnsetRegisters {
    std::string section;
    size_t registers; // of the block
    std::vector<std::string> keys;
};

struct CheckResult {
    std::vector<Finding> findings; // by line
    std::vector<UnsetRegisters> unset;
};

/// UTF-16 shows by its mark or by every second byte being 0.
bool is_utf16(const std::string &bytes);

/// Checks the text of one register file.
CheckResult check_registers(const std::string &bytes);

/// Findings about values that contradict each other: curves, limits of the gain. `lines` gives the last line
/// that sets a register; what no line sets is not looked at.
void check_consistency(Registers &registers, const std::map<const RegisterInfo *, int> &lines,
                       std::vector<Finding> &findings);

} // namespace cfatool
