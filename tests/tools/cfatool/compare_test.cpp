#include <png.h>

#include "tests/tools/cfatool/room.h"
#include "tools/cfatool/compare/difference_kind.h"
#include "tools/cfatool/pictures/png_file.h"

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
    // The mean difference of blue is 1010 / 80. PSNR: 10 log10(4095^2 / ((10^2 + 4^2 + 1000^2 + 4000^2) /
    // 240)).
    check(
        {{"compare a b --bayer 3 --max-list 2", 1,
          "a and b differ: 10x8, 3 channels, maximum value 4095\n"
          "        differing      share      largest           mean\n"
          "  R                1    1.25000%            4       0.050000\n"
          "  G                1    1.25000%         4000      50.000000\n"
          "  B                2    2.50000%         1000      12.625000\n"
          "  all              4    1.66667%         4000      20.891667\n"
          "PSNR 23.74 dB\nbounding box 3,2,5,4 (X,Y,W,H)\n"
          "first difference: x 7, y 2, channel B: 1000 against 1010 (Gr site)\n"
          "  x 7, y 2, channel B: 1000 against 1010 (Gr site)\n  x 3, y 5, channel R: 1000 against 996 (B "
          "site)\n"},
         {"compare a b --json --bayer 0 --max-list 1", 1,
          R"({"a":"a","b":"b","equal":false,"channels":[{"name":"R","differing":1,)"
          R"("samples":80,"largest":4,"mean":0.05},{"name":"G","differing":1,"samples":80,"largest":4000,"mean":50.0},)"
          R"({"name":"B","differing":2,"samples":80,"largest":1000,"mean":12.625}],"psnr":23.7427,"box":[3,2,5,4],)"
          R"("first":{"x":7,"y":2,"channel":"B","a":1000,"b":1010,"site":"Gb"},)"
          R"("list":[{"x":7,"y":2,"channel":"B","a":1000,"b":1010,"site":"Gb"}]})"
          "\n"},
         {"compare a a --json", 0, R"("psnr":null})"},
         {"compare a b --tolerance 10", 1, "maximum value 4095, tolerance 10\n"},
         {"compare a b --tolerance 4000", 0, "a and b are equal within the tolerance of 4000: 10x8"},
         {"compare a b --crop 0,0,7,8", 1, "bounding box 3,5,2,1"},
         {"compare a b --crop 5,3,5,5", 0, "a and b are equal: 5x5"},
         {"compare a grey", 1, "size mismatch: a is 10x8 with 3 channels, grey is 10x8 with 1 channel\n"},
         {"compare a deep", 1, "depth mismatch: maximum value 4095 in a, 8191 in deep\n"},
         {"compare a cut", 2, "cut: cut short: 479 bytes of samples, 480 expected\n"}});
    CHECK(run("compare tall tall", "ulimit -t 3;").out ==
          "tall and tall are equal: 0x2147483647, 1 channel, maximum value 255\n");
    put("a", picture("P5 1 1 4294967295", {4294967295}));
    put("b", picture("P5 1 1 4294967295", {1}));
    check({{"compare a b", 1, "first difference: x 0, y 0: 4294967295 against 1\n"}});
    // Dark grey where nothing differs, else by bits: blue, magenta, yellow.
    put("a", picture("P5 5 1 511", {0, 511, 5, 300, 0}));
    put("b", picture("P5 5 1 511", {0, 511, 4, 316, 511}));
    check({{"compare a b --map m", 1, ""}});
    CHECK(cfatool::read_png(*this / "m").samples ==
          std::vector<uint8_t>{0, 0, 0, 96, 96, 96, 0, 80, 255, 255, 0, 160, 255, 240, 0});
}

TEST_CASE_FIXTURE(Room, "PNG files and the images of a run are compared in their own range") {
    const auto row = [](uint32_t last) { return Samples{1, 2, last}; };
    put("p8", picture("P5 3 1 255", row(9)));
    put("p16", picture("P5 3 1 4095", row(700)));
    const uint8_t grey[] = {1, 2, 9};
    const uint16_t deep[] = {1, 2, 701};
    for (const bool is_deep : {false, true}) {
        png_image image = {};
        image.version = PNG_IMAGE_VERSION;
        image.width = 3, image.height = 1, image.format = is_deep ? PNG_FORMAT_LINEAR_Y : PNG_FORMAT_GRAY;
        const void *const samples = is_deep ? static_cast<const void *>(deep) : grey;
        REQUIRE(png_image_write_to_file(&image, (*this / (is_deep ? "deep.png" : "grey.png")).c_str(), 0,
                                        samples, 0, nullptr));
    }
    put("dbg_img_SigH.ppm", picture("P5 1 1 16777215", {0}));
    put("dbg_img_YMoire.ppm", picture("P5 1 1 255", {0}));
    put("one24", picture("P5 1 1 16777215", {131071}));
    put("one8", picture("P5 1 1 255", {255}));
    check({{"compare grey.png p8", 0, "grey.png and p8 are equal: 3x1, 1 channel, maximum value 255\n"},
           {"compare p16 deep.png", 1, "x 2, y 0: 700 against 701\n"},
           {"compare grey.png p16", 1, "depth mismatch: maximum value 255 in grey.png, 4095 in p16\n"},
           {"compare p16 deep.png --quiet", 1, "differ: 3x1, 1 channel, maximum value 4095\n"},
           {"compare dbg_img_SigH.ppm one24", 1, "PSNR 0.00 dB"},
           {"compare dbg_img_YMoire.ppm one8", 1,
            "PSNR 0.00 dB"}}); // variances end at 131071; 12 bits are cut to 8
    CHECK(!contains(run("compare p16 deep.png --quiet").out, "PSNR"));
    put("wide", picture("P5 2000 1 255", Samples(2000, 0)));
    Samples samples(2000, 0);
    samples[700] = 255;
    put("spot", picture("P5 2000 1 255", samples));
    check({{"compare wide spot --map m", 1, ""}}); // a pixel of 2000 is painted five wide
    const cfatool::RgbPicture map = cfatool::read_png(*this / "m");
    for (size_t x = 697; x < 704; ++x)
        CHECK((map.samples[3 * x] == 255) == (x >= 698 && x <= 702));
}

