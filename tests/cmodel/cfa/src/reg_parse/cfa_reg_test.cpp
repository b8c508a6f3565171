#include <doctest/doctest.h>

#include "tests/support/registers.h"
#include "tests/support/support.h"

using namespace cfa;

using namespace std::string_literals;

namespace {

void load_cfa(const std::string &text) {
    const TempFolder folder;
    write_file(folder / "cfa.ini", text);
    INIT_CFA_REG("NULL");
    CHECK(LOAD_CFA_INI((folder / "cfa.ini").c_str()) == 0);
}

} // namespace

TEST_CASE("reset: names, marks, values, suffixes; what the loaders return; signs in formulas") {
    auto &reg = cfa_reg.hw.reg_cfa_gsig_tol;
    reg = 1;
    reg.is_set = reg.spare = 9;
    CHECK(INIT_CFA_REG("NULL") == 0);
    CHECK(reg == 32);
    CHECK(reg.is_set + reg.spare == 0);
    CHECK(std::string(reg.name) == "reg_cfa_gsig_tol");
    const auto names = [](const auto &block) { return std::string(block.hw.name) + " " + block.sw.name; };
    CHECK(names(cfa_reg) == "cfa cfa_sw");
    INIT_CFA_REG(std::string(40, 's').c_str());
    CHECK(names(cfa_reg) == "cfa" + std::string(28, 's') + " cfa_sw" + std::string(25, 's'));
    INIT_CMODEL_TOP_REG("_2");
    CHECK(names(cmodel_top_reg) == "cmodel_top_2 cmodel_top_sw_2");
    INIT_CMODEL_TOP_REG(nullptr);
    CHECK(names(cmodel_top_reg) == "cmodel_top cmodel_top_sw");
    tok_idx = 5;
    CHECK(cfa_reg_loader(&cfa_reg, "other", "reg_cfa_enable", "0") == 1);
    CHECK(cmodel_top_reg_loader(&cmodel_top_reg, "cmodel_top", "reg_img_bayerid", "3") == 1);
    CHECK(tok_idx == 0);
    CHECK(LOAD_CMODEL_TOP_INI("/no/such/file") == 1);
    CHECK(cmodel_top_reg.hw.reg_img_bayerid == 3);
    Register<12, unsigned> slope{};
    slope = 904;
    CHECK(((-64 * slope) >> 5) == -1808); // signed in formulas, whatever its own signedness
}

TEST_CASE("load: what a text does to reg_cfa_gsig_tol (12 bits, 32) and reg_cfa_cmoire_edge_d0c0 (13 bits, "
          "signed)") {
    const std::string nines(1000, '9'), zeros(1000, '0'), text = "[cfa]\nreg_cfa_gsig_tol = 7\n";
    std::string little = "\xFF\xFE", big = "\xFE\xFF";
    for (const char c : text) {
        little += {c, '\0'};
        big += {'\0', c};
    }
    const std::pair<std::string, int> texts[] = {
        {text, 7},
        {"[cfa]\nreg_cfa_gsig_tol = 1\nreg_cfa_gsig_tol : 2", 2},
        {"[cfa]\nno setting\nreg_cfa_gsig_tol=+8 ; off", 8},
        {"[cfa]\nREG_CFA_GSIG_TOL = 1\n[CFA]\nreg_cfa_gsig_tol = 1\n[cfa_sw]\nreg_cfa_gsig_tol = "
         "2\n[]\nreg_cfa_gsig_tol = 3",
         32},
        {"reg_cfa_gsig_tol = 1\n[cfa]\n", 32},
        {little, 32},
        {big, 32},
        {"\xEF\xBB\xBF" + text, 7},
        {"[cfa]\r\nreg_cfa_gsig_tol = 7\r\n", 7},
        {"[cfa]\rreg_cfa_gsig_tol = 7\r", 32},             // one line to the parser
        {"[cfa]\0 noise\nreg_cfa_gsig_tol = 7\0 8\n"s, 7}, // a line ends at a NUL
        {"[cfa]\nreg_cfa_gsig_tol\0 = 7\n"s, 32},
        {"\0[cfa]\nreg_cfa_gsig_tol = 7\n"s, 32},
        {std::string(100000, '\0') + "\n" + text, 7},
        {"[cfa]\nreg_cfa_gsig_tol =", 0}, // an empty value counts as set
    };
    for (const auto &row : texts) {
        const auto &[bytes, want] = row;
        INFO(row.first.substr(0, 60));
        load_cfa(bytes);
        CHECK(cfa_reg.hw.reg_cfa_gsig_tol == want);
        CHECK(cfa_reg.hw.reg_cfa_gsig_tol.is_set == (want == 32 ? 0 : 1));
    }
    struct Number {
        std::string text;
        int twelve_bits, signed_thirteen_bits;
    };
    // Beyond 64 bits the nearest 64-bit number is cut to the width.
    for (const Number &n :
         {Number{"0x10", 0, 0}, Number{"012abc", 12, 12}, Number{"9223372036854775807", 4095, -1},
          Number{"9223372036854775808", 4095, -1}, Number{"-9223372036854775809", 0, 0},
          Number{"18446744073709551617", 4095, -1}, Number{nines, 4095, -1}, Number{"-" + nines, 0, 0},
          Number{zeros + "4097", 1, -4095}, Number{"9223372036854771713", 1, -4095}, // 2^63 - 4095
          Number{"4294967297", 1, 1}}) {
        INFO(n.text);
        load_cfa("[cfa]\nreg_cfa_gsig_tol = " + n.text + "\nreg_cfa_cmoire_edge_d0c0 = " + n.text);
        CHECK(cfa_reg.hw.reg_cfa_gsig_tol == n.twelve_bits);
        CHECK(cfa_reg.hw.reg_cfa_cmoire_edge_d0c0 == n.signed_thirteen_bits);
    }
}
