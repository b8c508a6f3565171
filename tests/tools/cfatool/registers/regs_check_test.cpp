#include <doctest/doctest.h>

#include "tests/tools/cfatool/tool_support.h"
#include "tools/cfatool/registers/regs_check.h"
#include "tools/cfatool/registers/regs_text.h"

using namespace cfatool;

namespace {

/// The findings of a text, "line: message" each.
std::vector<std::string> findings(const std::string &text) {
    std::vector<std::string> lines;
    for (const Finding &finding : check_registers(text).findings)
        lines.push_back(std::to_string(finding.line) + ": " + finding.message);
    return lines;
}

/// Texts that begin with `start` and have one finding each, which begins with `place` and the second string.
void check_each(const std::string &start, const std::string &place,
                const std::vector<std::pair<std::string, std::string>> &texts) {
    for (const auto &[rest, want] : texts) {
        const std::string text = start + rest;
        INFO(text);
        const std::vector<std::string> found = findings(text);
        REQUIRE(found.size() == 1);
        CHECK(found[0].substr(0, place.size() + want.size()) == place + want);
    }
}

std::string utf16(const std::string &text, const std::string &mark) {
    std::string wide = mark;
    for (const char c : text)
        wide += std::string(1, c) + '\0';
    return wide;
}

} // namespace

TEST_CASE("nothing is found in a sound file") {
    for (const RegisterTable *table : {&cfa::cfa_reg_hw_table(), &cfa::cmodel_top_reg_hw_table()})
        CHECK(findings(defaults_text(*table)).empty());
    CHECK(findings("").empty());
    CHECK(findings("; c\n[other]\nreg_x = 5\n 6\n[cfa]\r\nreg_cfa_vw_thd:+09 ; c\r\n\n"
                   "reg_cfa_cmoire_edge_d0c0=-4096\n")
              .empty());
}

// clang-format off
TEST_CASE("keys and sections") {
    const std::string enable = "reg_cfa_enable = 1\n", bayer = "reg_img_bayerid = 1\n";
    check_each("", "2: ", {
        {"[cfa]\nreg_cfa_enabel = 1\n", "unknown key 'reg_cfa_enabel'; did you mean 'reg_cfa_enable'?"},
        {"[cfa]\nReg_cfa_enable = 1", "unknown key 'Reg_cfa_enable'; names are lower case: 'reg_cfa_enable'"},
        {"[cmodel_top]\n" + enable,
         "reg_cfa_enable is not read in section [cmodel_top]; it belongs in [cfa]"},
        {"[isp]\n" + bayer, "reg_img_bayerid is not read in section [isp]; it belongs in [cmodel_top]"},
        {"[cfa]\nreg_cfa_np = 1\n[cfa]\n" + enable, "unknown key 'reg_cfa_np'"}});
    check_each("", "1: ", {
        {enable, "reg_cfa_enable is not read in no section; it belongs in [cfa]"},
        {"[CFA]\n" + enable, "section [CFA] is not read; the block's section is [cfa]"},
        {"[ cfa ]\n", "section [ cfa ] is not read; the block's section is [cfa]"}});
    check_each("[cfa]\n", "4: ", {
        {enable + "reg_cfa_vw_thd = 1\n" + enable, "reg_cfa_enable is set again: line 2 has no effect"}});
}

TEST_CASE("values that are not what is stored") {
    check_each("[cfa]\nreg_cfa_vw_thd = ", "2: reg_cfa_vw_thd: ", {
        {"5000", "5000 does not fit 12 bits, 0..4095: 904 is stored"},
        {"-1", "-1 does not fit 12 bits, 0..4095: 4095 is stored"},
        {"99999999999999999999", "99999999999999999999 does not fit 12 bits, 0..4095: 4095 "},
        {"4294967296", "4294967296 does not fit 12 bits, 0..4095: 0 is stored"},
        {"0x10", "'0x10' is not a decimal number: 0 is stored"},
        {"12abc", "'12abc' is not a decimal number: 12 is stored"},
        {"", "'' is not a decimal number: 0 is stored"}});
    check_each("[cfa]\n", "2: reg_cfa_", {
        {"reg_cfa_enable = 2", "enable: 2 does not fit 1 bit, 0..1: 0 is stored"},
        {"reg_cfa_cmoire_edge_d0c0 = 4096",
         "cmoire_edge_d0c0: 4096 does not fit 13 bits signed, -4096..4095: -4096 is stored"}});
}

