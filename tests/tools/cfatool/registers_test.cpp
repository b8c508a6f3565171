#include "cmodel/common/ini_file.h"
#include "tests/tools/cfatool/room.h"
#include "tools/cfatool/base/integer_math.h"
#include "tools/cfatool/registers/ini_text.h"
#include "tools/cfatool/registers/regs_check.h"
#include "tools/cfatool/registers/regs_edit.h"
#include "tools/cfatool/registers/regs_text.h"

using namespace cfatool;
using Lines = std::vector<std::string>;

namespace {

/// Each text behind `start` has one finding, "line: message", which begins with `place` and its second
/// string; none where that is empty.
void check_each(const std::string &start, const std::string &place,
                const std::vector<std::pair<std::string, std::string>> &texts) {
    for (const auto &[text, want] : texts) {
        const std::string file = start + text;
        INFO(file);
        std::string found;
        for (const Finding &finding : check_registers(file).findings)
            found += std::to_string(finding.line) + ": " + finding.message + "\n";
        CHECK(std::count(found.begin(), found.end(), '\n') == !want.empty());
        CHECK((want.empty() || found.starts_with(place + want)));
    }
}

} // namespace

TEST_CASE("random texts, with long runs of what the parser looks at in every place, mean the same to both "
          "readers") {
    const std::string pieces[] = {"[cfa]",
                                  "[cfa_sw]",
                                  "[",
                                  "]",
                                  "[cfa",
                                  "reg_cfa_enable",
                                  "reg_cfa_gsig_tol",
                                  "=",
                                  ":",
                                  " = ",
                                  ";",
                                  " ;",
                                  "\t; ",
                                  "#",
                                  " ",
                                  "\t",
                                  "\r",
                                  "\v",
                                  "0",
                                  "00",
                                  "-",
                                  "+",
                                  "1",
                                  "12",
                                  "-7",
                                  "4095",
                                  "abc",
                                  "x",
                                  "\xEF\xBB\xBF",
                                  "\xEF\xBB",
                                  "=0",
                                  "= 12 ; off",
                                  " reg_cfa_enable = 5",
                                  std::string("\0", 1),
                                  std::string("\0= 3", 4)};
    // Of a line the loader keeps what can matter: a possible key, the number that the value is.
    const auto add = [](std::string &all, const std::string &section, const std::string &key,
                        const std::string &value) {
        const bool possible = key.empty() || (key.size() <= 30 && (std::isalpha(key[0]) || key[0] == '['));
        all += section + "|" + (possible ? key : "-") + "|" +
               std::to_string(std::strtoll(value.c_str(), nullptr, 10)) + "\n";
    };
    for (uint64_t seed = 0, draw = 0; seed < 20000; ++seed) {
        const auto pick = [&](uint64_t low, uint64_t high) {
            return low + random_bits(seed, ++draw) % (high - low + 1);
        };
        std::string text = pick(0, 7) == 0 ? "\xEF\xBB\xBF" : "", want, got;
        for (uint64_t left = pick(1, 8); left > 0; --left) {
            for (uint64_t more = pick(0, 7); more > 0; --more) {
                const std::string &piece = pieces[pick(0, std::size(pieces) - 1)];
                for (uint64_t end = text.size() + (pick(0, 2) == 0 && piece[0] != 0 ? pick(30, 250) : 1);
                     text.size() < end;)
                    text += piece;
            }
            text += left > 1 || pick(0, 1) == 0 ? "\n" : "";
        }
        struct Loaded {
            decltype(add) &keep;
            std::string text;
        } loaded{add, ""};
        const auto collect = [](void *to, const char *section, const char *key, const char *value) {
            return static_cast<Loaded *>(to)->keep(static_cast<Loaded *>(to)->text, section, key, value), 1;
        };
        int number = 0, unread = 0;
        const std::vector<IniLine> lines = read_ini_text(text);
        for (const IniLine &line : lines) {
            ++number;
            unread = unread == 0 && line.kind == IniLine::Kind::unread ? number : unread;
            if (line.kind == IniLine::Kind::setting || line.kind == IniLine::Kind::continuation) {
                add(got, line.section, line.name.c_str(), line.value);
                CHECK(line.text.compare(line.value_at, line.value.size(), line.value) == 0);
            }
        }
        INFO("seed ", seed, "\n", text);
        CHECK(cfa::ini_load_stream(cfa::open_text(text.data(), text.size()).get(), collect, &loaded) ==
              unread);
        REQUIRE(got == loaded.text);
        REQUIRE(join_ini_text(lines) == text);
    }
}

