#include <doctest/doctest.h>

#include <sstream>
#include <string>
#include <vector>

#include <unistd.h>

#include "tests/support/support.h"

// Outputs, error lines, the wait for what cannot be opened: tests/trust.

namespace {

// A folder with a 4 x 3 mosaic, an INI file that disables the block, and the command line for it.
struct Setup {
    Setup() {
        write_file(folder / "raw", "P5\n4 3\n4095\n" + std::string(24, '\3'));
        write_file(folder / "cfa.ini", "[cfa]\nreg_cfa_enable = 0\n");
        write_file(folder / "top.ini", "[cmodel_top]\nreg_img_bayerid = 2\n");
        args = {
            tool_path(),        folder / "cfa.ini", folder / "log", "0",           "0",          folder.path,
            folder / "top.ini", folder / "raw",     folder / "out", folder / "dc", folder / "sg"};
    }
    Outcome run(int timeout_ms = 30000, const std::function<void()> &prepare = {}) {
        return run_program(args, timeout_ms, prepare);
    }
    TempFolder folder;
    std::vector<std::string> args;
};

// The log without its time stamps.
std::vector<std::string> log_lines(const std::string &path) {
    std::vector<std::string> lines;
    std::istringstream text(read_file(path));
    for (std::string line; std::getline(text, line);)
        lines.push_back(line.empty() ? line : line.substr(20));
    return lines;
}

} // namespace

TEST_CASE("usage: nine and eleven arguments") {
    for (const size_t count : {9u, 11u, 0u}) {
        std::vector<std::string> args = {tool_path()};
        std::string echo = "argv[0]: " + args[0] + "\n";
        for (size_t i = 1; i <= count; i++) {
            args.push_back("%s arg " + std::to_string(i));
            echo += "argv[" + std::to_string(i) + "]: " + args.back() + "\n";
        }
        const Outcome outcome = run_program(args);
        CHECK(outcome.status == 255);
        CHECK(outcome.err == "");
        CHECK(outcome.out == "Usage: " + args[0] +
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

TEST_CASE("the log of a run: every record in its order, appended to what was there") {
    Setup setup;
    write_file(setup.folder / "log", "2000-01-01 00:00:00 earlier\n");
    setup.run();
    const std::vector<std::string> log = log_lines(setup.folder / "log");
    const std::string number = ":[0-9]{3}: ";
    const std::string cfa = "DEBUG cfa_reg             " + number;
    const std::string top = "DEBUG cmodel_top_reg      " + number;
    const std::string info = "INFO  cfa_main            " + number;
    // Position in the log and what stands there; between them the records of the single registers.
    const std::vector<std::pair<size_t, std::string>> want = {
        {0, "earlier"},
        {1, cfa + "\\[INIT\\] Init cfa Reg configurations\\.\\.\\."},
        {2, cfa + "\\[INIT\\] Init cfa Reg Done\\.\\.\\.\\."},
        {3, cfa + "\\[LOAD\\] Load cfa INI configurations\\.\\.\\."},
        {4, cfa + "\\[LOAD\\] Load cfa Done\\.\\.\\."},
        {5, "ERROR cfa_reg_hw_def      :011: \\[REG\\] cfa\\.hw\\.reg_cfa_ymoire_enable is not set in \\.ini "
            "file"},
        {118, "ERROR cfa_reg_hw_def      :124: \\[REG\\] cfa\\.hw\\.reg_cfa_shpn_gain_value is not set in "
              "\\.ini file"},
        {119, cfa + "\\[PRINT\\] Print cfa Reg configurations \\.\\.\\."},
        {120, "DEBUG cfa_reg_hw_def      :008: \\[cfa\\]"},
        {121, "DEBUG cfa_reg_hw_def      :010: cfa\\.hw\\.reg_cfa_enable = 0"},
        {235, "DEBUG cfa_reg_hw_def      :124: cfa\\.hw\\.reg_cfa_shpn_gain_value = 0"},
        {236, "DEBUG cfa_reg_sw_def      :008: \\[cfa_sw\\]"},
        {237, cfa + "\\[PRINT\\] Print cfa Reg Done\\.\\.\\.\\."},
        {238, top + "\\[INIT\\] Init cmodel_top Reg configurations\\.\\.\\."},
        {239, top + "\\[INIT\\] Init cmodel_top Reg Done\\.\\.\\.\\."},
        {240, top + "\\[LOAD\\] Load cmodel_top INI configurations\\.\\.\\."},
        {241, top + "\\[LOAD\\] Load cmodel_top Done\\.\\.\\."},
        {242, "ERROR cmodel_top_reg_hw_def:011: .*reg_pre_img_bayerid is not set in \\.ini file"},
        {251, "ERROR cmodel_top_reg_hw_def:020: .*reg_af_raw0yuv1 is not set in \\.ini file"},
        {252, top + "\\[PRINT\\] Print cmodel_top Reg configurations \\.\\.\\."},
        {253, "DEBUG cmodel_top_reg_hw_def:008: \\[cmodel_top\\]"},
        {254, "DEBUG cmodel_top_reg_hw_def:010: cmodel_top\\.hw\\.reg_img_bayerid = 2"},
        {265, "DEBUG cmodel_top_reg_sw_def:008: \\[cmodel_top_sw\\]"},
        {266, top + "\\[PRINT\\] Print cmodel_top Reg Done\\.\\.\\.\\."},
        {267, info + "reg_cfa_enable = 0"},
        {268, info + "reg_img_bayerid = 2"},
        {269, info + "reg_cfa_shpn_enable = 0"},
        {270, "DEBUG common              " + number + "Color depth \\(12\\) max_rgb:\\(4095\\)"},
        {271, ""},
    };
    REQUIRE(log.size() == 272);
    for (const auto &[at, pattern] : want) {
        const std::string shown = std::to_string(at) + ": " + log[at];
        INFO(shown);
        CHECK(matches(log[at], pattern));
    }
}

TEST_CASE("a log level of 3 leaves ERROR records only") {
    Setup setup;
    setup.args[3] = "3";
    setup.run();
    const std::vector<std::string> log = log_lines(setup.folder / "log");
    CHECK(log.size() == 114 + 10);
    for (const std::string &line : log)
        CHECK(line.starts_with("ERROR "));
}

TEST_CASE("missing INI files leave the defaults") {
    Setup setup;
    setup.args[1] = setup.args[6] = setup.folder / "none.ini";
    CHECK(setup.run().status == 0);
    const std::string log = read_file(setup.folder / "log");
    CHECK(log.find("Can't handle cmodel_top_reg.") != std::string::npos);
    CHECK(log.find("reg_cfa_enable = 1") != std::string::npos);
}

TEST_CASE("the log may be full; the run goes on") {
    Setup setup;
    setup.args[2] = "/dev/full";
    const Outcome outcome = setup.run();
    CHECK(outcome.status == 0);
    CHECK(outcome.err == "");
}

TEST_CASE("a closed standard output: the log does not take its place and receive the waiting line") {
    Setup setup;
    setup.args[7] = setup.folder / "none";
    CHECK(setup.run(300, [] { close(1); }).status == 124);
    const std::string log = read_file(setup.folder / "log");
    CHECK(log.find("reg_cfa_enable = 0") != std::string::npos);
    CHECK(log.find("wait") == std::string::npos);
}
