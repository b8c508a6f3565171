#include <algorithm>
#include <doctest/doctest.h>
#include <filesystem>
#include <set>

#include "tests/tools/cfatool/tool_support.h"
#include "tools/cfatool/runs/run_images.h"

using namespace cfatool;
namespace fs = std::filesystem;

namespace {

std::string golden(const std::string &name) {
    return source_root() + "/tests/data/golden/" + name;
}

} // namespace

TEST_CASE("the list names the images of golden runs, each once, and no other") {
    std::set<std::string> listed, recorded;
    for (const RunImage &image : run_images())
        CHECK(listed.insert(image.file).second);
    for (const auto &entry : fs::recursive_directory_iterator(golden("")))
        if (entry.path().extension() == ".ppm")
            recorded.insert(entry.path().filename());
    CHECK(listed == recorded);
}

TEST_CASE("stages stand in the order in which the model calls them") {
    const std::string model = read_file(golden("../../../cmodel/cfa/src/cfa_model.cpp"));
    size_t before = 0;
    for (const RunImage &image : run_images()) {
        const size_t at =
            model.find("    " + std::string(image.stage) + "("); // sub-steps are not called there
        if (at == std::string::npos || std::string(image.file) == "dbg_img_afc_PD_WT.ppm")
            continue;
        CHECK_MESSAGE(at >= before, image.file);
        before = at;
    }
    CHECK(before > 0);
}

TEST_CASE("a run folder: known images in order, others behind them by name") {
    const TempFolder folder;
    fs::create_directory(folder / "dbg");
    for (const char *name :
         {"out.ppm", "a.ppm", "raw.ppm", "dbg/dbg_img_GH.ppm", "dbg/zz.ppm", "dbg/note.txt"})
        write_file(folder / name, "");
    std::vector<std::string> names;
    for (const FoundImage &image : find_images(folder.path))
        names.push_back(image.path.substr(folder.path.size() + 1));
    CHECK(names ==
          std::vector<std::string>{"raw.ppm", "dbg/dbg_img_GH.ppm", "out.ppm", "a.ppm", "dbg/zz.ppm"});
    CHECK_THROWS_WITH(find_images(folder / "none"), doctest::Contains("none: No such file or directory"));
}

TEST_CASE("probe prints every image at the pixel, with neighbours on request") {
    const std::string run = golden("everything_on_scene_id2");
    const std::string raw = read_file(run + "/raw.ppm");
    const auto sample = [&](int x, int y) { // 64 x 48 samples of two bytes at the end of the file
        const size_t at = raw.size() - 64 * 48 * 2 + static_cast<size_t>(y * 64 + x) * 2;
        return std::to_string(static_cast<uint8_t>(raw[at]) * 256 + static_cast<uint8_t>(raw[at + 1]));
    };
    const Outcome outcome = cfatool_run({"probe", run, "63,20"}); // Gr R / B Gb: odd column, even row
    CHECK(outcome.status == 0);
    CHECK(
        contains(outcome.out, ", R site of pattern 2\nraw.ppm                      " + sample(63, 20) + " "));
    CHECK(std::count(outcome.out.begin(), outcome.out.end(), '\n') == 39);
    std::string rows;
    for (int y = 19; y <= 21; ++y)
        rows += (y == 19 ? "[" : ",[") + sample(62, y) + "," + sample(63, y) + "]";
    const Outcome json = cfatool_run({"probe", run, "63,20", "--window", "1", "--json"});
    CHECK(contains(json.out, "\"left\":62,\"top\":19,\"channels\":1,\"rows\":[" + rows + "]"));
    CHECK(cfatool_run({"probe", run, "64,20"}).status == 2);
    CHECK(cfatool_run({"probe", run + "/none", "1,1"}).status == 2);
}

TEST_CASE("hex: one sample a line, as many digits as the maximum value asks for") {
    const TempFolder folder;
    const auto hex = [&](const std::string &picture, const std::vector<std::string> &more = {}) {
        write_file(folder / "p.ppm", picture);
        return cfatool_run({"hex", folder / "p.ppm"}, more);
    };
    CHECK(hex("P5\n2 2\n255\n" + big_endian({0, 10, 200, 255}, 1)).out == "00\n0a\nc8\nff\n");
    CHECK(hex("P6\n1 1\n4095\n" + big_endian({1, 2, 0xABC}, 2)).out == "001\n002\nabc\n");
    CHECK(hex("P5\n1 1\n16777215\n" + big_endian({0x123}, 3)).out == "000123\n");
    const std::string six = "P5\n3 2\n1023\n" + big_endian({1, 2, 3, 4, 5, 6}, 2);
    CHECK(hex(six, {"--crop", "1,1,2,1"}).out == "005\n006\n");
    const Outcome above = hex("P5\n2 1\n4095\n" + big_endian({7, 0xFFFF}, 2), {"-o", folder / "p.mem"});
    CHECK(read_file(folder / "p.mem") == "007\nffff\n");
    CHECK(contains(above.err, "1 samples above the maximum value 4095"));
}
