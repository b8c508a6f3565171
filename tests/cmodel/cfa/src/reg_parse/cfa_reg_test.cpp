#include "cmodel/cfa/src/reg_parse/cfa_reg.h"

#include <doctest/doctest.h>

#include <map>
#include <set>
#include <string>

#include "cmodel/cmodel_top/src/reg_parse/cmodel_top_reg.h"
#include "tests/support/support.h"

namespace {

using Log = std::vector<std::string>;

// Resets the block, loads this text over it and returns the log of the load.
Log load_cfa(const std::string &text) {
    const TempFolder folder;
    write_file(folder / "cfa.ini", text);
    INIT_CFA_REG("NULL");
    take_log();
    CHECK(LOAD_CFA_INI((folder / "cfa.ini").c_str()) == 0);
    return take_log();
}

// Message of a record, and whether its label is this one.
std::string message(const std::string &record, const std::string &label) {
    return record.find(" " + label + ":") == std::string::npos ? "(other label) " + record
                                                               : record.substr(record.find(": ") + 2);
}

} // namespace

TEST_CASE("tables: keys are unique, resets fit, slopes agree with their curves") {
    std::set<std::string> keys;
    std::map<std::string, std::map<std::string, const RegisterInfo *>> curves;
    CHECK(cfa_reg_hw_table().registers.size() == 115);
    CHECK(cmodel_top_reg_hw_table().registers.size() == 11);
    for (const RegisterTable *table : {&cfa_reg_hw_table(), &cmodel_top_reg_hw_table()})
        for (const RegisterInfo &info : table->registers) {
            INFO(info.key);
            CHECK(keys.insert(info.key).second);
            CHECK(std::string(info.key).size() <= 30);
            CHECK(info.reset == register_truncate(info.reset, info.bits, info.is_signed));
            CHECK(table->find(info.key) == &info);
            CHECK(std::string(info.meaning) != "");
            if (std::string(info.curve) != "")
                curves[info.curve][info.role] = &info;
        }
    CHECK(cfa_reg_hw_table().find("reg_cfa_enabl") == nullptr);

    CHECK(curves.size() == 7);
    int with_x1 = 0;
    for (auto &[name, role] : curves) {
        const std::string curve = name;
        INFO(curve);
        CHECK(role.size() == (role.contains("x1") ? 5 : 4));
        for (const char *needed : {"x0", "y0", "slp0", "y1"})
            REQUIRE(role.contains(needed));
        CHECK(role["slp0"]->is_signed);
        if (role.contains("x1")) {
            with_x1++;
            CHECK(role["slp0"]->reset == (role["y1"]->reset - role["y0"]->reset) *
                                             (1 << role["slp0"]->fraction_bits) /
                                             (role["x1"]->reset - role["x0"]->reset));
        }
    }
    CHECK(with_x1 == 4);
}

TEST_CASE("reset: names, marks, values; the suffix is cut at 31 characters") {
    cfa_reg.hw.reg_cfa_gsig_tol = 1;
    cfa_reg.hw.reg_cfa_gsig_tol.is_set = 1;
    cfa_reg.hw.reg_cfa_gsig_tol.spare = 9;
    take_log();
    CHECK(INIT_CFA_REG("NULL") == 0);
    const Log log = take_log();
    REQUIRE(log.size() == 2);
    CHECK(message(log[0], "cfa_reg") == "[INIT] Init cfa Reg configurations...");
    CHECK(message(log[1], "cfa_reg") == "[INIT] Init cfa Reg Done....");
    CHECK(cfa_reg.hw.reg_cfa_gsig_tol == 32);
    CHECK(cfa_reg.hw.reg_cfa_gsig_tol.is_set == 0);
    CHECK(cfa_reg.hw.reg_cfa_gsig_tol.spare == 0);
    CHECK(cfa_reg.hw.reg_cfa_cmoire_sat_slp0 == -6988);
    CHECK(std::string(cfa_reg.hw.reg_cfa_gsig_tol.name) == "reg_cfa_gsig_tol");
    CHECK(std::string(cfa_reg.hw.name) == "cfa");
    CHECK(std::string(cfa_reg.sw.name) == "cfa_sw");

    const std::string suffix(40, 's');
    INIT_CFA_REG(suffix.c_str());
    CHECK(std::string(cfa_reg.hw.name) == "cfa" + std::string(28, 's'));
    CHECK(std::string(cfa_reg.sw.name) == "cfa_sw" + std::string(25, 's'));
    INIT_CMODEL_TOP_REG("_2");
    CHECK(std::string(cmodel_top_reg.hw.name) == "cmodel_top_2");
    INIT_CMODEL_TOP_REG(nullptr);
    CHECK(std::string(cmodel_top_reg.hw.name) == "cmodel_top");
    CHECK(std::string(cmodel_top_reg.sw.name) == "cmodel_top_sw");
}

