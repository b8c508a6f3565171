#include "cmodel/common/ini_file.h"

#include <doctest/doctest.h>

#include <random>
#include <string>
#include <vector>

#include <sys/mman.h>
#include <sys/resource.h>

#include "tests/cmodel/common/unlimited_ini.h"
#include "tests/support/support.h"

using namespace std::string_literals;

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
        static const std::vector<std::string> pieces = {"[cfa]",
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
                                                        "=0",
                                                        "= 12 ; off",
                                                        " reg_cfa_enable = 5",
                                                        "\0"s,
                                                        "\0= 3"s};
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

TEST_CASE("the tail of a long comment is not a setting") {
    // The text behind the 199 characters that the parser takes at once.
    const std::string tail = "reg_cfa_enable = 0";
    for (const std::string &head : {"; "s, "# "s, "reg_cfa_gsig_tol = 7 ; "s}) {
        const std::string text = "[cfa]\n" + head + std::string(199 - head.size(), '-') + tail + "\n";
        INFO(text);
        const Parsed parsed = parse(text);
        CHECK(parsed.result == 0);
        CHECK(parsed.settings.size() == (head[0] == 'r' ? 1 : 0));
        for (const Setting &setting : parsed.settings)
            CHECK(setting == Setting{"cfa", "reg_cfa_gsig_tol", 7});
    }
}

TEST_CASE("lines of every length around the parser's own limit") {
    for (size_t length = 150; length < 450; length++) {
        const std::string blanks(length, ' ');
        const std::string zeros(length, '0');
        const std::string text = "[cfa]\nreg_cfa_enable" + blanks + "=" + blanks + "-" + zeros + "12" +
                                 blanks + "; c\n" + blanks + zeros + "34\n[" + std::string(length, 's') +
                                 "] ; c\nk = 1\n";
        const Parsed parsed = parse(text);
        INFO(length, ": ", shown(parsed));
        CHECK(parsed.result == 0);
        CHECK(parsed.settings == std::vector<Setting>{{"cfa", "reg_cfa_enable", -12},
                                                      {"cfa", "reg_cfa_enable", 34},
                                                      {std::string(49, 's'), "k", 1}});
    }
}

TEST_CASE("numbers beyond 64 bits end at their limits, however long") {
    for (size_t digits : {30u, 300u, 30000u}) {
        const std::string number(digits, '9');
        const Parsed parsed = parse("a = " + number + "\nb = -" + number + "\n");
        REQUIRE(parsed.settings.size() == 2);
        CHECK(parsed.settings[0].number == 9223372036854775807);
        CHECK(parsed.settings[1].number == -9223372036854775807 - 1);
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

TEST_CASE("a file that cannot be opened, a folder, an empty file") {
    const TempFolder folder;
    Parsed parsed{};
    CHECK(ini_load_file((folder / "none").c_str(), keep_setting, &parsed) == -1);
    CHECK(ini_load_file(folder.path.c_str(), keep_setting, &parsed) == 0);
    CHECK(parse("").result == 0);
    CHECK(parsed.settings.empty());
}

TEST_CASE("a line of 20 MB takes no memory") {
    const TempFolder folder;
    write_file(folder / "long.ini", "[cfa]\na = 1\n;" + std::string(20000000, '=') + "\nb = 2\n");
    const Outcome outcome = run_child([&] {
        Parsed parsed{};
        rusage before, after;
        getrusage(RUSAGE_SELF, &before);
        const int result = ini_load_file((folder / "long.ini").c_str(), keep_setting, &parsed);
        getrusage(RUSAGE_SELF, &after);
        std::printf("%d %zu %d", result, parsed.settings.size(), after.ru_maxrss - before.ru_maxrss < 4000);
    });
    CHECK(outcome.out == "0 2 1");
}
