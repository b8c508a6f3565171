#include <algorithm>
#include <doctest/doctest.h>

#include "tests/tools/tool_support.h"

namespace {

/// Status 2, nothing on standard output, this one line on standard error.
void check_trouble(const std::vector<std::string> &args, const std::string &line) {
    const Outcome outcome = cfatool_run(args);
    CHECK(outcome.status == 2);
    CHECK(outcome.out.empty());
    CHECK(outcome.err == line + "\n");
}

} // namespace

TEST_CASE("help and version go to standard output with status 0, each help with an example") {
    const Outcome version = cfatool_run({"--version"});
    CHECK(version.status == 0);
    CHECK(version.out.substr(0, 8) == "cfatool ");
    for (const char *sub : {"", "chart", "mosaic", "preview"}) {
        const Outcome help = *sub != '\0' ? cfatool_run({sub, "--help"}) : cfatool_run({"--help"});
        CHECK(help.status == 0);
        CHECK(help.err.empty());
        CHECK_MESSAGE(help.out.find("Example") != std::string::npos, sub);
    }
    const Outcome list = cfatool_run({"chart", "--list"});
    CHECK(list.status == 0);
    CHECK(std::count(list.out.begin(), list.out.end(), '\n') == 11);
}

TEST_CASE("usage errors are one line and status 2, whatever the parser makes of them") {
    const std::string chart_help = " (see 'cfatool chart --help')";
    check_trouble({}, "cfatool: A subcommand is required (see 'cfatool --help')");
    check_trouble({"chrat", "scene"},
                  "cfatool: unknown subcommand 'chrat'; did you mean 'chart'? (see 'cfatool --help')");
    check_trouble({"chart"}, "cfatool chart: NAME is required" + chart_help);
    check_trouble({"chart", "scnee", "--size", "4x4", "--bayer", "0", "-o", "x"},
                  "cfatool chart: unknown chart 'scnee'; did you mean 'scene'?" + chart_help);
    check_trouble({"chart", "--bayer", "0x1"},
                  "cfatool chart: --bayer: '0x1' is not a plain decimal number" + chart_help);
    check_trouble({"chart", "flat", "--angle", "3", "--size", "4x4", "--bayer", "0", "-o", "x"},
                  "cfatool chart: flat takes no --angle" + chart_help);
    check_trouble({"mosaic", "p.png", "-o", "x"},
                  "cfatool mosaic: --bayer is required (see 'cfatool mosaic --help')");
    for (const std::vector<std::string> &args :
         std::vector<std::vector<std::string>>{{"--wrong"},
                                               {"chart", "--wrong"},
                                               {"chart", "--size"},
                                               {"chart", "a", "b"},
                                               {"preview", "p.ppm"},
                                               {"chart", "--seed", "-3"},
                                               {"chart", "--bits", "8", "--bits", "9"},
                                               {""}}) {
        const Outcome outcome = cfatool_run(args);
        CHECK(outcome.status == 2);
        CHECK(outcome.out.empty());
        CHECK(std::count(outcome.err.begin(), outcome.err.end(), '\n') == 1);
    }
}

TEST_CASE("outputs that cannot be written are named and leave nothing behind") {
    const TempFolder folder;
    const auto chart_to = [](const std::string &path) {
        return cfatool_run({"chart", "flat", "--size", "200x200", "--bayer", "0", "-o", path});
    };
    const Outcome nowhere = chart_to(folder / "none/c.ppm");
    CHECK(nowhere.status == 2);
    CHECK(nowhere.err == (folder / "none/c.ppm") + ": No such file or directory\n");
    const Outcome full = chart_to("/dev/full");
    CHECK(full.status == 2);
    CHECK(full.err == "/dev/full: No space left on device\n");
    // A picture that stood there before stays when its successor fails.
    write_file(folder / "old.png", "old");
    write_file(folder / "bad.ppm", "P5\n2 1\n255\nabc");
    CHECK(cfatool_run({"preview", folder / "bad.ppm", "-o", folder / "old.png"}).status == 2);
    CHECK(read_file(folder / "old.png") == "old");
    CHECK(cfatool_run({"chart", "flat", "--size", "2x2", "--bayer", "0", "-o", folder / "old.png"}).status ==
          0);
    CHECK(read_file(folder / "old.png").substr(0, 3) == "P5\n");
    const Outcome listing = run_program({"/bin/ls", "-A", folder.path});
    CHECK(listing.out == "bad.ppm\nold.png\n");
}
