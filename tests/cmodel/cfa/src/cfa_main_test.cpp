// The command line: what each argument does, and the log of a run.
#include <doctest/doctest.h>

#include <algorithm>
#include <filesystem>
#include <set>

#include "tests/support/registers.h"
#include "tests/support/tool.h"

using namespace cfa;

namespace {

const std::string LEVELS[] = {"TRACE", "DEBUG", "INFO ", "WARN ", "ERROR", "FATAL"};

using Log = std::vector<std::string>;

// A record as a file shows it behind the time stamp; line -1 stands for any.
std::string record(const std::string &level, const std::string &label, int line, const std::string &message) {
    char start[60];
    std::snprintf(start, sizeof start, line < 0 ? "%s %-20s:###: " : "%s %-20s:%03d: ", level.c_str(),
                  label.c_str(), line);
    return start + message;
}

// Loading and printing a block of which these registers are set, in the order of the list.
void expect_block(Log &log, const std::string &name, const RegisterTable &table,
                  const std::map<std::string, int> &set) {
    const auto own = [&](const std::string &message) {
        log.push_back(record("DEBUG", name + "_reg", -1, message));
    };
    const std::string hw = name + "_reg_hw_def", sw = name + "_reg_sw_def";
    own("[INIT] Init " + name + " Reg configurations...");
    own("[INIT] Init " + name + " Reg Done....");
    own("[LOAD] Load " + name + " INI configurations...");
    own("[LOAD] Load " + name + " Done...");
    int line = 10;
    for (const RegisterInfo &info : table.registers) {
        if (!set.contains(info.key))
            log.push_back(
                record("ERROR", hw, line, "[REG] " + name + ".hw." + info.key + " is not set in .ini file"));
        ++line;
    }
    own("[PRINT] Print " + name + " Reg configurations ...");
    log.push_back(record("DEBUG", hw, 8, "[" + name + "]"));
    line = 10;
    for (const RegisterInfo &info : table.registers)
        log.push_back(record("DEBUG", hw, line++,
                             name + ".hw." + info.key + " = " +
                                 std::to_string(set.contains(info.key) ? set.at(info.key) : info.reset)));
    log.push_back(record("DEBUG", sw, 8, "[" + name + "_sw]"));
    own("[PRINT] Print " + name + " Reg Done....");
}

// Records whose line is that of a call show it as ###.
Log without_call_lines(Log log) {
    for (std::string &text : log)
        if (text.size() > 30 && text.substr(6, 24).find("_def") == std::string::npos)
            text.replace(27, 3, "###");
    return log;
}

} // namespace

TEST_CASE("usage: no, nine and eleven arguments") {
    for (const int count : {0, 9, 11}) {
        Job job("");
        job.built = true;
        job.args.resize(1);
        std::string echo = "argv[0]: " + job.args[0] + "\n";
        for (int i = 1; i <= count; ++i) {
            job.args.push_back("%s arg " + std::to_string(i));
            echo += "argv[" + std::to_string(i) + "]: " + job.args.back() + "\n";
        }
        const Outcome outcome = job.run();
        CHECK(outcome.status == 255);
        CHECK(outcome.err == "");
        CHECK(outcome.out == "Usage: " + job.args[0] +
                                 " ini_file log_file log_level dump_dbg_img dbg_path cmodel_top_hw_ini\n"
                                 "src_raw out out_dc out_sg\n"
                                 "[ 1] ini_file            : INI\n"
                                 "[ 2] log_file            : Log file\n"
                                 "[ 3] log_level           : Log level\n"
                                 "[ 4] dump dbg img enable : Dump debug image\n"
                                 "[ 5] debug_path          : Debug output path\n"
                                 "[ 6] cmodel_top_ini      : Cmodel Top INI\n"
                                 "[ 7] src_RAW             : Input 12-bit RAW image (ppm)\n"
                                 "[ 8] out_RGB             : Output 12-bit RGB image\n"
                                 "[ 9] out_RGB_DC          : Output DC RGB output\n"
                                 "[10] out_SharpGain       : Output sharpen gain output\n" +
                                 std::string(32, '/') + "\n" + echo + std::string(33, '/') +
                                 "\nPress any key to exit...");
    }
}

