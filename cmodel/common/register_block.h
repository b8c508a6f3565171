// What the register blocks share: the record of one register, the table that describes it, and the loops over
// the table: reset, load, print, write.
//
// A block has a hardware part with its registers and a software part without any. Each part has a list file
// (..._hw_def.inc, ..._sw_def.inc) with one line per register, REG or CURVE_REG, which is expanded twice:
// into the members of the part's struct and into its table of RegisterInfo.
#pragma once

#include <cstdint>
#include <cstdio>
#include <span>
#include <type_traits>

#include "cmodel/common/ini_file.h"

/// Token counter for handlers that split one value into several numbers: 0 at the start of every INI line.
extern uint32_t tok_idx;

namespace cfa {

/// Room for the name of a part: 31 characters and the end.
constexpr int REGISTER_PART_NAME_SIZE = 32;

/// v kept to its low `bits` bits and extended to 32 again, with the sign for a signed register, else with
/// zeros. REQUIRES 1 <= bits <= 31.
constexpr int32_t register_truncate(int64_t v, int bits, bool is_signed) {
    const uint32_t mask = (1u << bits) - 1;
    const uint32_t low = static_cast<uint32_t>(v) & mask;
    const bool negative = is_signed && ((low >> (bits - 1)) & 1) != 0;
    return static_cast<int32_t>(negative ? low | ~mask : low);
}

/// Smallest and largest value that a register of this width holds.
constexpr int32_t register_min(int bits, bool is_signed) {
    return is_signed ? -(1 << (bits - 1)) : 0;
}
constexpr int32_t register_max(int bits, bool is_signed) {
    return (1 << (is_signed ? bits - 1 : bits)) - 1;
}

/// What every register carries beside its value.
struct RegisterRecord {
    const char *name = ""; // the key, written by the reset
    uint32_t spare = 0;    // read by nothing
    uint32_t is_set = 0;   // 1 once an INI line has set the register
};

/// A register of Bits bits; Int is `unsigned` or `signed`. Reads as int32_t, so that formulas stay signed.
/// A value assigned to it is cut to its width.
template <int Bits, typename Int> struct Register : RegisterRecord {
    static_assert(Bits >= 1 && Bits <= 31);
    static constexpr int BITS = Bits;
    static constexpr bool IS_SIGNED = std::is_signed_v<Int>;

    Int value : Bits = 0;

    operator int32_t() const { return static_cast<int32_t>(value); }
    Register &operator=(int32_t v) {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion" // the bit-field keeps the low bits: that is its purpose
        value = static_cast<Int>(v);
#pragma GCC diagnostic pop
        return *this;
    }
};

/// A part of a register block: its name, which is the INI section it answers to; its registers follow in the
/// struct derived from it.
struct RegisterPart {
    char name[REGISTER_PART_NAME_SIZE] = "";
};

/// What a register is to its curve: level y0 up to the knee x0, from there along the slope to the limit y1.
/// No stage reads x1, the end of the slope.
enum class CurveRole { none, x0, y0, slope, x1, y1 };

/// The place of a register in a curve.
struct RegisterCurve {
    const char *name = ""; // "" for a register of no curve
    CurveRole role = CurveRole::none;
    int fraction_bits = 0; // of the curve's slope
};

/// One line of a part's table.
struct RegisterInfo {
    const char *key; // INI key
    int bits;
    bool is_signed;
    int32_t reset; // fits the width
    RegisterCurve curve;
    const char *meaning; // one line: unit, format

    // Access to this register in a part of the struct that the table was made for.
    int32_t (*read)(const RegisterPart &part);
    void (*store)(RegisterPart &part, int32_t v); // cuts v to the width; leaves is_set alone
    const RegisterRecord &(*record)(const RegisterPart &part);
};

/// A part's table and what its messages call it.
struct RegisterTable {
    const char *name;  // reset value of the part's name
    const char *part;  // "hw" or "sw"
    const char *label; // of its log records: the list file
    std::span<const RegisterInfo> registers;

    /// The register of this key, or null.
    const RegisterInfo *find(const char *key) const;
};

/// Names the part (its reset name and, unless suffix is null or "NULL", the suffix, cut at 31 characters) and
/// resets every register: name, spare word, is_set, value.
void register_reset(RegisterPart &part, const RegisterTable &table, const char *suffix);

/// One INI line: if section is the part's name and key one of its registers, stores the integer at the start
/// of value (0 if there is none), cut to the width, and sets is_set. Returns 1 in every case.
int register_load(RegisterPart &part, const RegisterTable &table, const char *section, const char *key,
                  const char *value);

/// Logs an ERROR record for every register that no INI line has set.
void register_log_unset(const RegisterPart &part, const RegisterTable &table);

/// Logs "[name]" and every value, at DEBUG.
void register_print(const RegisterPart &part, const RegisterTable &table);

/// Writes "[name]" and a line "key = value" for every register.
void register_write_section(std::FILE *stream, const RegisterPart &part, const RegisterTable &table);

/// Writes the part into the INI file at path: replaces its section where the file has one, else appends it,
/// and creates the file where there is none. Goes through the temporary file path + ".temp"; where that
/// cannot be opened, written and read back, the log says so and the INI file stays as it is (kept: but is
/// left empty where there is no temporary file at all). Messages carry the label of the block and the name of
/// the calling function. Errors of the last write are not checked. Returns 0.
int register_dump_part(const char *path, const RegisterPart &part, const RegisterTable &table,
                       const char *label, const char *function);

/// A block of two parts and the functions that every block has under names of its own. All return what those
/// functions return, and log under the block's label.
struct RegisterBlock {
    const char *label;
    RegisterPart &hw, &sw;
    const RegisterTable &hw_table, &sw_table;

    int init(const char *suffix) const;                                  // resets both parts; 0
    int load(const char *path, IniHandler load_line, void *block) const; // 0, or 1: cannot be opened
    int print() const;                                                   // logs every register at DEBUG; 0
    int dump(const char *path, const char *hw_function, const char *sw_function) const; // 0
};

// The table line of one register, for the expansion of a list file. Member is a pointer to the register.
namespace register_detail {
template <typename T> struct Member;
template <typename Part, typename Reg> struct Member<Reg Part::*> {
    using part_type = Part;
    using register_type = Reg;
};
} // namespace register_detail

template <auto Pointer> constexpr RegisterInfo
register_info(const char *key, int32_t reset, const RegisterCurve &curve, const char *meaning) {
    using Part = typename register_detail::Member<decltype(Pointer)>::part_type;
    using Reg = typename register_detail::Member<decltype(Pointer)>::register_type;
    return {key,
            Reg::BITS,
            Reg::IS_SIGNED,
            reset,
            curve,
            meaning,
            [](const RegisterPart &part) -> int32_t { return static_cast<const Part &>(part).*Pointer; },
            [](RegisterPart &part, int32_t v) { static_cast<Part &>(part).*Pointer = v; },
            [](const RegisterPart &part) -> const RegisterRecord & {
                return static_cast<const Part &>(part).*Pointer;
            }};
}

} // namespace cfa
