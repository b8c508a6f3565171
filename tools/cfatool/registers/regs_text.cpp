// The annotated INI files and the register reference.
#include "tools/cfatool/registers/regs_text.h"

#include <cstring>

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
        return "slope with " + std::to_string(info.curve.fraction_bits) + " fractional bits";
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
    return info.curve.role == CurveRole::none
               ? ""
               : std::string("curve ") + info.curve.name + ", " + role_text(info);
}

void append_reference(std::string &text, const RegisterTable &table) {
    text += std::string("\n## [") + table.name + "]\n\n" + std::to_string(table.registers.size()) +
            " registers.\n\n" +
            "| key | width and range | default | meaning | curve |\n|---|---|---|---|---|\n";
    for (const RegisterInfo &info : table.registers) {
        const std::string curve = curve_text(info);
        text += std::string("| `") + info.key + "` | " + width_text(info) + " | " +
                std::to_string(info.reset) + " | " + info.meaning + " | " +
                curve.substr(curve.empty() ? 0 : std::strlen("curve ")) + " |\n";
    }
}

} // namespace

std::string defaults_text(const RegisterTable &table) {
    std::string text =
        std::string("; Every register of the block ") + table.name + " at its default.\n" +
        "; Made by: cfatool regs defaults " + table.name + "\n" +
        "; Numbers are decimal. A line must not be indented: it would continue the one above it.\n" + "[" +
        table.name + "]\n";
    const char *curve = "";
    for (const RegisterInfo &info : table.registers) {
        if (std::strcmp(curve, info.curve.name) != 0)
            text += info.curve.role == CurveRole::none ? "\n"
                                                       : std::string("\n; Curve ") + info.curve.name + "\n";
        curve = info.curve.name;
        const std::string role = info.curve.role == CurveRole::none ? "" : " (" + role_text(info) + ")";
        const std::string comment = "; " + width_text(info) + ": " + info.meaning + role;
        text += comment.substr(0, REGS_LINE) + "\n" + info.key + " = " + std::to_string(info.reset) + "\n";
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