TEST_CASE_FIXTURE(Room, "what kind of difference it is") {
    Samples a;
    for (uint32_t i = 0; i < 3 * 12 * 10; ++i)
        a.push_back(i * i * 7 % 3001 | 8);
    const auto grey = [&](auto change, uint32_t range = 4095, const char *head = "P5 12 10 4095") {
        const bool colour = head[1] == '6';
        Samples from(a.begin(), a.begin() + (colour ? 360 : 120)), b = from;
        for (int y = 0; y < 10; ++y)
            for (int x = 0; x < 12; ++x)
                change(from, b, x, y, colour ? 3 * (12 * y + x) : 12 * y + x);
        put("a", picture(head, from));
        put("b", picture(head, b));
        std::string text;
        for (const std::string &kind : cfatool::difference_kinds(
                 *this / "a", *this / "b", cfatool::compare_pictures(*this / "a", *this / "b", {}), range, 3,
                 cfatool::Sites::all))
            text += kind + ";";
        return text;
    };
    using S = Samples;
    CHECK(grey([](S &, S &b, int, int, int i) { b[i] &= ~8u; }) == "bit 3 is lost in B;");
    CHECK(grey([](S &, S &b, int x, int, int i) { b[i] += x % 3 == 0 ? 5 : 0; }) == "B is A + 5;");
    CHECK(grey([](S &, S &b, int, int, int i) { b[i] = (b[i] << 8 & 0xFF00) | b[i] >> 8; }, 0) ==
          "the bytes are swapped;");
    CHECK(grey([](S &from, S &b, int x, int, int i) { b[i] = x > 0 ? from[i - 1] : 8; }) ==
          "B is A shifted by one column to the right;");
    CHECK(grey([](S &from, S &b, int, int y, int i) { b[i] = y < 9 ? from[i + 12] : 8; }) ==
          "B is A shifted by one row up;");
    CHECK(grey([](S &, S &b, int x, int y, int i) { b[i] += y == 0 ? x : 0; }) == "only in the first row;");
    CHECK(grey([](S &, S &b, int x, int y, int i) { b[i] += x > 9 ? y + x : 0; }) ==
          "only in the last 2 columns;");
    CHECK(grey([](S &, S &b, int x, int y, int i) { b[i] += x % 2 == 1 && y % 2 == 0 ? y + x : 0; }) ==
          "only at Gr sites;"); // RGGB
    CHECK(grey([](S &, S &b, int x, int y, int i) { b[i + 1] += y + x; }, 4095, "P6 12 10 4095") ==
          "only in channel G;");
    CHECK(grey([](S &from, S &b, int x, int y, int i) {
              if (y % 3 == 0)
                  from[i] = 4095, b[i] -= x;
          }) == "only where a sample is 4095 or more;");
    CHECK(grey([](S &, S &b, int x, int y, int i) { b[i] += x * y % 7; }) == "");
    const std::string npy = "\x93NUMPY\1" + std::string("\0\x3f\0", 3) +
                            "{'descr': '|i1', 'fortran_order': False, 'shape': (2, 4)}     \n";
    put("a.npy", npy + "\1\2\3\4\5\6\7\10"),
        put("b.npy", npy + "\xff\xfe\xfd\xfc\xfb\xfa\xf9\xf8"); // -1 to -8
    CHECK(cfatool::difference_kinds(*this / "a.npy", *this / "b.npy",
                                    cfatool::compare_pictures(*this / "a.npy", *this / "b.npy", {}), 4095, 3,
                                    cfatool::Sites::all)
              .empty());
    CHECK(grey([](S &, S &b, int x, int y, int i) { b[i] += x == 5 && y < 3 ? 4 : 0; }) ==
          ""); // three may be chance
}
