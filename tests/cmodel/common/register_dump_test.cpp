#include <doctest/doctest.h>

#include <filesystem>

#include "tests/support/registers.h"
#include "tests/support/support.h"

using namespace cfa;

namespace {

const std::string top_section =
    "[cmodel_top]\nreg_img_bayerid = 0\nreg_pre_img_bayerid = 0\nreg_dci_rgb0yuv1 = 0\n"
    "reg_hdr_enable = 0\nreg_3exp_hdr_enable = 0\nreg_rgbir_enable = 0\n"
    "reg_rccb_enable = 0\nreg_radial_crop_enable = 0\nreg_img_width = 1920\n"
    "reg_img_height = 1080\nreg_af_raw0yuv1 = 0\n";

} // namespace

TEST_CASE_FIXTURE(FreshRegisters,
                  "into a new file: both parts in the order of the list, and what is dumped loads again") {
    const TempFolder folder;
    const std::string path = folder / "cfa.ini";
    std::string want = "[cfa]\n";
    for (const RegisterInfo &info : cfa_reg_hw_table().registers) {
        info.store(cfa_reg.hw, info.reset + 1);
        want += std::string(info.key) + " = " +
                std::to_string(register_truncate(info.reset + 1, info.bits, info.is_signed)) + "\n";
    }
    CHECK(DUMP_CFA_INI(path.c_str()) == 0);
    CHECK(read_file(path) == want + "[cfa_sw]\n");
    CHECK(want.find("\nreg_cfa_cmoire_sat_slp0 = -6987\n") != std::string::npos);
    reset();
    LOAD_CFA_INI(path.c_str());
    for (const RegisterInfo &info : cfa_reg_hw_table().registers)
        CHECK(info.read(cfa_reg.hw) == register_truncate(info.reset + 1, info.bits, info.is_signed));
}

TEST_CASE_FIXTURE(FreshRegisters, "into an existing file: the own section is replaced, the rest stays") {
    const TempFolder folder;
    const std::string path = folder / "file.ini";
    const auto both = DUMP_CMODEL_TOP_INI, hw = DUMP_CMODEL_TOP_HW_INI, sw = DUMP_CMODEL_TOP_SW_INI;
    const std::string long_line = std::string("k = ") + '\0' + std::string(100000, 'v') + "\n";
    struct Case {
        int (*dump)(const char *);
        std::string before, after;
    };
    for (const Case &c : {
             Case{both, "[other]\na = 1\n[cmodel_top]\nreg_img_bayerid = 3\n[tail]\nb = 2\n",
                  "[other]\na = 1\n" + top_section + "\n[tail]\nb = 2\n[cmodel_top_sw]\n"},
             Case{sw, "[cmodel_top_sw]\nold\n[TAIL]\nb = 2\n[c]\n",
                  "[cmodel_top_sw]\n\n[TAIL]\nb = 2\n[c]\n"},
             Case{hw, "[cmodel_top]\r\nold\r\n[tail]\r\n", top_section + "\n[tail]\r\n"},
             Case{hw, "", top_section},
             Case{hw, "[CMODEL_TOP]\nx = 1\n", "[CMODEL_TOP]\nx = 1\n" + top_section},
             Case{hw, "[cmodel_top] \nx\n", "[cmodel_top] \nx\n" + top_section},
             // Without a line feed the header is not the part's own.
             Case{sw, "[cmodel_top_sw]", "[cmodel_top_sw][cmodel_top_sw]\n"},
             // A run of letters before "]" is a header too, a blank in it makes it a line.
             Case{sw, "[cmodel_top_sw]\nold\nab]\nx\n", "[cmodel_top_sw]\n\nab]\nx\n"},
             Case{sw, "[cmodel_top_sw]\n[a b]\nx\n", "[cmodel_top_sw]\n"},
             // Twice the own section: written twice.
             Case{sw, "[cmodel_top_sw]\n[cmodel_top_sw]\n", "[cmodel_top_sw]\n\n[cmodel_top_sw]\n"},
             Case{sw, long_line, long_line + "[cmodel_top_sw]\n"},
         }) {
        INFO(c.before);
        write_file(path, c.before);
        CHECK(c.dump(path.c_str()) == 0);
        CHECK(read_file(path) == c.after);
        CHECK_FALSE(std::filesystem::exists(path + ".temp"));
    }
}

TEST_CASE_FIXTURE(FreshRegisters,
                  "records of a dump; without a temporary file the INI file is left empty, as kept") {
    const TempFolder folder;
    const std::string path = folder / "file.ini", in = "] Dump INI configurations in " + path;
    const auto check_log = [&](const std::vector<std::string> &want) {
        const std::vector<std::string> log = take_log();
        REQUIRE(log.size() == want.size());
        for (size_t i = 0; i < log.size(); ++i) {
            CHECK(log[i].starts_with("DEBUG cmodel_top_reg:"));
            CHECK(log[i].substr(log[i].find(": ") + 2) == want[i]);
        }
    };
    take_log();
    DUMP_CMODEL_TOP_INI(path.c_str());
    check_log({"[DUMP] Dump cmodel_top INI configurations in " + path + "...",
               "[DUMP_CMODEL_TOP_HW_INI" + in + "...", "[DUMP_CMODEL_TOP_HW_INI" + in + " done",
               "[DUMP_CMODEL_TOP_SW_INI" + in + "...", "[DUMP_CMODEL_TOP_SW_INI" + in + " done",
               "[DUMP] Dump cmodel_top INI Done...."});
    std::filesystem::create_symlink("/no/such/folder/file", path + ".temp");
    CHECK(DUMP_CMODEL_TOP_SW_INI(path.c_str()) == 0);
    check_log({"[DUMP_CMODEL_TOP_SW_INI" + in + "...", "error: no temp.ini file!"});
    CHECK(read_file(path) == "");
}

// A program that runs can be read, but not be opened for writing, not even by the superuser.
TEST_CASE_FIXTURE(FreshRegisters, "a temporary file that can only be read is none: the INI file stays") {
    const TempFolder folder;
    const std::string path = folder / "file.ini";
    write_file(path, "[other]\n");
    std::filesystem::create_symlink("/proc/self/exe", path + ".temp");
    take_log();
    CHECK(DUMP_CMODEL_TOP_SW_INI(path.c_str()) == 0);
    CHECK(take_log().back().ends_with(": error: no temp.ini file!"));
    CHECK((read_file(path) == "[other]\n"));
}
