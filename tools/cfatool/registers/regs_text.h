// Texts made from the register list.
#pragma once

#include <string>

#include "tools/cfatool/registers/registers.h"

namespace cfatool {

/// Longest line of an annotated INI file.
constexpr size_t REGS_LINE = 197;

/// A complete INI file of one block: every key with its default, width, signedness, curve and meaning.
std::string defaults_text(const RegisterTable &table);

/// The register reference of both blocks in Markdown.
std::string reference_text();

} // namespace cfatool