TEST_CASE("lines, keys and sections") {
    const std::string enable = "reg_cfa_enable = 1\n", x197(197, 'x');
    check_each("", "1: ",
               {{"; c\n[other]\nreg_x = 5\n 6\n[cfa]\r\nreg_cfa_vw_thd:+09 ; "
                 "c\r\n\nreg_cfa_cmoire_edge_d0c0=-4096\n",
                 ""},
                {enable, "reg_cfa_enable is not read in no section; it belongs in [cfa]"},
                {"[CFA]\n" + enable, "section [CFA] is not read; the block's section is [cfa]"},
                {"[ cfa ]\n", "section [ cfa ] is not read; the block's section is [cfa]"},
                {"\xEF\xBB\xBF[cfa]\n", "byte-order mark: "},
                {std::string("\xFF\xFE[\0c\0", 6), "UTF-16 text: "},
                {std::string("\xFE\xFF\0[", 4), "UTF-16 text: "},
                {std::string("[\0c\0", 4), "UTF-16 text: "},
                {std::string("\0[\0c", 4), "UTF-16 text: "}});
    check_each(
        "", "2: ",
        {{"[cfa]\nreg_cfa_enabel = 1\n", "unknown key 'reg_cfa_enabel'; did you mean 'reg_cfa_enable'?"},
         {"[cfa]\nReg_cfa_enable = 1",
          "unknown key 'Reg_cfa_enable'; names are lower case: 'reg_cfa_enable'"},
         {"[cmodel_top]\n" + enable,
          "reg_cfa_enable is not read in section [cmodel_top]; it belongs in [cfa]"},
         {"[isp]\nreg_img_bayerid = 1\n",
          "reg_img_bayerid is not read in section [isp]; it belongs in [cmodel_top]"}});
    check_each(
        "[cfa]\nreg_cfa_vw_thd = 7", "",
        {{"\n" + enable + "reg_cfa_vw_thd = 1\n", "4: reg_cfa_vw_thd is set again: line 2 has no effect"},
         {"\n   8\n", "3: indented, so it continues line 2 and sets reg_cfa_vw_thd again, to '8'"},
         {"\n[other]\na = 7\n  [cfa]\n", "5: indented, so it continues line 4 ('a') and is not read"},
         {"\nreg_cfa_enable 0\n", "3: no = and no : in this line: passed over"},
         {"\n[cfa\n", "3: section header without ]: passed over"},
         {"\n[cfa] reg_cfa_enable = 0\n", "3: text behind ]: passed over"},
         {"\n; " + x197 + "\n; x" + x197, "4: line of 200 characters: "},
         {std::string("\0 8\n", 4), "2: NUL byte: "}});
}