TEST_CASE("the log at every level, with and without debug images: every record in its order, behind what was "
          "there") {
    Job job(mosaic(8, 6), "[cfa]\nreg_cfa_shpn_enable = 1\nreg_cfa_shpn_gain_value = 7\n",
            "[cmodel_top]\nreg_img_bayerid = 2\n");
    Log want;
    expect_block(want, "cfa", cfa_reg_hw_table(),
                 {{"reg_cfa_shpn_enable", 1}, {"reg_cfa_shpn_gain_value", 7}});
    expect_block(want, "cmodel_top", cmodel_top_reg_hw_table(), {{"reg_img_bayerid", 2}});
    for (const char *info : {"reg_cfa_enable = 1", "reg_img_bayerid = 2", "reg_cfa_shpn_enable = 1"})
        want.push_back(record("INFO ", "cfa_main", -1, info));
    want.push_back(record("DEBUG", "common", -1, "Color depth (12) max_rgb:(4095)"));
    want.push_back(""); // the message ends in a line feed
    want.push_back(record("INFO ", "cfa_hw", -1, "reg_cfa_shpn_gain_value = 7"));
    for (const std::string level : {"0", "1", "2", "3", "4", "5", "6", "-1", "x"})
        for (const char *debug : {"0", "1"}) {
            INFO("level ", level);
            job.args[LEVEL] = level;
            job.args[DEBUG] = debug;
            write_file(job.args[LOG], "2000-01-01 00:00:00 earlier\n");
            check_silent(job.run());
            Log expected = {"earlier"};
            for (const std::string &text : want) {
                const auto at =
                    std::find(LEVELS, LEVELS + 6, (text.empty() ? "DEBUG" : text).substr(0, 5)) - LEVELS;
                if (at >= std::atoi(level.c_str()))
                    expected.push_back(text);
            }
            const Log got = without_call_lines(job.log());
            REQUIRE(got.size() == expected.size());
            for (size_t i = 0; i < got.size(); ++i)
                CHECK(got[i] == expected[i]);
        }
}

TEST_CASE("arguments: what turns debug images on, INI files that are not there, sizes, bypass") {
    struct Case {
        Argument argument;
        std::string value, raw;
        bool images;
        std::string error, gain; // its end
    };
    const std::string raw = mosaic(8, 6), one("\4\0", 2);
    const auto small = [](const std::string &size) {
        return "Picture of " + size + " is too small: the enabled block takes 4 x 3 and larger\n";
    };
    for (const Case &c :
         {Case{DEBUG, "0", raw, false, "", one}, Case{DEBUG, "x", raw, false, "", one},
          Case{DEBUG, "1", raw, true, "", one}, Case{DEBUG, "2", raw, true, "", one},
          Case{DEBUG, "-1", raw, true, "", one}, Case{INI, "/no/such/file", raw, false, "", one},
          Case{TOP_INI, "/dev/null", raw, false, "", one}, Case{TOP_INI, "/proc", raw, false, "", one},
          Case{DEBUG, "1", mosaic(4, 3), true, "", one},
          Case{DEBUG, "1", mosaic(4, 2), false, small("4 x 2"), "(no file)"},
          Case{DEBUG, "1", mosaic(3, 3), false, small("3 x 3"), "(no file)"},
          Case{DEBUG, "1", mosaic(0, 5), false, small("0 x 5"), "(no file)"}}) {
        INFO(c.value, c.error);
        Job job(c.raw);
        job.args[c.argument] = c.value;
        const Outcome outcome = job.run();
        CHECK(outcome.status == (c.error.empty() ? 0 : 1));
        CHECK(outcome.err == c.error);
        CHECK((job.pictures().size() > 20) == c.images);
        CHECK((c.images || job.pictures().size() == (c.error.empty() ? 3 : 0)));
        CHECK(job.outputs().gain.ends_with(c.gain));
        const Log log = job.log();
        const bool told = std::any_of(log.begin(), log.end(), [](const std::string &text) {
            return text.ends_with("Can't handle cfa_reg.");
        });
        CHECK(told == (c.argument == INI));
    }
    for (const std::string size : {"2 1", "1 1", "0 0", "0 4"}) {
        const bool pixels = size[0] != '0';
        Job job("P5\n" + size + "\n65535\n" + (pixels ? "\x12\x34\xFF\xFE" : ""),
                "[cfa]\nreg_cfa_enable = 0\n");
        const Pictures out = job.expected();
        const auto want = [&](char kind, std::string samples) {
            samples = samples.substr(0, size == "2 1" ? samples.size() : pixels ? samples.size() / 2 : 0);
            return std::string("P") + kind + "\n# Created by ZEMBRO DPU Model\n" + size + "\n65535\n" +
                   samples;
        };
        CHECK(out.rgb == want('6', "\x12\x34\x12\x34\x12\x34\xFF\xFE\xFF\xFE\xFF\xFE"));
        CHECK(out.dc == want('5', std::string(4, '\0')));
        CHECK(out.gain == want('5', one + one));
    }
}
