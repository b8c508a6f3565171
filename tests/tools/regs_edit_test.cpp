#include <doctest/doctest.h>

#include "tests/tools/tool_support.h"
#include "tools/cfatool/chart_math.h"
#include "tools/cfatool/regs_edit.h"
#include "tools/cfatool/regs_text.h"

using namespace cfatool;

namespace {

/// A file that sets every register of a block at random.
std::string random_file(const RegisterTable &table, uint64_t seed) {
    std::string text = std::string("[") + table.name + "]\n";
    uint64_t i = 0;
    for (const RegisterInfo &info : table.registers)
        text += std::string(info.key) + " = " +
                std::to_string(register_truncate(static_cast<int64_t>(random_bits(seed, i++)), info.bits,
                                                 info.is_signed)) +
                "\n";
    return text;
}

} // namespace

TEST_CASE("samples and the register reference are what the register list makes") {
    for (const RegisterTable *table : {&cfa_reg_hw_table(), &cmodel_top_reg_hw_table()}) {
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
                    CHECK_MESSAGE(info.const_record(*p.part).is_set == 1, info.key);
                    CHECK_MESSAGE(info.read(*p.part) == info.reset, info.key);
                    // Its comment is the line above it and is there in full.
                    CHECK(text.find(std::string(info.meaning)) != std::string::npos);
                }
    }
    CHECK(read_file(source_root() + "/docs/registers.md") == reference_text());
}

TEST_CASE("set changes one value and no other byte") {
    const auto set = [](const std::string &text, const std::string &value) {
        return set_register(text, "reg_cfa_vw_thd=" + value);
    };
    CHECK(set("; c\n[cfa]\nreg_cfa_vw_thd = 5 ; five\r\n\n[x]\nreg_cfa_vw_thd=1", "40") ==
          "; c\n[cfa]\nreg_cfa_vw_thd = 40 ; five\r\n\n[x]\nreg_cfa_vw_thd=1");
    CHECK(set("[cfa]\nreg_cfa_vw_thd=\n", "0") == "[cfa]\nreg_cfa_vw_thd= 0\n");
    CHECK(set("[cfa]\nreg_cfa_vw_thd: ; none\n", "7") == "[cfa]\nreg_cfa_vw_thd: 7 ; none\n");
    // The line in force is the last one, also an indented one.
    CHECK(set("[cfa]\nreg_cfa_vw_thd=1\nreg_cfa_vw_thd=2\n", "3") ==
          "[cfa]\nreg_cfa_vw_thd=1\nreg_cfa_vw_thd=3\n");
    CHECK(set("[cfa]\nreg_cfa_vw_thd=1\n  2 ; two\n", "3") == "[cfa]\nreg_cfa_vw_thd=1\n  3 ; two\n");
    // A missing key goes behind the last line of its section that is read, with the line end of that place.
    CHECK(set("[cfa]\r\nreg_cfa_enable=1\r\n\r\n[x]\r\n", "3") ==
          "[cfa]\r\nreg_cfa_enable=1\r\nreg_cfa_vw_thd = 3\r\n\r\n[x]\r\n");
    CHECK(set("[cfa]\n  junk\n", "3") == "[cfa]\n  junk\nreg_cfa_vw_thd = 3\n");
    CHECK(set("[x]\na=1", "3") == "[x]\na=1\n\n[cfa]\nreg_cfa_vw_thd = 3\n");
    CHECK(set("", "3") == "[cfa]\nreg_cfa_vw_thd = 3\n");
    CHECK_THROWS_WITH(set("", "4096"), doctest::Contains("4096 does not fit 12 bits, 0..4095"));
    CHECK_THROWS_WITH(set("", "0x10"), doctest::Contains("not a plain decimal number"));
    CHECK_THROWS_WITH(set_register("", "reg_cfa_vw_th=1"),
                      doctest::Contains("did you mean 'reg_cfa_vw_thd'?"));
    CHECK_THROWS_WITH(set_register("", "reg_cfa_vw_thd"), doctest::Contains("not of the form key=value"));
}

TEST_CASE("every register set to both ends of its range comes back from a load, in messy files too") {
    const TempFolder folder;
    const std::string file = folder / "r.ini";
    Registers any;
    for (const BlockPart &p : any.parts()) {
        for (const RegisterInfo &info : p.table->registers) {
            for (const int32_t end :
                 {register_min(info.bits, info.is_signed), register_max(info.bits, info.is_signed)}) {
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
    const std::string a = folder / "a.ini", b = folder / "b.ini", c = folder / "c.ini";
    write_file(a, random_file(cfa_reg_hw_table(), 1) + random_file(cmodel_top_reg_hw_table(), 2));
    write_file(b, "; kept\n[other]\nk = 1\n[cfa]\nreg_cfa_enable = 0\n");
    // The values of one file into another: the files are the same to the tool, the other section stays.
    CHECK(cfatool_run({"regs", "diff", a, b}).status == 1);
    CHECK(cfatool_run({"regs", "dump", b, "--from", a}).status == 0);
    CHECK(cfatool_run({"regs", "diff", a, b}).status == 0);
    CHECK(read_file(b).substr(0, 25) == "; kept\n[other]\nk = 1\n[cfa");
    CHECK(cfatool_run({"regs", "diff", a, b}).out.empty());

    CHECK(
        cfatool_run({"regs", "set", b, "reg_cfa_vw_thd=17", "reg_cfa_cmoire_edge_d0c0=-3", "-o", c}).status ==
        0);
    CHECK(cfatool_run({"regs", "diff", a, b}).status == 0); // b itself did not change
    const Outcome diff = cfatool_run({"regs", "diff", c, b});
    CHECK(diff.status == 1);
    CHECK(diff.out.find("reg_cfa_vw_thd: 17 against ") == 0);
    CHECK(diff.out.find("\nreg_cfa_cmoire_edge_d0c0: -3 against ") != std::string::npos);

    // One bad assignment: nothing is written at all.
    const std::string before = read_file(b);
    CHECK(cfatool_run({"regs", "set", b, "reg_cfa_vw_thd=1", "reg_cfa_enable=2"}).status == 2);
    CHECK(read_file(b) == before);
    CHECK(cfatool_run({"regs", "dump", folder / "new.ini"}).status == 2);
    CHECK(cfatool_run({"regs", "dump", folder / "new.ini", "--block", "cmodel_top"}).status == 0);
    CHECK(read_file(folder / "new.ini").substr(0, 34) == "[cmodel_top]\nreg_img_bayerid = 0\nr");
    for (const std::vector<std::string> &args :
         std::vector<std::vector<std::string>>{{"regs", "diff", a},
                                               {"regs", "diff", a, folder / "none"},
                                               {"regs", "defaults", "cfaa"},
                                               {"regs", "set", a}})
        CHECK(cfatool_run(args).status == 2);
    const Outcome listing = run_program({"/bin/ls", "-A", folder.path});
    CHECK(listing.out == "a.ini\nb.ini\nc.ini\nnew.ini\n");
}
