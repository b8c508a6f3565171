#include <algorithm>
#include <doctest/doctest.h>

#include "tests/tools/cfatool/tool_support.h"
#include "tools/cfatool/pictures/png_file.h"

namespace {

using Bytes = std::vector<uint8_t>;

/// The RGB samples of the preview of this file content.
Bytes preview(const std::string &name, const std::string &content,
              const std::vector<std::string> &more = {}) {
    const TempFolder folder;
    write_file(folder / name, content);
    const Outcome outcome = cfatool_run({"preview", folder / name, "-o", folder / "p.png"}, more);
    REQUIRE_MESSAGE(outcome.status == 0, outcome.err);
    return cfatool::read_png(folder / "p.png").samples;
}

Bytes greys(const Bytes &levels) {
    Bytes rgb;
    for (const uint8_t level : levels)
        rgb.insert(rgb.end(), 3, level);
    return rgb;
}

} // namespace

TEST_CASE("grey pictures of every depth are scaled to 8 bits") {
    struct Depth {
        const char *max;
        int bytes;
        std::vector<uint32_t> samples; // darkest, one third, middle, full
    };
    for (const Depth &d : {Depth{"255", 1, {0, 85, 128, 255}}, Depth{"4095", 2, {0, 1365, 2048, 4095}},
                           Depth{"16777215", 3, {0, 5592405, 8388608, 16777215}},
                           Depth{"4294967295", 4, {0, 1431655765, 2147483648, 4294967295}}})
        CHECK(preview("g.ppm", std::string("P5\n4 1\n") + d.max + "\n" + big_endian(d.samples, d.bytes)) ==
              greys({0, 85, 128, 255}));
}

TEST_CASE("samples above the maximum show as the maximum; gain brightens and stops there") {
    const std::string picture = "P5\n3 1\n4095\n" + big_endian({40, 4096, 60000}, 2);
    CHECK(preview("g.ppm", picture) == greys({2, 255, 255}));
    CHECK(preview("g.ppm", picture, {"--gain", "10.5"}) == greys({26, 255, 255}));
}

TEST_CASE("headers of other writers are read") {
    const std::string data = std::string("\x07\xff\x0f\xff", 4);
    for (const char *header :
         {"P5 2 1 4095\n", "P5\n#a\n#b\n2 1\n4095\n", "P5\n2 # w\n1\n# between 9\n4095\n",
          "P5#x\n2\t1\n\n4095 ", "P5\r\n2 1\r\n4095\r\n"})
        CHECK(preview("g.ppm", header + data) == greys({127, 255}));
}

TEST_CASE("the maximum value 0 of the model's deep P6 pictures means 32 bits, of its shallow ones no bit") {
    CHECK(preview("p.ppm", "P6\n1 1\n0\n" + big_endian({4294967295, 0, 2147483648}, 4)) ==
          Bytes{255, 0, 128});
    CHECK(preview("p.ppm", std::string("P6\n1 1\n0\n\0\0\0", 12)) == Bytes{0, 0, 0});
    CHECK(preview("p.ppm", std::string("P5\n2 1\n0\n\0\0", 11)) == greys({0, 0}));
}

TEST_CASE("directions have three colours, signed maps show their sign") {
    const auto directions = preview("dbg_img_DirInfo.ppm", "P5\n4 1\n4095\n" + big_endian({0, 1, 2, 3}, 2));
    CHECK(directions == Bytes{0x50, 0x50, 0x50, 0xF0, 0x90, 0x18, 0x28, 0x78, 0xF0, 0xFF, 0x00, 0xFF});
    const std::string map = "P6\n3 1\n255\n" + big_endian({0, 0, 0, 10, 0, 0, 0, 200, 0}, 1);
    CHECK(preview("dbg_sg_dalta_HF_4x_8b.ppm", map) == Bytes{255, 255, 255, 255, 215, 215, 0, 255, 0});
    CHECK(preview("other.ppm", map) == Bytes{0, 0, 0, 10, 0, 0, 0, 200, 0});
}

TEST_CASE("false colour runs from black to white without two levels alike") {
    std::string picture = "P5\n256 1\n255\n";
    for (int i = 0; i < 256; ++i)
        picture += static_cast<char>(i);
    const Bytes rgb = preview("g.ppm", picture, {"--false-colour"});
    CHECK(Bytes(rgb.begin(), rgb.begin() + 3) == Bytes{0, 0, 0});
    CHECK(Bytes(rgb.end() - 3, rgb.end()) == Bytes{255, 255, 255});
    for (size_t i = 3; i < rgb.size(); i += 3)
        CHECK_FALSE(std::equal(rgb.begin() + i, rgb.begin() + i + 3, rgb.begin() + i - 3));
}

TEST_CASE("a part of two pictures side by side, enlarged, and the same bytes each time") {
    const TempFolder folder;
    write_file(folder / "a.ppm", "P5\n2 2\n255\n" + std::string("\x01\x02\x03\x04"));
    write_file(folder / "b.ppm", "P6\n2 2\n255\n" + std::string("abcdefghijkl"));
    for (const char *out : {"p.png", "q.png"})
        CHECK(cfatool_run({"preview", folder / "a.ppm", folder / "b.ppm", "--crop", "1,1,1,1", "--zoom", "2",
                           "-o", folder / out})
                  .status == 0);
    CHECK(read_file(folder / "p.png") == read_file(folder / "q.png"));
    const cfatool::RgbPicture picture = cfatool::read_png(folder / "p.png");
    CHECK(picture.width == 2 + 8 + 2);
    CHECK(picture.height == 2);
    Bytes row(6, 4);
    row.insert(row.end(), 24, 255);
    row.insert(row.end(), {'j', 'k', 'l', 'j', 'k', 'l'});
    CHECK(Bytes(picture.samples.begin(), picture.samples.begin() + 36) == row);
    CHECK(Bytes(picture.samples.begin() + 36, picture.samples.end()) == row);
}

TEST_CASE("malformed pictures are named with the reason, and nothing is written") {
    const TempFolder folder;
    for (const auto &[content, reason] :
         {std::pair{"", "not a P5 or P6 picture"},
          {"P52 1\n255\nab", "not a P5 or P6 picture"},
          {"P5\n", "no width in the header"},
          {"P5\n2 -1\n255\nab", "no height in the header"},
          {"P5\n2 1 # max\n", "no maximum value in the header"},
          {"P5\n2 1\n0\nabc", "maximum value 0"},
          {"P5\n2 1\n4294967296\nab", "maximum value in the header is too large"},
          {"P5\n99999999999999999999 1\n255\nab", "width in the header is too large"},
          {"P6\n40000 40000\n255\nab", "more than 2147483647 samples"},
          {"P5\n40000 40000\n255\nab", "cut short: 2 bytes of samples, 1600000000 expected"},
          {"P5\n2 1\n255", "no white space behind the maximum value"},
          {"P5\n2 1\n255\nabc", "bytes follow the last sample"},
          {"P5\n2147483647 0\n255\n", "a picture of no pixels has no preview"}}) {
        write_file(folder / "p.ppm", content);
        const Outcome outcome = cfatool_run({"preview", folder / "p.ppm", "-o", folder / "p.png"});
        CHECK(outcome.status == 2);
        CHECK(outcome.err == (folder / "p.ppm") + ": " + reason + "\n");
        CHECK(read_file(folder / "p.png") == "(no file)");
    }
}
