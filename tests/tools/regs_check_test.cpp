#include <doctest/doctest.h>

#include "tests/tools/tool_support.h"
#include "tools/cfatool/regs_check.h"
#include "tools/cfatool/regs_text.h"

using namespace cfatool;

namespace {

/// The findings of a text, "line: message" each.
std::vector<std::string> findings(const std::string &text) {
    std::vector<std::string> lines;
    for (const Finding &finding : check_registers(text).findings)
        lines.push_back(std::to_string(finding.line) + ": " + finding.message);
    return lines;
}

/// A text with one finding, which begins with `want`.
void check_one(const std::string &text, const std::string &want) {
    const std::vector<std::string> found = findings(text);
    CAPTURE(text);
    REQUIRE(found.size() == 1);
    CHECK(found[0].substr(0, want.size()) == want);
}

std::string utf16(const std::string &text, const std::string &mark) {
    std::string wide = mark;
    for (const char c : text)
        wide += std::string(1, c) + '\0';
    return wide;
}

} // namespace

TEST_CASE("nothing is found in a sound file") {
    for (const RegisterTable *table : {&cfa_reg_hw_table(), &cmodel_top_reg_hw_table()})
        CHECK(findings(defaults_text(*table)).empty());
    CHECK(findings("").empty());
    CHECK(findings("; c\n[other]\nreg_x = 5\n 6\n[cfa]\r\nreg_cfa_vw_thd:+09 ; c\r\n\n"
                   "reg_cfa_cmoire_edge_d0c0=-4096\n")
              .empty());
}

TEST_CASE("keys and sections") {
    check_one("[cfa]\nreg_cfa_enabel = 1\n",
              "2: unknown key 'reg_cfa_enabel'; did you mean 'reg_cfa_enable'?");
    check_one("[cfa]\nReg_cfa_enable = 1\n",
              "2: unknown key 'Reg_cfa_enable'; names are lower case: 'reg_cfa_enable'");
    check_one("[cmodel_top]\nreg_cfa_enable = 1\n",
              "2: reg_cfa_enable is not read in section [cmodel_top]; it belongs in [cfa]");
    check_one("[isp]\nreg_img_bayerid = 1\n",
              "2: reg_img_bayerid is not read in section [isp]; it belongs in [cmodel_top]");
    check_one("reg_cfa_enable = 1\n", "1: reg_cfa_enable is not read in no section; it belongs in [cfa]");
    check_one("[CFA]\nreg_cfa_enable = 1\n", "1: section [CFA] is not read; the block's section is [cfa]");
    check_one("[ cfa ]\n", "1: section [ cfa ] is not read; the block's section is [cfa]");
    check_one("[cfa]\nreg_cfa_np = 1\n[cfa]\nreg_cfa_enable = 1\n", "2: unknown key 'reg_cfa_np'");
    check_one("[cfa]\nreg_cfa_enable = 0\nreg_cfa_vw_thd = 1\nreg_cfa_enable = 1\n",
              "4: reg_cfa_enable is set again: line 2 has no effect");
}

TEST_CASE("values that are not what is stored") {
    const auto check_value = [](const std::string &key, const std::string &value, const std::string &want) {
        check_one("[cfa]\n" + key + " = " + value + "\n", "2: " + key + ": " + want);
    };
    check_value("reg_cfa_vw_thd", "5000", "5000 does not fit 12 bits, 0..4095: 904 is stored");
    check_value("reg_cfa_vw_thd", "-1", "-1 does not fit 12 bits, 0..4095: 4095 is stored");
    check_value("reg_cfa_enable", "2", "2 does not fit 1 bit, 0..1: 0 is stored");
    check_value("reg_cfa_cmoire_edge_d0c0", "4096",
                "4096 does not fit 13 bits signed, -4096..4095: -4096 is stored");
    check_value("reg_cfa_vw_thd", "99999999999999999999",
                "99999999999999999999 does not fit 12 bits, 0..4095: 4095 ");
    check_value("reg_cfa_vw_thd", "4294967296", "4294967296 does not fit 12 bits, 0..4095: 0 is stored");
    check_value("reg_cfa_vw_thd", "0x10", "'0x10' is not a decimal number: 0 is stored");
    check_value("reg_cfa_vw_thd", "12abc", "'12abc' is not a decimal number: 12 is stored");
    check_value("reg_cfa_vw_thd", "1 # one", "'1 # one' is not a decimal number: 1 is stored");
    check_value("reg_cfa_vw_thd", "", "'' is not a decimal number: 0 is stored");
}