TEST_CASE("load: one register set, 114 records of the others with their positions") {
    tok_idx = 5;
    const Log log = load_cfa("[cfa]\nreg_cfa_gsig_tol = 40\n");
    CHECK(tok_idx == 0);
    CHECK(cfa_reg.hw.reg_cfa_gsig_tol == 40);
    CHECK(cfa_reg.hw.reg_cfa_gsig_tol.is_set == 1);
    REQUIRE(log.size() == 116);
    CHECK(message(log[0], "cfa_reg") == "[LOAD] Load cfa INI configurations...");
    CHECK(message(log[1], "cfa_reg") == "[LOAD] Load cfa Done...");
    size_t at = 2;
    int line = 10;
    for (const RegisterInfo &info : cfa_reg_hw_table().registers) {
        if (std::string(info.key) != "reg_cfa_gsig_tol") {
            CHECK(log[at++] == "ERROR cfa_reg_hw_def:" + std::to_string(line) + ": [REG] cfa.hw." + info.key +
                                   " is not set in .ini file");
            CHECK(info.read(cfa_reg.hw) == info.reset);
        }
        line++;
    }
    CHECK(at == log.size());
    CHECK(line == 125);
}

TEST_CASE("load: sections, values, repeated keys") {
    load_cfa("[cfa]\n"
             "reg_cfa_cmoire_sat_slp0 = 255156\n"
             "reg_cfa_force_dir_sel = 7\n"
             "reg_cfa_enable = 0 ; off\n"
             "reg_cfa_sige_thd = 1\nreg_cfa_sige_thd : 2\n"
             "reg_cfa_gsig_tol = 0x10\n"
             "reg_cfa_rbsig_tol = 12abc\n"
             "reg_cfa_edge_tol =\n"
             "reg_cfa_vw_thd = 5000\n"
             "reg_cfa_cmoire_lumatg = -1\n"
             "reg_cfa_cmoire_edge_d0c0 = -1\n"
             "reg_cfa_ghp_thd = 99999999999999999999999\n"
             "reg_cfa_ymoire_lut_slope = +7\n"
             "REG_CFA_OUT_SEL = 1\n"
             "no setting\n"
             "reg_cfa_shpn_min_y = 8\n"
             "[CFA]\nreg_cfa_ymoire_np = 1\n[cfa_sw]\nreg_cfa_ymoire_np = 2\n[]\nreg_cfa_ymoire_np = 3\n");
    CHECK(cfa_reg.hw.reg_cfa_cmoire_sat_slp0 == -6988);
    CHECK(cfa_reg.hw.reg_cfa_force_dir_sel == 3);
    CHECK(cfa_reg.hw.reg_cfa_enable == 0);
    CHECK(cfa_reg.hw.reg_cfa_sige_thd == 2);
    CHECK(cfa_reg.hw.reg_cfa_gsig_tol == 0);
    CHECK(cfa_reg.hw.reg_cfa_rbsig_tol == 12);
    CHECK(cfa_reg.hw.reg_cfa_edge_tol == 0);
    CHECK(cfa_reg.hw.reg_cfa_edge_tol.is_set == 1);
    CHECK(cfa_reg.hw.reg_cfa_vw_thd == 904);
    CHECK(cfa_reg.hw.reg_cfa_cmoire_lumatg == 4095);
    CHECK(cfa_reg.hw.reg_cfa_cmoire_edge_d0c0 == -1);
    CHECK(cfa_reg.hw.reg_cfa_ghp_thd == 65535);
    CHECK(cfa_reg.hw.reg_cfa_ymoire_lut_slope == 7);
    CHECK(cfa_reg.hw.reg_cfa_out_sel == 0);
    CHECK(cfa_reg.hw.reg_cfa_shpn_min_y == 8);
    CHECK(cfa_reg.hw.reg_cfa_ymoire_np == 16);
}

