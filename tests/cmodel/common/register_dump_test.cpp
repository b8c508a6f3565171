#include <doctest/doctest.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include <sys/stat.h>

#include "cmodel/cfa/src/reg_parse/cfa_reg.h"
#include "cmodel/cmodel_top/src/reg_parse/cmodel_top_reg.h"
#include "tests/support/support.h"

using namespace cfa;

namespace {

const std::string top_section =
    "[cmodel_top]\nreg_img_bayerid = 0\nreg_pre_img_bayerid = 0\nreg_dci_rgb0yuv1 = 0\n"
    "reg_hdr_enable = 0\nreg_3exp_hdr_enable = 0\nreg_rgbir_enable = 0\n"
    "reg_rccb_enable = 0\nreg_radial_crop_enable = 0\nreg_img_width = 1920\n"
    "reg_img_height = 1080\nreg_af_raw0yuv1 = 0\n";

} // namespace

TEST_CASE("into a new file: both parts, and what is dumped loads again") {
    const TempFolder folder;
    const std::string path = folder / "cfa.ini";
    INIT_CFA_REG("NULL");
    for (const RegisterInfo &info : cfa_reg_hw_table().registers)
        info.store(cfa_reg.hw, info.reset + 1);
    CHECK(DUMP_CFA_INI(path.c_str()) == 0);
    const std::string text = read_file(path);
    CHECK(std::count(text.begin(), text.end(), '\n') == 117);
    CHECK(text.starts_with("[cfa]\nreg_cfa_enable = 0\nreg_cfa_ymoire_enable = 1\n"));
    CHECK(text.find("\nreg_cfa_cmoire_sat_slp0 = -6987\n") != std::string::npos);
    CHECK(text.ends_with("reg_cfa_shpn_gain_value = 1\n[cfa_sw]\n"));

    INIT_CFA_REG("NULL");
    LOAD_CFA_INI(path.c_str());
    for (const RegisterInfo &info : cfa_reg_hw_table().registers) {
        INFO(info.key);
        CHECK(info.read(cfa_reg.hw) == register_truncate(info.reset + 1, info.bits, info.is_signed));
        CHECK(info.record(cfa_reg.hw).is_set == 1);
    }
    INIT_CFA_REG("NULL");
}

TEST_CASE("into an existing file: the own section is replaced, the rest stays") {
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
        INIT_CMODEL_TOP_REG("NULL");
        write_file(path, c.before);
        CHECK(c.dump(path.c_str()) == 0);
        CHECK(read_file(path) == c.after);
        CHECK_FALSE(std::filesystem::exists(path + ".temp"));
    }
}

TEST_CASE("records of a dump") {
    const TempFolder folder;
    const std::string path = folder / "f";
    INIT_CMODEL_TOP_REG("NULL");
    take_log();
    DUMP_CMODEL_TOP_INI(path.c_str());
    const std::string hw = "[DUMP_CMODEL_TOP_HW_INI] ", sw = "[DUMP_CMODEL_TOP_SW_INI] ";
    const std::string in = "Dump INI configurations in " + path;
    const std::string want[] = {"[DUMP] Dump cmodel_top INI configurations in " + path + "...",
                                hw + in + "...",
                                hw + in + " done",
                                sw + in + "...",
                                sw + in + " done",
                                "[DUMP] Dump cmodel_top INI Done...."};
    const std::vector<std::string> log = take_log();
    REQUIRE(log.size() == 6);
    for (size_t i = 0; i < 6; i++) {
        CHECK(log[i].starts_with("DEBUG cmodel_top_reg:"));
        CHECK(log[i].substr(log[i].find(": ") + 2) == want[i]);
    }
}

TEST_CASE("without a temporary file the INI file is left empty, as kept") {
    const TempFolder folder;
    const std::string path = folder / "file.ini";
    INIT_CMODEL_TOP_REG("NULL");
    write_file(path, "[other]\n");
    std::filesystem::create_symlink("/no/such/folder/file", path + ".temp");
    take_log();
    CHECK(DUMP_CMODEL_TOP_SW_INI(path.c_str()) == 0);
    const std::vector<std::string> log = take_log();
    REQUIRE(log.size() == 2);
    CHECK(log[1].ends_with(": error: no temp.ini file!"));
    CHECK(read_file(path) == "");
}