TEST_CASE("lines that are not what they look like") {
    check_one("[cfa]\nreg_cfa_vw_thd = 7\n   8\n",
              "3: indented, so it continues line 2 and sets reg_cfa_vw_thd again, to '8'");
    const std::vector<std::string> lost = findings("[cfa]\nreg_cfa_vw_thd = 7\n\treg_cfa_enable = 0\n");
    REQUIRE(lost.size() == 2); // the key above loses its value, too
    CHECK(lost[1] == "3: reg_cfa_vw_thd: 'reg_cfa_enable = 0' is not a decimal number: 0 is stored");
    check_one("[other]\na = 7\n  [cfa]\n", "3: indented, so it continues line 2 ('a') and is not read");
    check_one("[cfa]\nreg_cfa_enable 0\n", "2: no = and no : in this line: passed over");
    check_one("[cfa\n", "1: section header without ]: passed over");
    check_one("[cfa]\n; " + std::string(197, 'x') + "\n; " + std::string(198, 'x') + "\n",
              "3: line of 200 characters: ");
    check_one("[cfa]\nreg_cfa_vw_thd = 7" + std::string("\0 8\n", 4), "2: NUL byte: ");
    check_one("\xEF\xBB\xBF[cfa]\n", "1: byte-order mark: ");
    for (const std::string &wide :
         {utf16("[cfa]\n", "\xFF\xFE"), utf16("[cfa]\n", ""), std::string("\xFE\xFF\0[", 4)})
        check_one(wide, "1: UTF-16 text: ");
}

TEST_CASE("curves and limits") {
    check_one("[cfa]\nreg_cfa_cmoire_pd_x1 = 150\n",
              "2: curve cmoire_pd: reg_cfa_cmoire_pd_x1 = 150 is not above reg_cfa_cmoire_pd_x0 = 150");
    // -4095 * 1024 / 600 = -6988.8: one off either way passes, two do not.
    for (const char *slope : {"-6989", "-6987"})
        CHECK(findings(std::string("[cfa]\nreg_cfa_cmoire_sat_slp0 = ") + slope + "\n").empty());
    for (const char *slope : {"-6990", "-6986"})
        check_one(std::string("[cfa]\nreg_cfa_cmoire_sat_slp0 = ") + slope + "\n", "2: curve cmoire_sat: ");
    // The levels change and the slope stays; then a step of 4095 in 32 that 18 bits cannot hold: 131040 fits.
    check_one(
        "[cfa]\nreg_cfa_cmoire_ptclr_y1 = 4000\n",
        "2: curve cmoire_ptclr: reg_cfa_cmoire_ptclr_slp0 = 8736 is not (y1 - y0) * 2^10 / (x1 - x0) = 8533");
    CHECK(findings("[cfa]\nreg_cfa_cmoire_pd_x1 = 182\nreg_cfa_cmoire_pd_slp0 = 131040\n").empty());
    check_one("[cfa]\nreg_cfa_cmoire_pd_x1 = 181\nreg_cfa_cmoire_pd_slp0 = 131071\n",
              "3: curve cmoire_pd: 18 bits of reg_cfa_cmoire_pd_slp0 cannot hold (y1 - y0) * 2^10 / (x1 - "
              "x0) = 135267");
    check_one("[cfa]\nreg_cfa_cmoire_sat_slp0 = 6988\n",
              "2: curve cmoire_sat: reg_cfa_cmoire_sat_slp0 = 6988 leads away");
    check_one("[cfa]\nreg_cfa_ymoire_edge_slope = -1\n", "2: curve ymoire_edge: ");
    check_one("[cfa]\nreg_cfa_ymoire_lut_low = 257\n", "2: curve ymoire_lut: "); // now falls from 257 to 256
    CHECK(findings("[cfa]\nreg_cfa_ymoire_edge_slope = 1\nreg_cfa_ymoire_edge_th = 3\n").empty());
    CHECK(findings("[cfa]\nreg_cfa_shpn_min_gain = 2048\n").empty());
    check_one("[cfa]\nreg_cfa_shpn_min_gain = 2049\n",
              "2: reg_cfa_shpn_min_gain = 2049 is above reg_cfa_shpn_max_gain = 2048");
}

TEST_CASE("regs check: status, form of a finding, and the registers left unset as information") {
    const TempFolder folder;
    const std::string file = folder / "c.ini";
    write_file(file, "[cfa]\nreg_cfa_enable = 1\n");
    const Outcome sound = cfatool_run({"regs", "check", file});
    CHECK(sound.status == 0);
    CHECK(sound.out ==
          file + ": 114 of 115 registers of [cfa] are left at their defaults (--unset names them)\n");
    CHECK(cfatool_run({"regs", "check", file, "--unset"}).out.find("\n  reg_cfa_shpn_gain_value\n") !=
          std::string::npos);
    write_file(file, "[cmodel_top]\nreg_img_width = 65536\n");
    const Outcome found = cfatool_run({"regs", "check", file});
    CHECK(found.status == 1);
    CHECK(found.out.find(file + ":2: reg_img_width: 65536 does not fit 16 bits, 0..65535: 0 is stored\n") ==
          0);
    CHECK(cfatool_run({"regs", "check", file, "--json"})
              .out.find("\"line\": 2, \"message\": \"reg_img_width: ") != std::string::npos);
    CHECK(cfatool_run({"regs", "check", folder / "none"}).err ==
          (folder / "none") + ": No such file or directory\n");
    CHECK(cfatool_run({"regs", "check", folder.path}).status == 2);
}
