#include <filesystem>

#include "cmodel/cfa/src/planes.h"
#include "tests/tools/cfatool/room.h"
#include "tools/cfatool/runs/plane_file.h"

namespace fs = std::filesystem;

TEST_CASE_FIXTURE(Room, "crop: the smallest aligned window that keeps what the wrong sample is made of") {
    put("x/note.txt", "");
    struct Row {
        const char *bayer, *plane;
        int x, y;
        std::string words, text;
    };
    // raw around the pixel, four in each direction, in steps of 2 or, for a 4 x 4 pattern, 4.
    for (const Row &row : std::vector<Row>{
             {"1", "AvgRGB", 21, 13, "run b", "small: 10x10 from 16,8 on; pixel 21,13 is 5,5 in it\n"},
             {"1", "AvgRGB", 0, 0, "run b", "small: 6x6 from 0,0 on; pixel 0,0 is 0,0 in it\n"},
             {"8", "AvgRGB", 21, 12, "run b", "small: 12x12 from 16,8 on"},
             {"1", "LMax", 38, 28, "run b", "small: 7x7 from 34,24 on; pixel 38,28 is 4,4 in it\n"},
             {"1", "", 17, 12, "run --around 17,12", "pixel 17,12 is"},
             {"1", "YMoire", 30, 20, "run b", "pixel 30,20 is"}}) {
        for (const char *folder : {"run", "b", "small"})
            fs::remove_all(*this / folder);
        check({{std::string("chart scene --size 41x31 --seed 3 -o raw.ppm --bayer ") + row.bayer, 0, ""},
               {std::string("run raw.ppm --debug --planes -o run --set reg_cfa_ymoire_enable=1 --set "
                            "reg_cfa_shpn_enable=1 --bayer ") +
                    row.bayer,
                0, ""}});
        fs::copy(*this / "run", *this / "b", fs::copy_options::recursive);
        const std::string wrong = std::string("b/planes/") + row.plane + ".npy";
        if (row.plane[0] != '\0') {
            std::string bytes = get(wrong);
            bytes[128 + 4 * (bytes.size() > 128 + 4 * 41 * 31 ? 3 : 1) * (41 * row.y + row.x)] ^= 1;
            put(wrong, bytes);
        }
        INFO(row.text);
        const Outcome outcome = run("crop " + row.words + " -o small");
        CAPTURE(outcome.out);
        REQUIRE(contains(outcome.out, row.text));
        int width = 0, height = 0, left = 0, top = 0;
        REQUIRE(std::sscanf(outcome.out.c_str(), "small: %dx%d from %d,%d on", &width, &height, &left,
                            &top) == 4);
        CHECK(cfatool::PlaneFile(*this / "small/planes/raw.npy").read() ==
              cfatool::PlaneFile(*this / "run/planes/raw.npy").read(left, top, width, height));
        for (const cfa::PlaneInfo &plane :
             cfa::planes()) { // what the removal of luma moire reads, or every plane
            const std::string readers = plane.readers, file = std::string("/planes/") + plane.name + ".npy";
            const bool input = std::string(row.plane) == "YMoire" && contains(readers + " ", "cfa_DeYMoire ");
            if (row.plane != std::string() && row.plane != std::string(plane.name) && !input)
                continue;
            const int r = 4 * input;
            CHECK_MESSAGE(cfatool::PlaneFile(*this / ("small" + file))
                                  .read(row.x - r - left, row.y - r - top, 2 * r + 1, 2 * r + 1) ==
                              cfatool::PlaneFile(*this / ("run" + file))
                                  .read(row.x - r, row.y - r, 2 * r + 1, 2 * r + 1),
                          plane.name);
        }
    }
    int width = 0, height = 0, x = 0, y = 0;
    std::string found = run("crop run --around 17,12 -o small2").out;
    REQUIRE(std::sscanf(found.c_str(), "small2: %dx%d from %*d,%*d on; pixel 17,12 is %d,%d in it", &width,
                        &height, &x, &y) == 4);
    found = std::to_string(x) + "," + std::to_string(y);
    check({{"crop small2 --around " + found + " -o small3", 0,
            "small3: " + std::to_string(width) + "x" + std::to_string(height) + " from 0,0 on"}});
    // Registers that differ: both samples are made again in as few pixels as the block takes.
    const std::string make = "run raw.ppm --bayer 1 --planes -o ",
                      edge = "c --set reg_cfa_edgee_thd=3 --set reg_cfa_edgee_thd2=3";
    check({{"chart scene --size 41x31 --seed 3 -o raw.ppm --bayer 1", 0, ""},
           {make + "a", 0, ""},
           {make + edge, 0, ""},
           {"crop a c -o first", 0, "first: 4x4 from 2,0 on; pixel 3,0 is 1,0 in it\n"},
           {"crop a c --around 10,10 -o few", 0, "few: 6x4 from 8,8 on; pixel 10,10 is 2,2 in it\n"},
           {"run few/raw.ppm -r c/cfa.ini --top c/cmodel_top.ini --planes -o again", 0, ""}});
    for (const auto &[small, whole] : {std::pair("few", "a"), {"again", "c"}})
        CHECK(cfatool::PlaneFile(*this / small + "/planes/DirInfo.npy").read(2, 2, 1, 1) ==
              cfatool::PlaneFile(*this / whole + "/planes/DirInfo.npy").read(10, 10, 1, 1));
    fs::remove(*this / "c/cfa.ini"), fs::remove(*this / "c/run.json"); // no run of the model
    check({{"crop a c -o around", 0,
            "around: 14x10 from 0,0 on"}}); // what is read 4 pixels around, and what that reads
    CHECK(contains(get("small/run.json"), "\"file\": \"run/raw.ppm --crop "));
    CHECK(fs::exists(*this / "small/dbg_img_GH.ppm"));
    check({{"crop run -o new", 2, "cfatool crop: OTHER or --around says which pixel"},
           {"crop run run -o new", 2, "cfatool crop: no sample differs between run and run\n"},
           {"crop x --around 1,1 -o new", 2, "x/raw.ppm: No such file"},
           {"crop run --around 41,1 -o new", 2, "run/raw.ppm: has no pixel 41,1: it is 41x31\n"},
           {"crop run --around 1,1 -o small", 2, "small: is there already"},
           {"crop run --around 1 -o new", 2, "--around: '1' holds 1 numbers, not 2"}});
}
