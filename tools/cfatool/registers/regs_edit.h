// Register values written into files.
#pragma once

#include <string>
#include <vector>

#include "tools/cfatool/registers/registers.h"

namespace cfatool {

/// The file with one register changed: the line in force keeps its comment and its place; a missing key goes
/// to the end of its section (where an indented line would continue it: to the end of the file), a missing
/// section to the end of the file; line ends stay as they are.
/// `assignment` is "key=value"; throws Trouble for an unknown key, for what is no decimal number or out of
/// range.
std::string set_register(const std::string &bytes, const std::string &assignment);

/// Writes the values of the blocks named (sections of hardware parts) into the file through the dump
/// functions of the register library. The file changes only when all has gone well. Throws Trouble.
void dump_registers(Registers &registers, const std::vector<std::string> &blocks, const std::string &path);

} // namespace cfatool
