// The companion program's register files on any bytes: checked, edited, and read as the loader reads them.

#include "cmodel/common/ini_file.h"
#include "tests/fuzz/fuzz_support.h"
#include "tools/cfatool/base/trouble.h"
#include "tools/cfatool/registers/ini_text.h"
#include "tools/cfatool/registers/registers.h"
#include "tools/cfatool/registers/regs_check.h"
#include "tools/cfatool/registers/regs_edit.h"

using namespace cfa;

namespace {

using Kind = cfatool::IniLine::Kind;

void expect_same_registers(const char *what, cfatool::Registers &a, cfatool::Registers &b) {
    const auto parts = a.parts();
    const auto others = b.parts();
    for (size_t i = 0; i < parts.size(); i++)
        for (const RegisterInfo &info : parts[i].table->registers)
            if (info.read(*parts[i].part) != info.read(*others[i].part))
                fuzz_failure(std::string(what) + ": " + info.key);
}

// The text's settings, one by one, give what loading the file gives.
void check_settings(const std::string &path, const std::vector<cfatool::IniLine> &lines) {
    cfatool::Registers loaded, applied;
    loaded.load(path);
    for (const cfatool::IniLine &line : lines)
        if (line.kind == Kind::setting || line.kind == Kind::continuation)
            applied.apply(line.section, line.name, line.value);
    expect_same_registers("the text reads differently", loaded, applied);
}

// An edit sets the register it names and no other. Text that the edit refuses stays as it is.
void check_edit(const std::string &path, const std::string &bytes) {
    std::string edited;
    try {
        edited = cfatool::set_register(bytes, "reg_cfa_enable=0");
    } catch (const cfatool::Trouble &) {
        return;
    }
    cfatool::Registers want, got;
    want.load(path);
    want.cfa.hw.reg_cfa_enable = 0;
    got.load(memory_file(1, edited.data(), edited.size()));
    expect_same_registers("an edit", want, got);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string bytes(reinterpret_cast<const char *>(data), size);
    const std::string path = memory_file(0, data, size);
    const std::vector<cfatool::IniLine> lines = cfatool::read_ini_text(bytes);
    if (cfatool::join_ini_text(lines) != bytes)
        fuzz_failure("the text is not kept");
    const int last = static_cast<int>(lines.size());
    for (const cfatool::Finding &finding : cfatool::check_registers(bytes).findings)
        if (finding.line < 1 || finding.line > last || finding.message.empty())
            fuzz_failure("a finding on line " + std::to_string(finding.line));
    check_settings(path, lines);
    check_edit(path, bytes);
    return 0;
}
