// The command line: what each argument does, and the log of a run.
#include <doctest/doctest.h>

#include <algorithm>

#include "tests/support/registers.h"
#include "tests/support/tool.h"

using namespace cfa;

namespace {

using Log = std::vector<std::string>;

// A record as a file shows it behind the time stamp, and as one of the levels 1, 2 and 4.
std::string record(int level, const std::string &label, const std::string &line, const std::string &message) {
    const char *const names[] = {"", "DEBUG ", "INFO  ", "", "ERROR "};
    return names[level] + label + std::string(20 - std::min<size_t>(20, label.size()), ' ') + ":" + line +
           ": " + message;
}

// Loading and printing a block of which these registers are set. The line of a register is that of its list.
void expect_block(Log &log, const std::string &name, const RegisterTable &table,
                  const std::map<std::string, int> &set) {
    const auto own = [&](const std::string &message) {
        log.push_back(record(1, name + "_reg", "###", message));
    };
    const auto line = [&](size_t i) { return (i < 90 ? "0" : "") + std::to_string(10 + i); };
    const std::string hw = name + "_reg_hw_def";
    own("[INIT] Init " + name + " Reg configurations...");
    own("[INIT] Init " + name + " Reg Done....");
    own("[LOAD] Load " + name + " INI configurations...");
    own("[LOAD] Load " + name + " Done...");
    for (size_t i = 0; i < table.registers.size(); ++i)
        if (const std::string key = table.registers[i].key; !set.contains(key))
            log.push_back(
                record(4, hw, line(i), "[REG] " + name + ".hw." + key + " is not set in .ini file"));
    own("[PRINT] Print " + name + " Reg configurations ...");
    log.push_back(record(1, hw, "008", "[" + name + "]"));
    for (size_t i = 0; i < table.registers.size(); ++i) {
        const std::string key = table.registers[i].key;
        const int value = set.contains(key) ? set.at(key) : table.registers[i].reset;
        log.push_back(record(1, hw, line(i), name + ".hw." + key + " = " + std::to_string(value)));
    }
    log.push_back(record(1, name + "_reg_sw_def", "008", "[" + name + "_sw]"));
    own("[PRINT] Print " + name + " Reg Done....");
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
        want.push_back(record(2, "cfa_main", "###", info));
    want.push_back(record(1, "common", "###", "Color depth (12) max_rgb:(4095)"));
    want.push_back(record(2, "cfa_hw", "###", "reg_cfa_shpn_gain_value = 7"));
    std::string engines; // line of the last record
    for (const std::string level : {"0", "1", "2", "3", "4", "5", "-1", "x"})
        for (const char *debug : {"0", "1"}) {
            INFO("level ", level, ", debug ", debug);
            job.args[LEVEL] = level;
            job.args[DEBUG] = debug;
            write_file(job.args[LOG], "2000-01-01 00:00:00 earlier\n");
            CHECK(job.run() == SILENT);
            Log expected = {"earlier"}, got = job.log();
            for (const std::string &text : want)
                if (std::atoi(level.c_str()) <= (text[0] == 'D' ? 1 : text[0] == 'I' ? 2 : 4))
                    expected.push_back(text);
            std::erase(got, ""); // a message that ends in a line feed
            for (std::string &text : got)
                if (text.find("_def ") == std::string::npos && text.find("_def:") == std::string::npos &&
                    text.size() > 30) {
                    if (text.find("gain_value") != std::string::npos)
                        engines = engines.empty() ? text : engines;
                    CHECK((text.find("gain_value") == std::string::npos || text == engines));
                    text.replace(27, 3, "###");
                }
            REQUIRE(got.size() == expected.size());
            for (size_t i = 0; i < got.size(); ++i)
                CHECK(got[i] == expected[i]);
        }
}

TEST_CASE("arguments: what turns debug images on, INI files that are not there, pictures too small, bypass") {
    const auto small = [](const std::string &size) {
        return "Picture of " + size + " is too small: the enabled block takes 4 x 3 and larger";
    };
    struct Case {
        Argument argument;
        const char *value;
        int width, height;
        bool images;
        std::string error;
    };
    for (const Case &c :
         {Case{DEBUG, "0", 8, 6, false, ""}, Case{DEBUG, "x", 8, 6, false, ""},
          Case{DEBUG, "1", 4, 3, true, ""}, Case{DEBUG, "2", 8, 6, true, ""},
          Case{DEBUG, "-1", 8, 6, true, ""}, Case{INI, "/no/such/file", 8, 6, false, ""},
          Case{INI, "/proc", 8, 6, false, ""}, Case{TOP_INI, "/dev/null", 8, 6, false, ""},
          Case{DEBUG, "1", 4, 2, false, small("4 x 2")}, Case{DEBUG, "1", 3, 3, false, small("3 x 3")},
          Case{DEBUG, "1", 0, 5, false, small("0 x 5")}}) {
        INFO(c.value, c.error);
        Job job(mosaic(c.width, c.height));
        job.args[c.argument] = c.value;
        const Outcome outcome = job.run();
        CHECK(outcome == (c.error.empty() ? SILENT : error_line(c.error)));
        const size_t pictures = job.pictures().size();
        CHECK((c.images ? pictures > 20 : pictures == (c.error.empty() ? 3 : 0)));
        const bool told = read_file(job.args[LOG]).find(": Can't handle cfa_reg.\n") != std::string::npos;
        CHECK(told == (*c.value == '/' && c.value[1] == 'n'));
    }
    const std::string head = "\n# Created by ZEMBRO DPU Model\n2 1\n65535\n";
    const Pictures out = Job("P5\n2 1\n65535\n\x12\x34\xFF\xFE", "[cfa]\nreg_cfa_enable = 0\n").expected();
    CHECK(out.rgb == "P6" + head + "\x12\x34\x12\x34\x12\x34\xFF\xFE\xFF\xFE\xFF\xFE");
    CHECK(out.dc == "P5" + head + std::string(4, '\0'));
    CHECK(out.gain == "P5" + head + std::string("\4\0\4\0", 4));
    CHECK(Job("P5\n0 4\n1\n", "[cfa]\nreg_cfa_enable = 0\n").expected().dc.ends_with("\n0 4\n0\n"));
}
