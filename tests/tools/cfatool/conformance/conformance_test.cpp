#include <doctest/doctest.h>
#include <filesystem>
#include <regex>

#include "tests/tools/cfatool/tool_support.h"
#include "tools/cfatool/base/files.h"

using namespace cfatool;
namespace fs = std::filesystem;

TEST_CASE("sums are those that were published, of files of more than one piece too") {
    const TempFolder folder;
    write_file(folder / "abc", "abc");
    CHECK(sha256_of_file(folder / "abc") ==
          "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    write_file(folder / "million", std::string(1000000, 'a'));
    CHECK(sha256_of_file(folder / "million") ==
          "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

TEST_CASE("a recorded set is confirmed; a tool with one wrong sample, a missing image or a bad end is not") {
    const TempFolder folder;
    const std::string sums = folder / "sums", tool = std::getenv("CFA_CMODEL"), bad = folder / "bad";
    const auto check = [&](const std::string &with) {
        return cfatool_run({"conformance", "--tool", with, "--sums", sums});
    };
    const auto make_bad = [&](const std::string &script) {
        write_file(bad, "#!/bin/sh\n" + script);
        fs::permissions(bad, fs::perms::owner_all);
    };
    REQUIRE(cfatool_run({"conformance", "--tool", tool, "--record", sums}).status == 0);
    CHECK(check(tool).status == 0);
    CHECK(std::regex_search(read_file(sums), std::regex("\n[0-9a-f]{64}  v1/wide/dbg_img_GH\\.ppm\n")));

    // One byte of one output of the run without debug images only.
    make_bad("'" + tool +
             "' \"$@\" || exit 1\n"
             "[ $4 = 1 ] || printf x | dd of=\"$9\" bs=1 seek=60 conv=notrunc 2>/dev/null\n");
    const Outcome wrong = check(bad);
    CHECK(wrong.status == 1);
    CHECK(contains(wrong.out, "v1/wide/out_dc.ppm: differs when no debug images are written\n"));

    make_bad("'" + tool + "' \"$@\" && rm -f dbg/dbg_img_LH.ppm\n");
    CHECK(contains(check(bad).out, "v1/wide/dbg_img_LH.ppm: is missing\n"));
    make_bad("exit 3\n");
    CHECK(contains(check(bad).out, "ended with status 3\n"));
    CHECK(cfatool_run({"conformance", "--tool", bad, "--record", folder / "no"}).status == 1);
    CHECK_FALSE(fs::exists(folder / "no"));
    CHECK(check(folder / "none").status == 2);
    write_file(sums, std::string(64, '0') + "  v0/wide/out.ppm\n");
    CHECK(check(tool).status == 2);
}