TEST_CASE("values that are not what is stored, curves and limits") {
    check_each("[cfa]\nreg_cfa_", "2: reg_cfa_",
               {{"vw_thd = 4096", "vw_thd: 4096 does not fit 12 bits, 0..4095: 0 is stored"},
                {"vw_thd = -1", "vw_thd: -1 does not fit 12 bits, 0..4095: 4095 is stored"},
                {"vw_thd = 99999999999999999999",
                 "vw_thd: 99999999999999999999 does not fit 12 bits, 0..4095: 4095 "},
                {"vw_thd = 0x10", "vw_thd: '0x10' is not a decimal number: 0 is stored"},
                {"vw_thd = 12abc", "vw_thd: '12abc' is not a decimal number: 12 is stored"},
                {"vw_thd = ", "vw_thd: '' is not a decimal number: 0 is stored"},
                {"shpn_min_gain = 2048", ""},
                {"cmoire_edge_d0c0 = 4096",
                 "cmoire_edge_d0c0: 4096 does not fit 13 bits signed, -4096..4095: -4096 is stored"},
                {"shpn_min_gain = 2049",
                 "shpn_min_gain = 2049 is above reg_cfa_shpn_max_gain = 2048: the gain is 2048 everywhere"}});
    // -4095 * 1024 / 600 = -6988.8: one off either way passes, two do not. A step of 4095 in 32 is 131040,
    // which 18 bits hold; in 31 it is more than they can.
    check_each(
        "[cfa]\nreg_cfa_", "2: curve ",
        {{"cmoire_sat_slp0 = -6989", ""},
         {"cmoire_sat_slp0 = -6987", ""},
         {"cmoire_sat_slp0 = -6990", "cmoire_sat: "},
         {"cmoire_sat_slp0 = -6986", "cmoire_sat: "},
         {"cmoire_sat_slp0 = 6988", "cmoire_sat: reg_cfa_cmoire_sat_slp0 = 6988 leads away"},
         {"cmoire_pd_slp0 = 131040\nreg_cfa_cmoire_pd_x1 = 182", ""},
         {"cmoire_pd_slp0 = 131071\nreg_cfa_cmoire_pd_x1 = 181",
          "cmoire_pd: 18 bits of reg_cfa_cmoire_pd_slp0 cannot hold (y1 - y0) * 2^10 / (x1 - x0) = 135267"},
         {"cmoire_pd_x1 = 150",
          "cmoire_pd: reg_cfa_cmoire_pd_x1 = 150 is not above reg_cfa_cmoire_pd_x0 = 150"},
         {"cmoire_ptclr_y1 = 4000",
          "cmoire_ptclr: reg_cfa_cmoire_ptclr_slp0 = 8736 is not (y1 - y0) * 2^10 / (x1 - x0) = 8533"},
         {"ymoire_edge_slope = 1\nreg_cfa_ymoire_edge_th = 3", ""},
         {"ymoire_edge_slope = -1", "ymoire_edge: "},
         {"ymoire_lut_low = 257", "ymoire_lut: "}}); // now falls from 257 to 256
}

