#include "cmodel/common/ini_file.h"

#include <doctest/doctest.h>

#include <random>
#include <string>
#include <vector>

#include <sys/mman.h>

#include "tests/cmodel/common/unlimited_ini.h"
#include "tests/support/hooks.h"
#include "tests/support/support.h"

using namespace cfa;

using namespace std::string_literals;

// What values do to registers: cfa_reg_test.

namespace {

// Through a file in memory: many small files take their time on a disk.
Parsed parse(const std::string &text) {
    static const std::string path = "/proc/self/fd/" + std::to_string(memfd_create("ini", 0));
    write_file(path, text);
    Parsed parsed{};
    parsed.result = ini_load_file(path.c_str(), keep_setting, &parsed);
    return parsed;
}

// Texts made of what the parser looks at, with long runs of one piece in every place.
class RandomText {
  public:
    explicit RandomText(uint32_t seed) : random_(seed) {}

    std::string text() {
        std::string text = chance(8) ? "\xEF\xBB\xBF" : chance(30) ? "\xEF\xBB" : "";
        for (int lines = pick(1, 8); lines > 0; lines--) {
            for (int pieces = pick(0, 7); pieces > 0; pieces--)
                text += piece();
            if (lines > 1 || chance(2))
                text += '\n';
        }
        return text;
    }

  private:
    int pick(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random_); }
    bool chance(int of) { return pick(1, of) == 1; }

    std::string piece() {
        // clang-format off
        static const std::vector<std::string> pieces = {
            "[cfa]", "[cfa_sw]", "[", "]", "[cfa", "reg_cfa_enable", "reg_cfa_gsig_tol", "=", ":", " = ", ";",
            " ;", "\t; ", "#", " ", "\t", "\r", "\v", "0", "00", "-", "+", "1", "12", "-7", "4095", "abc",
            "x", "\xEF\xBB\xBF", "=0", "= 12 ; off", " reg_cfa_enable = 5", "\0"s, "\0= 3"s};
        // clang-format on
        std::string one = pieces[static_cast<size_t>(pick(0, static_cast<int>(pieces.size()) - 1))];
        std::string run = one;
        if (chance(3) && one.find('\0') == std::string::npos)
            for (int length = pick(30, 250); static_cast<int>(run.size()) < length;)
                run += one;
        return run;
    }

    std::mt19937 random_;
};

std::string shown(const Parsed &parsed) {
    std::string text = std::to_string(parsed.result);
    for (const Setting &s : parsed.settings)
        text += " | " + s.section + " " + s.key + " " + std::to_string(s.number);
    return text;
}

} // namespace

TEST_CASE("lines of every length around the parser's own limit, and of megabytes in little memory") {
    for (size_t length = 150; length < 451; ++length) {
        const bool endless = length == 450;
        const std::string blanks(endless ? 2000000 : length, ' '), zeros(blanks.size(), '0'),
            name(blanks.size(), 's');
        const std::string text = "[cfa]\nreg_cfa_enable" + blanks + "=" + blanks + "-" + zeros + "12" +
                                 blanks + "; c\n" + blanks + zeros + "34\n# " + zeros + "k = 1\n[" + name +
                                 "] ; c\nk = 1\n";
        watch();
        const Parsed parsed = parse(text);
        INFO(length, ": ", shown(parsed));
        CHECK(watched->bytes < 100000);
        CHECK(parsed.result == 0);
        CHECK(parsed.settings == std::vector<Setting>{{"cfa", "reg_cfa_enable", -12},
                                                      {"cfa", "reg_cfa_enable", 34},
                                                      {std::string(49, 's'), "k", 1}});
    }
}

TEST_CASE("random texts mean the same as to a parser without limits") {
    for (uint32_t seed = 0; seed < 20000; seed++) {
        const std::string text = RandomText(seed).text();
        const Parsed got = parse(text);
        const Parsed want = UnlimitedParser().parse(text);
        INFO("seed ", seed, "\n", text, "\ngot  ", shown(got), "\nwant ", shown(want));
        REQUIRE(got.result == want.result);
        REQUIRE(got.settings == want.settings);
    }
}
