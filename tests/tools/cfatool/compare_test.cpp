#include "tests/tools/cfatool/room.h"
#include "tools/cfatool/pictures/png_file.h"

// clang-format off
TEST_CASE_FIXTURE(Room, "compare of two pictures: status and words, for scripts too") {
    Samples a(10 * 8 * 3, 1000), b = a;
    b[(2 * 10 + 7) * 3 + 2] = 1010; // the first in raster order
    b[(5 * 10 + 3) * 3 + 0] = 996;
    b[(5 * 10 + 4) * 3 + 2] = 0;
    b[(5 * 10 + 4) * 3 + 1] = 5000; // above the maximum value
    put("a", picture("P6 10 8 4095", a));
    put("b", picture("P6 10 8 4095", b));
    put("grey", picture("P5 10 8 4095", Samples(80, 1000)));
    put("deep", picture("P6 10 8 8191", a));
    put("cut", get("a").substr(0, get("a").size() - 1));
    put("tall", "P5\n0 2147483647\n255\n"); // rows without pixels are compared at once
    // The mean difference of blue is 1010 / 80. PSNR: 10 log10(4095^2 / ((10^2 + 4^2 + 1000^2 + 4000^2) / 240)).
    check({{"compare a b --bayer 3 --max-list 2", 1, "a and b differ: 10x8, 3 channels, maximum value 4095\n"
                "        differing      share      largest           mean\n"
                "  R                1    1.25000%            4       0.050000\n"
                "  G                1    1.25000%         4000      50.000000\n"
                "  B                2    2.50000%         1000      12.625000\n"
                "  all              4    1.66667%         4000      20.891667\n"
                "PSNR 23.74 dB\nbounding box 3,2,5,4 (X,Y,W,H)\n"
                "first difference: x 7, y 2, channel B: 1000 against 1010 (Gr site)\n"
                "  x 7, y 2, channel B: 1000 against 1010 (Gr site)\n  x 3, y 5, channel R: 1000 against 996 (B site)\n"},
           {"compare a b --json --bayer 0 --max-list 1", 1, R"({"a":"a","b":"b","equal":false,"channels":[{"name":"R","differing":1,)"
                R"("samples":80,"largest":4,"mean":0.05},{"name":"G","differing":1,"samples":80,"largest":4000,"mean":50.0},)"
                R"({"name":"B","differing":2,"samples":80,"largest":1000,"mean":12.625}],"psnr":23.7427,"box":[3,2,5,4],)"
                R"("first":{"x":7,"y":2,"channel":"B","a":1000,"b":1010,"site":"Gb"},)"
                R"("list":[{"x":7,"y":2,"channel":"B","a":1000,"b":1010,"site":"Gb"}]})" "\n"},
           {"compare a a --json", 0, R"("psnr":null})"}, {"compare a b --tolerance 10", 1, "maximum value 4095, tolerance 10\n"},
           {"compare a b --tolerance 4000", 0, "a and b are equal within the tolerance of 4000: 10x8"},
           {"compare a b --crop 0,0,7,8", 1, "bounding box 3,5,2,1"}, {"compare a b --crop 5,3,5,5", 0, "a and b are equal: 5x5"},
           {"compare a grey", 1, "size mismatch: a is 10x8 with 3 channels, grey is 10x8 with 1 channel\n"},
           {"compare a deep", 1, "depth mismatch: maximum value 4095 in a, 8191 in deep\n"},
           {"compare a cut", 2, "cut: cut short: 479 bytes of samples, 480 expected\n"}});
    CHECK(run("compare tall tall", "ulimit -t 3;").out == "tall and tall are equal: 0x2147483647, 1 channel, maximum value 255\n");
    put("a", picture("P5 1 1 4294967295", {4294967295}));
    put("b", picture("P5 1 1 4294967295", {1}));
    check({{"compare a b", 1, "first difference: x 0, y 0: 4294967295 against 1\n"}});
    // Dark grey where nothing differs, else by bits: blue, magenta, yellow.
    put("a", picture("P5 5 1 511", {0, 511, 5, 300, 0}));
    put("b", picture("P5 5 1 511", {0, 511, 4, 316, 511}));
    check({{"compare a b --map m", 1, ""}});
    CHECK(cfatool::read_png(*this / "m").samples == std::vector<uint8_t>{0, 0, 0, 96, 96, 96, 0, 80, 255, 255, 0, 160, 255, 240, 0});
}

TEST_CASE_FIXTURE(Room, "two runs are compared in pipeline order, and the first stage that differs is named") {
    for (const char *name : {"raw", "dbg/dbg_img_AHDiff", "dbg/dbg_img_MinRGB", "out", "another"})
        for (const std::string side : {"a/", "b/"})
            put(side + name + ".ppm", picture("P5 2 1 4095", {7, 8}));
    check({{"compare a b", 0, "\nno difference in 5 images\n"}});
    put("b/dbg/dbg_img_AHDiff.ppm", picture("P5 2 1 4095", {1, 1}));
    put("b/dbg/dbg_img_MinRGB.ppm", picture("P5 2 1 4095", {7, 9}));
    put("b/dbg/dbg_img_GH.ppm", picture("P5 2 1 4095", {1, 1}));
    const std::string first = "1 of 2 samples differ, largest 1, first at x 1, y 0: 8 against 9\n";
    check({{"compare a b", 1, "raw.ppm                       equal\ndbg_img_GH.ppm                only in b\n"
                "dbg_img_MinRGB.ppm            " + first +
                "dbg_img_AHDiff.ppm            2 of 2 samples differ, largest 7, first at x 0, y 0: 7 against 1\n"
                "out.ppm                       equal\nanother.ppm                   equal\n"
                "first stage that differs: cfa_CalPredictPixel, dbg_img_MinRGB.ppm: " + first},
           {"compare a b --json", 1, R"("only_a":[],"only_b":["dbg_img_GH.ppm"],"first_stage":"cfa_CalPredictPixel"})" "\n"},
           {"compare a b --tolerance 6 --common", 1, ""}, {"compare a b --tolerance 7", 1, "1 on one side only"},
           {"compare a b --tolerance 7 --common", 0, ""}});
    put("b/out.ppm", "P5 2 1 4095\n\1");
    CHECK(run("compare a b --tolerance 7 --common").status == 2);
    CHECK(contains(run("compare a .").err, "cfatool compare: no image is in both a and ."));
    CHECK(contains(run("compare a b").err, "b/out.ppm: cut short"));
}
// clang-format on
