// The INI loader on any bytes: registers stay within their widths, and the number of the first bad line is
// one.

#include <algorithm>

#include "cmodel/cfa/src/reg_parse/cfa_reg.h"
#include "cmodel/cmodel_top/src/reg_parse/cmodel_top_reg.h"
#include "cmodel/common/ini_file.h"
#include "tests/fuzz/fuzz_support.h"

using namespace cfa;

namespace {

int take(void *user, const char *section, const char *key, const char *value) {
    *static_cast<size_t *>(user) +=
        std::string(section).size() + std::string(key).size() + std::string(value).size();
    return 1;
}

void check_widths(const RegisterPart &part, const RegisterTable &table) {
    for (const RegisterInfo &info : table.registers) {
        const int32_t v = info.read(part);
        if (v < register_min(info.bits, info.is_signed) || v > register_max(info.bits, info.is_signed))
            fuzz_failure(std::string(info.key) + " left its width");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    const std::string path = memory_file(0, bytes, size);
    const int status = run_refusable([&] {
        size_t characters = 0;
        const int bad_line = ini_load_file(path.c_str(), take, &characters);
        if (bad_line < 0 || bad_line > 1 + std::count(bytes, bytes + size, '\n'))
            fuzz_failure("line " + std::to_string(bad_line));
        INIT_CFA_REG("NULL");
        INIT_CMODEL_TOP_REG("NULL");
        if (LOAD_CFA_INI(path.c_str()) != 0 || LOAD_CMODEL_TOP_INI(path.c_str()) != 0)
            fuzz_failure("a file that can be opened is reported missing");
        PRINT_CFA_REG();
        check_widths(cfa_reg.hw, cfa_reg_hw_table());
        check_widths(cmodel_top_reg.hw, cmodel_top_reg_hw_table());
    });
    if (status != 0)
        fuzz_failure("a register file ended the process");
    return 0;
}