TEST_CASE("load: every register at both ends of its range and beyond; binary files") {
    for (const int64_t beyond : {-1, 0, 1}) {
        for (const bool upper : {false, true}) {
            std::string text = "[cfa]\n";
            const auto number = [&](const RegisterInfo &info) {
                return int64_t{upper ? register_max(info.bits, info.is_signed)
                                     : register_min(info.bits, info.is_signed)} +
                       beyond;
            };
            for (const RegisterInfo &info : cfa_reg_hw_table().registers)
                text += std::string(info.key) + "=" + std::to_string(number(info)) + "\n";
            CHECK(load_cfa(text).size() == 2);
            for (const RegisterInfo &info : cfa_reg_hw_table().registers) {
                INFO(info.key);
                CHECK(info.read(cfa_reg.hw) == register_truncate(number(info), info.bits, info.is_signed));
            }
        }
    }
    // UTF-16: NULs between all characters; nothing is set.
    std::string wide = "\xFF\xFE";
    for (const char c : std::string("[cfa]\nreg_cfa_enable = 0\n")) {
        wide += c;
        wide += '\0';
    }
    CHECK(load_cfa(wide).size() == 117);
}

TEST_CASE("load: a file that cannot be opened leaves the values and says so; a folder sets nothing") {
    INIT_CMODEL_TOP_REG("NULL");
    take_log();
    CHECK(LOAD_CMODEL_TOP_INI("/no/such/file") == 1);
    Log log = take_log();
    REQUIRE(log.size() == 2);
    CHECK(message(log[0], "cmodel_top_reg") == "[LOAD] Load cmodel_top INI configurations...");
    CHECK(message(log[1], "cmodel_top_reg") == "Can't handle cmodel_top_reg.");
    CHECK(cmodel_top_reg.hw.reg_img_bayerid == 0);
    CHECK(cmodel_top_reg.hw.reg_img_width == 1920);

    CHECK(LOAD_CMODEL_TOP_INI("/tmp") == 0);
    log = take_log();
    REQUIRE(log.size() == 13);
    CHECK(log[2] ==
          "ERROR cmodel_top_reg_hw_def:10: [REG] cmodel_top.hw.reg_img_bayerid is not set in .ini file");
    CHECK(log[12] ==
          "ERROR cmodel_top_reg_hw_def:20: [REG] cmodel_top.hw.reg_af_raw0yuv1 is not set in .ini file");
}

TEST_CASE("handlers return 1 for every line") {
    INIT_CFA_REG("NULL");
    CHECK(cfa_reg_loader(&cfa_reg, "cfa", "reg_cfa_enable", "0") == 1);
    CHECK(cfa_reg_loader(&cfa_reg, "other", "key", "value") == 1);
    CHECK(cfa_reg_hw_load(&cfa_reg, "cfa", "unknown", "") == 1);
    CHECK(cfa_reg_sw_load(&cfa_reg, "cfa_sw", "unknown", "") == 1);
    CHECK(cmodel_top_reg_loader(&cmodel_top_reg, "cmodel_top", "reg_img_bayerid", "3") == 1);
    CHECK(cmodel_top_reg.hw.reg_img_bayerid == 3);
}

TEST_CASE("print: every register with its sign and position, both parts") {
    INIT_CFA_REG("NULL");
    take_log();
    CHECK(PRINT_CFA_REG() == 0);
    const Log log = take_log();
    REQUIRE(log.size() == 119);
    CHECK(message(log[0], "cfa_reg") == "[PRINT] Print cfa Reg configurations ...");
    CHECK(log[1] == "DEBUG cfa_reg_hw_def:8: [cfa]");
    CHECK(log[2] == "DEBUG cfa_reg_hw_def:10: cfa.hw.reg_cfa_enable = 1");
    CHECK(log[2 + 67] == "DEBUG cfa_reg_hw_def:77: cfa.hw.reg_cfa_cmoire_sat_slp0 = -6988");
    CHECK(log[116] == "DEBUG cfa_reg_hw_def:124: cfa.hw.reg_cfa_shpn_gain_value = 0");
    CHECK(log[117] == "DEBUG cfa_reg_sw_def:8: [cfa_sw]");
    CHECK(message(log[118], "cfa_reg") == "[PRINT] Print cfa Reg Done....");
}
