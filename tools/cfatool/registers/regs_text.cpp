// The annotated INI files and the register reference.
#include "tools/cfatool/registers/regs_text.h"

#include <cstring>
#include <fmt/core.h>

namespace cfatool {
namespace {

/// What a role in a curve means.
std::string role_text(const RegisterInfo &info) {
    switch (info.curve.role) {
    case CurveRole::x0:
        return "knee x0";
    case CurveRole::y0:
        return "level y0 up to the knee";
    case CurveRole::slope:
        return fmt::format("slope with {} fractional bits", info.curve.fraction_bits);
    case CurveRole::x1:
        return "end x1 of the slope, read by no stage";
    case CurveRole::y1:
        return "limit y1";
    case CurveRole::none:
        break;
    }
    return "";
}

std::string curve_text(const RegisterInfo &info) {
    return info.curve.role == CurveRole::none ? "" : fmt::format("{}, {}", info.curve.name, role_text(info));
}

void append_reference(std::string &text, const RegisterTable &table) {
    text += fmt::format("\n## [{}]\n\n{} registers.\n\n"
                        "| key | width and range | default | meaning | curve |\n|---|---|---|---|---|\n",
                        table.name, table.registers.size());
    for (const RegisterInfo &info : table.registers)
        text += fmt::format("| `{}` | {} | {} | {} | {} |\n", info.key, width_text(info), info.reset,
                            info.meaning, curve_text(info));
}

} // namespace

std::string defaults_text(const RegisterTable &table) {
    std::string text = fmt::format(
        "; Every register of the block {0} at its default.\n"
        "; Made by: cfatool regs defaults {0}\n"
        "; Numbers are decimal. A line must not be indented: it would continue the one above it.\n[{0}]\n",
        table.name);
    const char *curve = "";
    for (const RegisterInfo &info : table.registers) {
        if (std::strcmp(curve, info.curve.name) != 0)
            text +=
                info.curve.role == CurveRole::none ? "\n" : fmt::format("\n; Curve {}\n", info.curve.name);
        curve = info.curve.name;
        const std::string role =
            info.curve.role == CurveRole::none ? "" : fmt::format(" ({})", role_text(info));
        const std::string comment = fmt::format("; {}: {}{}", width_text(info), info.meaning, role);
        text += fmt::format("{:.{}}\n{} = {}\n", comment, REGS_LINE, info.key, info.reset);
    }
    return text;
}

std::string reference_text() {
    std::string text =
        "# Registers\n\n"
        "Made by `cfatool regs doc`; do not edit. `cfatool regs defaults cfa` and `cfatool regs defaults "
        "cmodel_top` print\n"
        "complete INI files, `cfatool regs check` says what a file holds that loading accepts without a "
        "word.\n\n"
        "A register is set by a line `key = value` in the section of its block, in decimal. The value is cut "
        "to the width\n"
        "of the register (5000 in 12 bits is 904), text that is no number counts as 0, and a key that is set "
        "twice keeps\n"
        "the last value. An unknown key and a key in another section are passed over.\n\n"
        "A curve is flat at its level y0 up to its knee x0, then sloped, then flat at its limit y1.\n";
    Registers registers;
    for (const BlockPart &p : registers.parts())
        if (!p.table->registers.empty())
            append_reference(text, *p.table);
    return text;
}

} // namespace cfatool
