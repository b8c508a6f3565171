// The INI loader on any bytes: registers stay within their widths, and the number of the first bad line is
// one. Then the registers written into that file: it holds a section with every register, and no temporary
// file is left.

#include <algorithm>

#include "cmodel/common/ini_file.h"
#include "tests/fuzz/fuzz_support.h"
#include "tests/support/registers.h"
#include "tests/support/support.h"

using namespace cfa;

void try_input(const std::string &memory, const std::string &bytes) {
    static const TempFolder folder;
    const std::string path = folder / "registers.ini";
    write_file(path, bytes);
    const auto take = [](void *, const char *, const char *, const char *) { return 1; };
    const int bad_line = ini_load_file(memory.c_str(), take, nullptr);
    expect(bad_line >= 0 && bad_line <= 1 + std::count(bytes.begin(), bytes.end(), '\n'), "another bad line");
    FreshRegisters::reset();
    expect(LOAD_CFA_INI(path.c_str()) == 0 && LOAD_CMODEL_TOP_INI(path.c_str()) == 0, "reported missing");
    std::string section = "[cfa]\n";
    for (const RegisterInfo &info : cfa_reg_hw_table().registers) {
        const int32_t v = info.read(cfa_reg.hw);
        expect(v == register_truncate(v, info.bits, info.is_signed), info.key);
        section += std::string(info.key) + " = " + std::to_string(v) + "\n";
    }
    PRINT_CFA_REG();
    DUMP_CFA_HW_INI(path.c_str());
    // Now: a last line without line feed, glued to a header, would be taken for no header.
    expect(read_file(path).find(section) != std::string::npos, "the registers are not in the file");
    DUMP_CFA_SW_INI(path.c_str());
    DUMP_CMODEL_TOP_INI(path.c_str());
    expect(read_file(path + ".temp") == "(no file)", "a temporary file is left");
}
