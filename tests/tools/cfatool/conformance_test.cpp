#include <filesystem>

#include "tests/tools/cfatool/room.h"

TEST_CASE_FIXTURE(
    Room, "the tool's sums are the recorded ones; a wrong sample, a missing image and a bad end are found") {
    const auto bad_tool = [&](const std::string &script) {
        put("bad", "#!/bin/sh\n" + script);
        std::filesystem::permissions(*this / "bad", std::filesystem::perms::owner_all);
    };
    CHECK(run("conformance --record sums --tool '" + tool_path() + "'").status == 0);
    CHECK(get("sums") == read_file(source_root() + "/tests/data/conformance.sha256"));

    // Another sum and one less; one byte of one output of the run without debug images only, a debug image
    // less.
    std::string changed = get("sums");
    changed[0] = changed[0] == '0' ? '1' : '0';
    put("sums", changed.substr(0, changed.rfind('\n', changed.size() - 2) + 1));
    bad_tool("'" + tool_path() +
             "' \"$@\" || exit 1\nrm -f dbg/dbg_img_LH.ppm\n"
             "[ $4 = 1 ] || printf x | dd of=\"$9\" bs=1 seek=60 conv=notrunc 2>/dev/null\n");
    const Outcome wrong = run("conformance --tool bad --sums sums");
    CHECK(wrong.status == 1);
    for (const char *found :
         {"/out_dc.ppm: differs when no debug images are written\n", "/dbg_img_LH.ppm: is missing\n",
          ": differs from the recorded sum\n", ": was not recorded\n"})
        CHECK_MESSAGE(contains(wrong.out, found), found);

    bad_tool("exit 3\n");
    CHECK(contains(run("conformance --tool bad --sums sums").out, "ended with status 3\n"));
    CHECK(run("conformance --tool bad --record no").status == 1);
    CHECK(list() == "bad\nsums\n");
    CHECK(run("conformance --tool none --sums sums").err.ends_with("none: No such file or directory\n"));
    put("sums", std::string(64, '0') + "  v0/wide/out.ppm\n");
    CHECK(run("conformance --tool bad --sums sums").status == 2);
}

TEST_CASE_FIXTURE(Room,
                  "the set for another bench: its plan holds a folder of results, every file is there") {
    CHECK(run("conformance --export e").status == 0);
    const auto last = [&] {
        const std::string out = run("regress run e/plan.tsv -o r --expect rtl").out;
        return out.substr(0, out.find(';'));
    };
    std::filesystem::rename(*this / "e/cases/smallest/out.ppm", *this / "out.ppm"); // from the text alone
    CHECK(run("hex --back 4x3 --colour e/cases/smallest/out.hex -o e/cases/smallest/out.ppm").status == 0);
    std::filesystem::copy(*this / "e/cases", *this / "rtl", std::filesystem::copy_options::recursive);
    CHECK(last() == "32 cases: 32 pass, 0 fail, 0 error, 0 not run");
    CHECK(get("out.ppm") == get("e/cases/smallest/out.ppm"));
    CHECK(get("e/cases/smallest/planes/out_rgb.npy").size() == 128 + 4 * 3 * 3 * 4);
    std::string changed = get("rtl/smallest/out_dc.ppm");
    changed.back() ^= 1;
    put("rtl/smallest/out_dc.ppm", changed);
    CHECK(last() == "32 cases: 31 pass, 1 fail, 0 error, 0 not run");
}
