#include <doctest/doctest.h>

#include <filesystem>

#include "tests/support/registers.h"
#include "tests/support/support.h"

using namespace cfa;

namespace {

// What the sections of the top level look like after a reset.
std::string top_section() {
    std::string text = "[cmodel_top]\n";
    for (const RegisterInfo &info : cmodel_top_reg_hw_table().registers)
        text += std::string(info.key) + " = " + std::to_string(info.reset) + "\n";
    return text;
}

} // namespace

TEST_CASE_FIXTURE(
    FreshRegisters,
    "a dump into a file of any content: the own section is replaced, the rest stays; its records") {
    const TempFolder folder;
    const std::string path = folder / "file.ini", temp = path + ".temp", top = top_section(),
                      none = "(no file)";
    CHECK(top.starts_with("[cmodel_top]\nreg_img_bayerid = 0\n"));
    const auto all = DUMP_CMODEL_TOP_INI, hw = DUMP_CMODEL_TOP_HW_INI, sw = DUMP_CMODEL_TOP_SW_INI;
    const std::string long_line = std::string("k = ") + '\0' + std::string(100000, 'v') + "\n";
    struct Case {
        int (*dump)(const char *);
        std::string before, after;
    };
    for (const Case &c : {
             Case{all, none, top + "[cmodel_top_sw]\n"},
             Case{all, "[other]\na = 1\n[cmodel_top]\nreg_img_bayerid = 3\n[tail]\nb = 2\n",
                  "[other]\na = 1\n" + top + "\n[tail]\nb = 2\n[cmodel_top_sw]\n"},
             Case{sw, "[cmodel_top_sw]\nold\n[TAIL]\nb = 2\n[c]\n",
                  "[cmodel_top_sw]\n\n[TAIL]\nb = 2\n[c]\n"},
             Case{hw, "[cmodel_top]\r\nold\r\n[tail]\r\n", top + "\n[tail]\r\n"},
             Case{hw, "", top},
             Case{hw, "[CMODEL_TOP]\nx = 1\n", "[CMODEL_TOP]\nx = 1\n" + top},
             Case{hw, "[cmodel_top] \nx\n", "[cmodel_top] \nx\n" + top},
             // Without a line feed the header is not the part's own.
             Case{sw, "[cmodel_top_sw]", "[cmodel_top_sw][cmodel_top_sw]\n"},
             // A run of letters before "]" is a header too, a blank in it makes it a line.
             Case{sw, "[cmodel_top_sw]\nold\nab]\nx\n", "[cmodel_top_sw]\n\nab]\nx\n"},
             Case{sw, "[cmodel_top_sw]\n[a b]\nx\n", "[cmodel_top_sw]\n"},
             Case{sw, "[cmodel_top_sw]\n[cmodel_top_sw]\n",
                  "[cmodel_top_sw]\n\n[cmodel_top_sw]\n"}, // written twice
             Case{sw, long_line, long_line + "[cmodel_top_sw]\n"},
         }) {
        INFO(c.before);
        std::filesystem::remove(path);
        if (c.before != none)
            write_file(path, c.before);
        take_log();
        CHECK(c.dump(path.c_str()) == 0);
        CHECK(read_file(path) == c.after);
        CHECK(read_file(temp) == none);
        std::string said;
        for (const std::string &record : take_log()) {
            CHECK(record.starts_with("DEBUG cmodel_top_reg:"));
            said += record.substr(record.find(": ") + 2) + "\n";
        }
        const std::string in = "] Dump INI configurations in " + path,
                          hw_part = "[DUMP_CMODEL_TOP_HW_INI" + in, sw_part = "[DUMP_CMODEL_TOP_SW_INI" + in;
        const std::string parts = (c.dump == sw ? "" : hw_part + "...\n" + hw_part + " done\n") +
                                  (c.dump == hw ? "" : sw_part + "...\n" + sw_part + " done\n");
        const std::string block = "[DUMP] Dump cmodel_top INI ";
        CHECK(said == (c.dump != all
                           ? parts
                           : block + "configurations in " + path + "...\n" + parts + block + "Done....\n"));
    }
    // Without a temporary file: one that cannot be made (kept: the INI file is empty then), one that can only
    // be read: a program that runs, not even by the superuser to be opened for writing.
    for (const auto &[target, left] :
         {std::pair{"/no/such/folder/file", ""}, {"/proc/self/exe", "[other]\n"}}) {
        write_file(path, "[other]\n");
        std::filesystem::remove(temp);
        std::filesystem::create_symlink(target, temp);
        CHECK(hw(path.c_str()) == 0);
        CHECK(take_log().back().ends_with(": error: no temp.ini file!"));
        CHECK((read_file(path) == left));
    }
}
