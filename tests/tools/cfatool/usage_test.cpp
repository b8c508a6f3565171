#include <algorithm>
#include <doctest/doctest.h>

#include "tests/tools/cfatool/tool_support.h"

TEST_CASE("help, version and lists go to standard output with status 0") {
    for (const auto &[args, start] : {std::pair{std::vector<std::string>{"--version"}, "cfatool "},
                                      {{"--help"}, ""},
                                      {{"chart", "--help"}, ""},
                                      {{"chart", "--list"}, ""}}) {
        const Outcome outcome = cfatool_run(args);
        CHECK(outcome.status == 0);
        CHECK(outcome.err.empty());
        CHECK(outcome.out.starts_with(start));
        CHECK(outcome.out.size() > 8);
    }
}

TEST_CASE("usage errors are one line and status 2, whatever the parser makes of them") {
    struct Case {
        std::vector<std::string> args;
        std::string line; // "" for words of the parser
    };
    const std::string help = " (see 'cfatool --help')", chart_help = " (see 'cfatool chart --help')";
    for (const Case &c : {
             Case{{}, "cfatool: A subcommand is required" + help},
             Case{{"chrat", "scene"}, "cfatool: unknown subcommand 'chrat'; did you mean 'chart'?" + help},
             Case{{"chart"}, "cfatool chart: NAME is required" + chart_help},
             Case{{"chart", "scnee", "--size", "4x4", "--bayer", "0", "-o", "x"},
                  "cfatool chart: unknown chart 'scnee'; did you mean 'scene'?" + chart_help},
             Case{{"chart", "--bayer", "0x1"},
                  "cfatool chart: --bayer: '0x1' is not a plain decimal number" + chart_help},
             Case{{"chart", "flat", "--angle", "3", "--size", "4x4", "--bayer", "0", "-o", "x"},
                  "cfatool chart: flat takes no --angle" + chart_help},
             Case{{"mosaic", "p.png", "-o", "x"},
                  "cfatool mosaic: --bayer is required (see 'cfatool mosaic --help')"},
             Case{{"--wrong"}, ""},
             Case{{"chart", "--wrong"}, ""},
             Case{{"chart", "--size"}, ""},
             Case{{"chart", "a", "b"}, ""},
             Case{{"preview", "p.ppm"}, ""},
             Case{{"chart", "--seed", "-3"}, ""},
             Case{{"chart", "--bits", "8", "--bits", "9"}, ""},
             Case{{""}, ""},
         }) {
        const Outcome outcome = cfatool_run(c.args);
        INFO(outcome.err);
        CHECK(outcome.status == 2);
        CHECK(outcome.out.empty());
        CHECK(std::count(outcome.err.begin(), outcome.err.end(), '\n') == 1);
        CHECK((c.line == "" || outcome.err == c.line + "\n"));
    }
}

TEST_CASE("outputs that cannot be written are named and leave nothing behind") {
    const TempFolder folder;
    const auto chart_to = [](const std::string &path) {
        return cfatool_run({"chart", "flat", "--size", "200x200", "--bayer", "0", "-o", path});
    };
    for (const auto &[path, reason] : {std::pair{folder / "none/c.ppm", "No such file or directory"},
                                       {std::string("/dev/full"), "No space left on device"}}) {
        const Outcome outcome = chart_to(path);
        CHECK(outcome.status == 2);
        CHECK(outcome.err == path + ": " + reason + "\n");
    }
    // A picture that stood there before stays when its successor fails.
    write_file(folder / "old.png", "old");
    write_file(folder / "bad.ppm", "P5\n2 1\n255\nabc");
    CHECK(cfatool_run({"preview", folder / "bad.ppm", "-o", folder / "old.png"}).status == 2);
    CHECK(read_file(folder / "old.png") == "old");
    CHECK(chart_to(folder / "old.png").status == 0);
    CHECK(read_file(folder / "old.png").starts_with("P5\n"));
    CHECK(run_program({"/bin/ls", "-A", folder.path}).out == "bad.ppm\nold.png\n");
}
