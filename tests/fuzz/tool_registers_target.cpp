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

void expect_same(const std::string &what, cfatool::Registers &a, cfatool::Registers &b) {
    const auto parts = a.parts(), others = b.parts();
    for (size_t i = 0; i < parts.size(); ++i)
        for (const RegisterInfo &info : parts[i].table->registers)
            expect(info.read(*parts[i].part) == info.read(*others[i].part), what + ": " + info.key);
}

} // namespace

void try_input(const std::string &path, const std::string &bytes) {
    using Kind = cfatool::IniLine::Kind;
    const std::vector<cfatool::IniLine> lines = cfatool::read_ini_text(bytes);
    expect(cfatool::join_ini_text(lines) == bytes, "the text is not kept");
    for (const cfatool::Finding &finding : cfatool::check_registers(bytes).findings)
        expect(finding.line >= 1 && finding.line <= static_cast<int>(lines.size()) &&
                   !finding.message.empty(),
               "a finding on line " + std::to_string(finding.line));
    // The text's settings, one by one, give what loading the file gives.
    cfatool::Registers loaded, applied;
    loaded.load(path);
    for (const cfatool::IniLine &line : lines)
        if (line.kind == Kind::setting || line.kind == Kind::continuation)
            applied.apply(line.section, line.name, line.value);
    expect_same("the text reads differently", loaded, applied);
    // An edit sets the register it names and no other. Text that the edit refuses stays as it is.
    cfatool::Registers got;
    try {
        got.load(memory_file(1, cfatool::set_register(bytes, "reg_cfa_enable=0")));
    } catch (const cfatool::Trouble &) {
        return;
    }
    loaded.block.hw.reg_cfa_enable = 0;
    expect_same("an edit", loaded, got);
}
