#include <doctest/doctest.h>

#include "tests/tools/cfatool/tool_support.h"
#include "tools/cfatool/base/integer_math.h"
#include "tools/cfatool/registers/regs_edit.h"
#include "tools/cfatool/registers/regs_text.h"

using namespace cfatool;

namespace {

/// A file that sets every register of a block at random.
std::string random_file(const RegisterTable &table, uint64_t seed) {
    std::string text = std::string("[") + table.name + "]\n";
    uint64_t i = 0;
    for (const RegisterInfo &info : table.registers)
        text += std::string(info.key) + " = " +
                std::to_string(cfa::register_truncate(static_cast<int64_t>(random_bits(seed, i++)), info.bits,
                                                      info.is_signed)) +
                "\n";
    return text;
}

} // namespace

TEST_CASE("samples and the register reference are what the register list makes") {
    for (const RegisterTable *table : {&cfa::cfa_reg_hw_table(), &cfa::cmodel_top_reg_hw_table()}) {
        const std::string path = source_root() + "/samples/" + table->name + ".ini";
        const std::string text = defaults_text(*table);
        CHECK(read_file(path) == text);
        for (size_t begin = 0, end = 0; begin < text.size(); begin = end + 1) {
            end = text.find('\n', begin);
            CHECK(end - begin <= REGS_LINE);
        }
        Registers registers;
        registers.load(path);
        for (const BlockPart &p : registers.parts())
            for (const RegisterInfo &info : p.table->registers)
                if (p.table == table) {
                    CHECK_MESSAGE(info.record(*p.part).is_set == 1, info.key);
                    CHECK_MESSAGE(info.read(*p.part) == info.reset, info.key);
                    // Its comment is the line above it and is there in full.
                    CHECK(text.find(std::string(info.meaning)) != std::string::npos);
                }
    }
    CHECK(read_file(source_root() + "/docs/registers.md") == reference_text());
}

TEST_CASE("set changes one value and no other byte") {
    const std::string key = "reg_cfa_vw_thd";
    const std::string vw = "[cfa]\n" + key;
    struct Case {
        std::string before, value, after;
    };
    for (const Case &c : {
             Case{"; c\n" + vw + " = 5 ; five\r\n\n[x]\nreg_cfa_vw_thd=1", "40",
                  "; c\n" + vw + " = 40 ; five\r\n\n[x]\nreg_cfa_vw_thd=1"},
             Case{vw + "=\n", "0", vw + "= 0\n"},
             Case{vw + ": ; none\n", "7", vw + ": 7 ; none\n"},
             // The line in force is the last one, also an indented one.
             Case{vw + "=1\nreg_cfa_vw_thd=2\n", "3", vw + "=1\nreg_cfa_vw_thd=3\n"},
             Case{vw + "=1\n  2 ; two\n", "3", vw + "=1\n  3 ; two\n"},
             // A missing key goes behind the last line of its section that is read, with the line end there.
             Case{"[cfa]\r\nreg_cfa_enable=1\r\n\r\n[x]\r\n", "3",
                  "[cfa]\r\nreg_cfa_enable=1\r\nreg_cfa_vw_thd = 3\r\n\r\n[x]\r\n"},
             Case{"[cfa]\n  junk\n", "3", "[cfa]\n  junk\nreg_cfa_vw_thd = 3\n"},
             // Not where an indented line, a header here, would become its continuation.
             Case{"[cfa]\n\n [x]\n 7\n", "3", "[cfa]\n\n [x]\n 7\n\n" + vw + " = 3\n"},
             Case{"[x]\na=1", "3", "[x]\na=1\n\n" + vw + " = 3\n"},
             Case{"", "3", vw + " = 3\n"},
         })
        CHECK(set_register(c.before, key + "=" + c.value) == c.after);
    for (const auto &[assignment, reason] :
         {std::pair{"reg_cfa_vw_thd=4096", "4096 does not fit 12 bits, 0..4095"},
          {"reg_cfa_vw_thd=0x10", "not a plain decimal number"},
          {"reg_cfa_vw_th=1", "did you mean 'reg_cfa_vw_thd'?"},
          {"reg_cfa_vw_thd", "not of the form key=value"}})
        CHECK_THROWS_WITH(set_register("", assignment), doctest::Contains(reason));
}

TEST_CASE("every register set to both ends of its range comes back from a load, in messy files too") {
    const TempFolder folder;
    const std::string file = folder / "r.ini";
    Registers any;
    for (const BlockPart &p : any.parts()) {
        for (const RegisterInfo &info : p.table->registers) {
            for (const int32_t end : {cfa::register_min(info.bits, info.is_signed),
                                      cfa::register_max(info.bits, info.is_signed)}) {
                const std::string key = info.key;
                write_file(file, set_register("x=1\n[cfa]\n" + key + " = 5\n y\n[cmodel_top]\nz = 1\n\t2\n;c",
                                              key + "=" + std::to_string(end)));
                Registers loaded;
                loaded.load(file);
                const FoundRegister found = find_register(loaded, key);
                CHECK_MESSAGE(found.info->read(*found.where.part) == end, key);
            }
        }
    }
}

TEST_CASE("set, diff and dump as commands") {
    const TempFolder folder;
    const std::string a = folder / "a.ini", b = folder / "b.ini", c = folder / "c.ini",
                      d = folder / "new.ini";
    const auto regs = [](const std::vector<std::string> &more) { return cfatool_run({"regs"}, more); };
    write_file(a, random_file(cfa::cfa_reg_hw_table(), 1) + random_file(cfa::cmodel_top_reg_hw_table(), 2));
    write_file(b, "; kept\n[other]\nk = 1\n[cfa]\nreg_cfa_enable = 0\n");
    // The values of one file into another: the files are the same to the tool, the other section stays.
    CHECK(regs({"diff", a, b}).status == 1);
    CHECK(regs({"dump", b, "--from", a}).status == 0);
    CHECK(read_file(b).starts_with("; kept\n[other]\nk = 1\n[cfa"));
    CHECK(regs({"set", b, "reg_cfa_vw_thd=17", "reg_cfa_cmoire_edge_d0c0=-3", "-o", c}).status == 0);
    const Outcome same = regs({"diff", a, b}); // b itself did not change
    CHECK(same.status == 0);
    CHECK(same.out.empty());
    const Outcome diff = regs({"diff", c, b});
    CHECK(diff.status == 1);
    CHECK(diff.out.starts_with("reg_cfa_vw_thd: 17 against "));
    CHECK(contains(diff.out, "\nreg_cfa_cmoire_edge_d0c0: -3 against "));

    // One bad assignment: nothing is written at all.
    const std::string before = read_file(b);
    CHECK(regs({"set", b, "reg_cfa_vw_thd=1", "reg_cfa_enable=2"}).status == 2);
    CHECK(read_file(b) == before);
    CHECK(regs({"dump", d}).status == 2);
    CHECK(regs({"dump", d, "--block", "cmodel_top"}).status == 0);
    CHECK(read_file(d).starts_with("[cmodel_top]\nreg_img_bayerid = 0\nr"));
    CHECK(regs({"diff", a}).status == 2);
    CHECK(regs({"diff", a, folder / "none"}).status == 2);
    CHECK(regs({"defaults", "cfaa"}).status == 2);
    CHECK(regs({"set", a}).status == 2);
    CHECK(run_program({"/bin/ls", "-A", folder.path}).out == "a.ini\nb.ini\nc.ini\nnew.ini\n");
}
