#include "cmodel/cfa/src/reg_parse/cfa_reg.h"

#include <doctest/doctest.h>

#include <map>
#include <set>
#include <string>

#include "cmodel/cmodel_top/src/reg_parse/cmodel_top_reg.h"
#include "tests/support/support.h"

using namespace cfa;

namespace {

// Resets the block, loads this text over it and returns the log of the load.
std::vector<std::string> load_cfa(const std::string &text) {
    const TempFolder folder;
    write_file(folder / "cfa.ini", text);
    INIT_CFA_REG("NULL");
    take_log();
    CHECK(LOAD_CFA_INI((folder / "cfa.ini").c_str()) == 0);
    return take_log();
}

} // namespace

TEST_CASE("tables: keys are unique, resets fit, slopes agree with their curves") {
    std::set<std::string> keys;
    std::map<std::string, std::map<CurveRole, const RegisterInfo *>> curves;
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
            if (info.curve.role != CurveRole::none)
                curves[info.curve.name][info.curve.role] = &info;
        }
    CHECK(cfa_reg_hw_table().find("reg_cfa_enabl") == nullptr);

    CHECK(curves.size() == 7);
    int with_x1 = 0;
    for (auto &[name, role] : curves) {
        const std::string curve = name;
        INFO(curve);
        CHECK(role.size() == (role.contains(CurveRole::x1) ? 5 : 4));
        for (const CurveRole needed : {CurveRole::x0, CurveRole::y0, CurveRole::slope, CurveRole::y1})
            REQUIRE(role.contains(needed));
        CHECK(role[CurveRole::slope]->is_signed);
        if (role.contains(CurveRole::x1)) {
            with_x1++;
            CHECK(role[CurveRole::slope]->reset ==
                  (role[CurveRole::y1]->reset - role[CurveRole::y0]->reset) *
                      (1 << role[CurveRole::slope]->curve.fraction_bits) /
                      (role[CurveRole::x1]->reset - role[CurveRole::x0]->reset));
        }
    }
    CHECK(with_x1 == 4);
}

TEST_CASE("reset: names, marks, values; the suffix is cut at 31 characters") {
    auto &reg = cfa_reg.hw.reg_cfa_gsig_tol;
    reg = 1;
    reg.is_set = 1;
    reg.spare = 9;
    CHECK(INIT_CFA_REG("NULL") == 0);
    CHECK(reg == 32);
    CHECK(reg.is_set == 0);
    CHECK(reg.spare == 0);
    CHECK(std::string(reg.name) == "reg_cfa_gsig_tol");
    CHECK(cfa_reg.hw.reg_cfa_cmoire_sat_slp0 == -6988);

    const auto names = [](const auto &block) { return std::string(block.hw.name) + " " + block.sw.name; };
    CHECK(names(cfa_reg) == "cfa cfa_sw");
    INIT_CFA_REG(std::string(40, 's').c_str());
    CHECK(names(cfa_reg) == "cfa" + std::string(28, 's') + " cfa_sw" + std::string(25, 's'));
    INIT_CMODEL_TOP_REG("_2");
    CHECK(names(cmodel_top_reg) == "cmodel_top_2 cmodel_top_sw_2");
    INIT_CMODEL_TOP_REG(nullptr);
    CHECK(names(cmodel_top_reg) == "cmodel_top cmodel_top_sw");
}

// The records around those of the registers, and those of printing: cfa_main_test.
TEST_CASE("load: one register set, 114 records of the others with their positions") {
    tok_idx = 5;
    const std::vector<std::string> log = load_cfa("[cfa]\nreg_cfa_gsig_tol = 40\n");
    CHECK(tok_idx == 0);
    CHECK(cfa_reg.hw.reg_cfa_gsig_tol == 40);
    CHECK(cfa_reg.hw.reg_cfa_gsig_tol.is_set == 1);
    REQUIRE(log.size() == 116);
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
    CHECK(line == 125);
}

TEST_CASE("load: sections, values, repeated keys") {
    struct Case {
        std::string text, key;
        int32_t want;
    };
    for (const Case &c : {
             Case{"reg_cfa_cmoire_sat_slp0 = 255156", "reg_cfa_cmoire_sat_slp0", -6988},
             Case{"reg_cfa_force_dir_sel = 7", "reg_cfa_force_dir_sel", 3},
             Case{"reg_cfa_enable = 0 ; off", "reg_cfa_enable", 0},
             Case{"reg_cfa_sige_thd = 1\nreg_cfa_sige_thd : 2", "reg_cfa_sige_thd", 2},
             Case{"reg_cfa_gsig_tol = 0x10", "reg_cfa_gsig_tol", 0},
             Case{"reg_cfa_gsig_tol = 12abc", "reg_cfa_gsig_tol", 12},
             Case{"reg_cfa_gsig_tol =", "reg_cfa_gsig_tol", 0},
             Case{"reg_cfa_gsig_tol = +7", "reg_cfa_gsig_tol", 7},
             Case{"REG_CFA_OUT_SEL = 1", "reg_cfa_out_sel", 0},
             Case{"no setting\nreg_cfa_shpn_min_y = 8", "reg_cfa_shpn_min_y", 8},
             Case{"[CFA]\nreg_cfa_ymoire_np = 1", "reg_cfa_ymoire_np", 16},
             Case{"[cfa_sw]\nreg_cfa_ymoire_np = 2", "reg_cfa_ymoire_np", 16},
             Case{"[]\nreg_cfa_ymoire_np = 3", "reg_cfa_ymoire_np", 16},
         }) {
        INFO(c.text);
        load_cfa("[cfa]\n" + c.text + "\n");
        CHECK(cfa_reg_hw_table().find(c.key.c_str())->read(cfa_reg.hw) == c.want);
    }
    CHECK(load_cfa("[cfa]\nreg_cfa_gsig_tol =\n").size() == 116); // an empty value counts as set
}

TEST_CASE("load: every register at both ends of its range and beyond") {
    for (const int64_t beyond : {-1, 0, 1})
        for (const bool upper : {false, true}) {
            const auto number = [&](const RegisterInfo &info) {
                const auto end = upper ? register_max : register_min;
                return end(info.bits, info.is_signed) + beyond;
            };
            std::string text = "[cfa]\n";
            for (const RegisterInfo &info : cfa_reg_hw_table().registers)
                text += std::string(info.key) + "=" + std::to_string(number(info)) + "\n";
            CHECK(load_cfa(text).size() == 2);
            for (const RegisterInfo &info : cfa_reg_hw_table().registers) {
                INFO(info.key);
                const int32_t got = info.read(cfa_reg.hw);
                CHECK(got == register_truncate(number(info), info.bits, info.is_signed));
                CHECK((got == number(info)) == (beyond == 0 || (beyond < 0) == upper));
            }
        }
}

TEST_CASE("load: a file that cannot be opened leaves the values and says so") {
    INIT_CMODEL_TOP_REG("NULL");
    take_log();
    CHECK(LOAD_CMODEL_TOP_INI("/no/such/file") == 1);
    const std::vector<std::string> log = take_log();
    REQUIRE(log.size() == 2);
    CHECK(log[0].ends_with(": [LOAD] Load cmodel_top INI configurations..."));
    CHECK(matches(log[1], "DEBUG cmodel_top_reg:[0-9]+: Can't handle cmodel_top_reg\\."));
    CHECK(cmodel_top_reg.hw.reg_img_width == 1920);
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
