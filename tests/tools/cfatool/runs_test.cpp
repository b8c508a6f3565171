#include <filesystem>

#include "tests/tools/cfatool/room.h"
#include "tools/cfatool/pictures/png_file.h"
#include "tools/cfatool/runs/run_images.h"

using namespace cfatool;
namespace fs = std::filesystem;

// clang-format off
TEST_CASE_FIXTURE(Room, "the list names the images of golden runs, each once, in the order in which the model makes them") {
    std::set<std::string> listed, recorded;
    const std::string model = read_file(source_root() + "/cmodel/cfa/src/cfa_model.cpp");
    size_t before = 0;
    for (const RunImage &image : run_images()) {
        CHECK(listed.insert(image.file).second);
        const size_t call = model.find("    " + std::string(image.stage) + "("); // of a stage; sub-steps have none
        CHECK((call == std::string::npos || call >= before || image.stage == std::string("cfa_CalPhaseDifference")));
        before = call == std::string::npos ? before : call;
    }
    for (const auto &entry : fs::recursive_directory_iterator(source_root() + "/tests/data/golden"))
        if (entry.path().extension() == ".ppm")
            recorded.insert(entry.path().filename());
    CHECK(listed == recorded);
}

TEST_CASE_FIXTURE(Room, "a run folder: known images in order, others behind them by name, each at a pixel") {
    for (const char *name : {"out.ppm", "a.ppm", "dbg/dbg_img_GH.ppm", "dbg/zz.ppm"})
        put(name, picture("P5 4 3 4095", {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}));
    put("raw.ppm", picture("P6 4 3 255", Samples(36, 5)));
    put("dbg/note.txt", "");
    put("cmodel_top.ini", "[cmodel_top]\nreg_img_bayerid = 2\n"); // Gr R / B Gb
    check({{"probe . 1,0", 0,
            "pixel 1,0 of ., R site of pattern 2\n"
            "raw.ppm                      5/5/5           the mosaic as read\n"
            "dbg_img_GH.ppm               2               candidate picture that interpolates green along the row; shown: green\n"
            "out.ppm                      2               RGB output: demosaiced, moire removed, detail added\n"
            "a.ppm                        2               \nzz.ppm                       2               \n"},
           {"probe . 0,1", 0, ", B site of pattern 2\n"}, {"probe . 3,0 --window 1", 0, "green\n     3 [4]\n     7  8 \n"},
           {"probe . 1,1 --window 1", 0, "green\n      1   2   3 \n      5  [6]  7 \n      9  10  11 \n"},
           {"probe . 3,2 --window 1 --json", 0, R"("left":2,"top":1,"channels":1,"rows":[[7,8],[11,12]]})"},
           {"probe . 4,1", 2, "./raw.ppm: has no pixel 4,1: it is 4x3"}, {"probe . 1,3", 2, "has no pixel 1,3"},
           {"probe . 1", 2, "cfatool probe: X,Y: '1' holds 1 numbers, not 2 (see"}});
}

TEST_CASE_FIXTURE(Room, "the page of a golden run: its links are its files, all within its folder") {
    check({{"report -o page '" + source_root() + "/tests/data/golden/everything_on_scene_id2'", 0, "38 images, 5 registers that differ from"}});
    const std::string page = get("page/index.html");
    std::set<std::string> files;
    for (const auto &entry : fs::directory_iterator(*this / "page/images"))
        files.insert("images/" + entry.path().filename().string());
    CHECK(matches_in(page, "(?:href|src)=\"([^\"]*)\"") == files);
    for (const char *part : {"<td>reg_cfa_shpn_gain_value</td><td class=\"n\">0</td><td class=\"n\">40</td>",
                             "cfa_cmodel cfa.ini run.log 0 1 dbg cmodel_top.ini raw.ppm out.ppm",
                             "direction of interpolation: 0 blend, 1 horizontal, 2 vertical; 0..2"})
        CHECK_MESSAGE(contains(page, part), part);
}

TEST_CASE_FIXTURE(Room, "thumbnails, brightened images, samples in the page, and what must be escaped") {
    const std::string name = "run/a <b> & 100%#?.ppm";
    Samples samples(600 * 300, 0x41); // a thumbnail's average of nine falls just short of 0x41
    for (size_t i = 0; i < samples.size(); i += 3)
        samples[i] = i / 600 % 3 == 0 ? 0x40 : 0x41;
    put(name, picture("P5 600 300 255", samples));
    put("run/dbg_img_GH.ppm", picture("P5 3 1 4095", {100, 0, 7}));
    put("run/empty.ppm", "P5\n0 0\n255\n");
    put("run/deep.ppm", picture("P5 1 1 16777215", {0x12345}));
    put("run/cfa.ini", "[cfa]\nreg_cfa_enable = 0\n");
    put("run/call.txt", "cfa_cmodel <x> & y\n");
    REQUIRE(run("report run -o page").status == 0);
    const std::string page = get("page/index.html"), escaped = "a%20%3Cb%3E%20%26%20100%25%23%3F.png";
    CHECK(matches_in(page, "(?:href|src)=\"([^\"]*)\"") == std::set<std::string>{"images/" + escaped, "thumbs/" + escaped, "images/dbg_img_GH.png", "images/deep.png"});
    const RgbPicture thumbnail = read_png(*this / "page/thumbs/a <b> & 100%#?.png");
    CHECK(thumbnail.width == 200); // every third pixel and row
    CHECK(thumbnail.samples == std::vector<uint8_t>(200 * 100 * 3, 0x40));
    CHECK(read_png(*this / "page/images/a <b> & 100%#?.png").width == 600);
    CHECK(read_png(*this / "page/images/dbg_img_GH.png").samples ==
          std::vector<uint8_t>{249, 249, 249, 0, 0, 0, 17, 17, 17}); // 4000 and 280 of 4095 in 255
    // 00 64, 00 00, 00 07 and 00 01 23 45 in base64.
    for (const char *part : {R"({"id":0,"width":3,"height":1,"channels":1,"bytes":2,"data":"AGQAAAAH"})", R"("bytes":4,"data":"AAEjRQ==")", "<td>reg_cfa_enable</td><td class=\"n\">1</td><td class=\"n\">0</td>",
                             "3 x 1, samples 0..100 of 0..4095, brightened 40 times", "<pre>cfa_cmodel &lt;x&gt; &amp; y\n</pre>"})
        CHECK_MESSAGE(contains(page, part), part);
    put(name, "P5\n600 300\n255\nshort");
    check({{"report run -o page", 2, "cut short: 5 bytes of samples, 180000 expected"}, {"report none -o x", 2, "none: No such"}});
}
// clang-format on