TEST_CASE("lines that are not what they look like") {
    check_each("[cfa]\nreg_cfa_vw_thd = 7", "", {
        {"\n   8\n", "3: indented, so it continues line 2 and sets reg_cfa_vw_thd again, to '8'"},
        {"\n[other]\na = 7\n  [cfa]\n", "5: indented, so it continues line 4 ('a') and is not read"},
        {"\nreg_cfa_enable 0\n", "3: no = and no : in this line: passed over"},
        {"\n[cfa\n", "3: section header without ]: passed over"},
        {"\n; " + std::string(197, 'x') + "\n; " + std::string(198, 'x'), "4: line of 200 characters: "},
        {std::string("\0 8\n", 4), "2: NUL byte: "}});
    check_each("", "1: ", {
        {"\xEF\xBB\xBF[cfa]\n", "byte-order mark: "},
        {utf16("[cfa]\n", "\xFF\xFE"), "UTF-16 text: "},
        {utf16("[cfa]\n", ""), "UTF-16 text: "},
        {std::string("\xFE\xFF\0[", 4), "UTF-16 text: "}});
    const std::vector<std::string> lost = findings("[cfa]\nreg_cfa_vw_thd = 7\n\treg_cfa_enable = 0\n");
    REQUIRE(lost.size() == 2); // the key above loses its value, too
    CHECK(lost[1] == "3: reg_cfa_vw_thd: 'reg_cfa_enable = 0' is not a decimal number: 0 is stored");
}

TEST_CASE("curves and limits") {
    // -4095 * 1024 / 600 = -6988.8: one off either way passes, two do not. A step of 4095 in 32 is 131040,
    // which 18 bits hold; in 31 it is more than they can.
    for (const char *sound : {"cmoire_sat_slp0 = -6989", "cmoire_sat_slp0 = -6987", "shpn_min_gain = 2048",
                              "cmoire_pd_x1 = 182\nreg_cfa_cmoire_pd_slp0 = 131040",
                              "ymoire_edge_slope = 1\nreg_cfa_ymoire_edge_th = 3"})
        CHECK(findings(std::string("[cfa]\nreg_cfa_") + sound).empty());
    check_each("[cfa]\nreg_cfa_", "", {
        {"cmoire_pd_x1 = 150",
         "2: curve cmoire_pd: reg_cfa_cmoire_pd_x1 = 150 is not above reg_cfa_cmoire_pd_x0 = 150"},
        {"cmoire_sat_slp0 = -6990", "2: curve cmoire_sat: "},
        {"cmoire_sat_slp0 = -6986", "2: curve cmoire_sat: "},
        {"cmoire_ptclr_y1 = 4000",
         "2: curve cmoire_ptclr: reg_cfa_cmoire_ptclr_slp0 = 8736 is not (y1 - y0) * 2^10 / (x1 - x0) = "
         "8533"},
        {"cmoire_pd_x1 = 181\nreg_cfa_cmoire_pd_slp0 = 131071",
         "3: curve cmoire_pd: 18 bits of reg_cfa_cmoire_pd_slp0 cannot hold (y1 - y0) * 2^10 / (x1 - x0) = "
         "135267"},
        {"cmoire_sat_slp0 = 6988", "2: curve cmoire_sat: reg_cfa_cmoire_sat_slp0 = 6988 leads away"},
        {"ymoire_edge_slope = -1", "2: curve ymoire_edge: "},
        {"ymoire_lut_low = 257", "2: curve ymoire_lut: "}, // now falls from 257 to 256
        {"shpn_min_gain = 2049", "2: reg_cfa_shpn_min_gain = 2049 is above reg_cfa_shpn_max_gain = 2048"}});
}
// clang-format on

TEST_CASE("regs check: status, form of a finding, and the registers left unset as information") {
    const TempFolder folder;
    const std::string file = folder / "c.ini";
    const auto check = [&](const std::vector<std::string> &more = {}) {
        return cfatool_run({"regs", "check", file}, more);
    };
    write_file(file, "[cfa]\nreg_cfa_enable = 1\n");
    CHECK(check().status == 0);
    CHECK(check().out ==
          file + ": 114 of 115 registers of [cfa] are left at their defaults (--unset names them)\n");
    CHECK(contains(check({"--unset"}).out, "\n  reg_cfa_shpn_gain_value\n"));
    write_file(file, "[cmodel_top]\nreg_img_width = 65536\n");
    CHECK(check().status == 1);
    CHECK(check().out.starts_with(file +
                                  ":2: reg_img_width: 65536 does not fit 16 bits, 0..65535: 0 is stored\n"));
    CHECK(contains(check({"--json"}).out, "\"line\":2,\"message\":\"reg_img_width: "));
    CHECK(cfatool_run({"regs", "check", folder / "none"}).err ==
          (folder / "none") + ": No such file or directory\n");
    CHECK(cfatool_run({"regs", "check", folder.path}).status == 2);
}