TEST_CASE_FIXTURE(Room,
                  "regs check: status, form of a finding, and the registers left unset as information") {
    put("c", "[cfa]\nreg_cfa_enable = 1\n");
    put("t", "[cmodel_top]\nreg_img_width = 65536\n");
    const std::string unset = "c: 114 of 115 registers of [cfa] are left at their defaults",
                      message = "reg_img_width: 65536 does not fit 16 bits, 0..65535: 0 is stored";
    check({{"regs check c", 0, unset + " (--unset names them)\n"},
           {"regs check c --unset", 0, unset + "\n  reg_cfa_"},
           {"regs check c --unset", 0, "\n  reg_cfa_shpn_gain_value\n"},
           {"regs check c t", 1, "\nt:2: " + message + "\n"},
           {"regs check t --json", 1,
            R"({"findings":[{"file":"t","line":2,"message":")" + message +
                R"("}],"unset":[{"file":"t","section":"cmodel_top",)"}});
}
TEST_CASE_FIXTURE(Room, "samples and the register reference are what the register list makes") {
    for (const RegisterTable *table : {&cfa::cfa_reg_hw_table(), &cfa::cmodel_top_reg_hw_table()}) {
        const std::string text = defaults_text(*table);
        CHECK(read_file(source_root() + "/samples/" + table->name + ".ini") == text);
        CHECK((check_registers(text).findings.empty() && check_registers(text).unset.at(0).keys.empty()));
        for (const RegisterInfo &info : table->registers)
            CHECK((contains(text, std::string("\n") + info.key + " = " + std::to_string(info.reset) + "\n") &&
                   contains(text, width_text(info) + ": " + info.meaning))); // there in full
    }
    CHECK(read_file(source_root() + "/docs/registers.md") == reference_text());
}

TEST_CASE("set changes one value and no other byte") {
    const std::string vw = "[cfa]\nreg_cfa_vw_thd";
    for (const auto &[before, value, after] : std::vector<std::array<std::string, 3>>{
             {"; c\n" + vw + " = 5 ; five\r\n\n[x]\nreg_cfa_vw_thd=1", "40",
              "; c\n" + vw + " = 40 ; five\r\n\n[x]\nreg_cfa_vw_thd=1"},
             {vw + "=\n", "0", vw + "= 0\n"},
             {vw + ": ; none\n", "7", vw + ": 7 ; none\n"},
             // The line in force is the last one, also an indented one.
             {vw + "=1\nreg_cfa_vw_thd=2\n", "3", vw + "=1\nreg_cfa_vw_thd=3\n"},
             {vw + "=1\n  2 ; two\n", "3", vw + "=1\n  3 ; two\n"},
             // A missing key goes behind the last line of its section that is read, with the line end there.
             {"[cfa]\r\nreg_cfa_enable=1\r\n\r\n[x]\r\n", "3",
              "[cfa]\r\nreg_cfa_enable=1\r\nreg_cfa_vw_thd = 3\r\n\r\n[x]\r\n"},
             {"[cfa]\n  junk\n", "3", "[cfa]\n  junk\nreg_cfa_vw_thd = 3\n"},
             // Not where an indented line, a header here, would become its continuation.
             {"[cfa]\n\n [x]\n 7\n", "3", "[cfa]\n\n [x]\n 7\n\n" + vw + " = 3\n"},
             {"[x]\na=1", "3", "[x]\na=1\n\n" + vw + " = 3\n"},
             {"", "3", vw + " = 3\n"}})
        CHECK(set_register(before, "reg_cfa_vw_thd=" + value) == after);
}
TEST_CASE_FIXTURE(Room, "set, diff and dump: both ends of every register come back, in messy files too") {
    for (const auto end : {cfa::register_min, cfa::register_max}) {
        std::string text = "x=1\n[cfa]\nreg_cfa_enable = 5\n y\n[cmodel_top]\nz = 1\n\t2\n;c";
        Registers registers;
        for (const BlockPart &p : registers.parts())
            for (const RegisterInfo &info : p.table->registers)
                text = set_register(text, std::string(info.key) + "=" +
                                              std::to_string(end(info.bits, info.is_signed)));
        put("a", text);
        put("b", "; kept\n[other]\nk = 1\n[cfa]\nreg_cfa_enable = 0\n");
        check({{"regs dump b --from a", 0, ""}, {"regs diff a b", 0, ""}});
        CHECK(run("regs dump new --from a", "ulimit -f 1;").status == 2); // a dump that was cut
        CHECK(get("new") == "(no file)");
        CHECK(get("b").starts_with("; kept\n[other]\nk = 1\n[cfa"));
        registers.load(*this / "b");
        for (const BlockPart &p : registers.parts())
            for (const RegisterInfo &info : p.table->registers)
                CHECK(info.read(*p.part) == end(info.bits, info.is_signed));
    }
    put("b", "[cfa]\nreg_cfa_enable = 0\n");
    check(
        {{"regs set b reg_cfa_vw_thd=17 reg_cfa_cmoire_edge_d0c0=-3 -o c", 0, ""},
         {"regs dump d --block cmodel_top", 0, ""},
         {"regs diff c b", 1, "reg_cfa_vw_thd: 17 against 1500\nreg_cfa_cmoire_edge_d0c0: -3 against 308\n"},
         {"regs diff c b --json", 1, R"([{"key":"reg_cfa_vw_thd","a":17,"b":1500,"default":1500},{"key":)"}});
    CHECK((get("b") == "[cfa]\nreg_cfa_enable = 0\n" &&
           get("d").starts_with("[cmodel_top]\nreg_img_bayerid = 0\nr")));
}
