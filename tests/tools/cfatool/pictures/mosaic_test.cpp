#include <algorithm>
#include <cmath>
#include <doctest/doctest.h>
#include <png.h>

#include "tests/tools/cfatool/tool_support.h"

namespace {

using Samples = std::vector<uint32_t>;

// The 4 x 4 tiles of all ids as colours, row by row; W is what sees every colour.
const char *const TILES[16] = {
    "BGBG GRGR BGBG GRGR", "GBGB RGRG GBGB RGRG", "GRGR BGBG GRGR BGBG", "RGRG GBGB RGRG GBGB",
    "WWWW BBBB BBBB BBBB", "WWWW BBBB BBBB BBBB", "WWWW BBBB BBBB BBBB", "WWWW BBBB BBBB BBBB",
    "GRGB WGWG GBGR WGWG", "RGBG GWGW BGRG GWGW", "GBGR WGWG GRGB WGWG", "BGRG GWGW RGBG GWGW",
    "WGWG GRGB WGWG GBGR", "GWGW RGBG GWGW BGRG", "GWGW BGRG GWGW RGBG", "WGWG GBGR WGWG GRGB",
};

std::string ppm(const std::string &size, uint32_t max, const Samples &samples, int bytes) {
    return "P6\n" + size + "\n" + std::to_string(max) + "\n" + big_endian(samples, bytes);
}

/// 2 x 2 pixels of any PNG colour type, through libpng's simple interface.
void write_png(const std::string &path, png_uint_32 format, const void *samples) {
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    image.width = image.height = 2;
    image.format = format;
    REQUIRE(png_image_write_to_file(&image, path.c_str(), 0, samples, 0, nullptr));
}

/// The mosaic of a picture of the folder, in words of this many bytes.
Samples mosaic(const TempFolder &folder, const std::string &picture, const std::vector<std::string> &more,
               int bytes = 2) {
    const Outcome outcome = cfatool_run({"mosaic", folder / picture, "-o", folder / "m.ppm"}, more);
    REQUIRE_MESSAGE(outcome.status == 0, outcome.err);
    return samples_of(read_file(folder / "m.ppm"), bytes);
}

} // namespace

TEST_CASE("a mosaic of a flat colour holds that colour at each site, in all patterns") {
    const TempFolder folder;
    Samples flat;
    for (int i = 0; i < 5 * 6; ++i)
        flat.insert(flat.end(), {100, 2000, 4001});
    write_file(folder / "flat.ppm", ppm("5 6", 4095, flat, 2));
    for (int id = 0; id < 16; ++id) {
        const auto s = mosaic(folder, "flat.ppm", {"--bayer", std::to_string(id)});
        REQUIRE(s.size() == 30);
        for (int y = 0; y < 6; ++y)
            for (int x = 0; x < 5; ++x) {
                const char site = TILES[id][5 * (y % 4) + x % 4];
                const uint32_t want = site == 'R' ? 100 : site == 'G' ? 2000 : site == 'B' ? 4001 : 2025;
                CHECK_MESSAGE(s[5 * y + x] == want, "id ", id, " y ", y, " x ", x);
            }
    }
}

TEST_CASE("depths are scaled to the nearest step; samples above the maximum count as the maximum") {
    const TempFolder folder;
    struct Case {
        uint32_t max;
        int bytes;
        uint32_t blue, green; // of the two pixels, which are sites of these colours
        const char *bits;
        int bits_bytes;
        Samples want;
    };
    for (const Case &c :
         {Case{255, 1, 128, 255, "12", 2, {2056, 4095}}, Case{255, 1, 128, 255, "8", 1, {128, 255}},
          Case{16777215, 3, 16777215, 8388608, "12", 2, {4095, 2048}},
          Case{4294967295, 4, 4294967295, 1, "31", 4, {2147483647, 0}},
          Case{1000, 2, 60000, 500, "12", 2, {4095, 2048}}}) {
        write_file(folder / "p.ppm", ppm("2 1", c.max, {0, 1, c.blue, 0, c.green, 0}, c.bytes));
        CHECK(mosaic(folder, "p.ppm", {"--bayer", "0", "--bits", c.bits}, c.bits_bytes) == c.want);
    }
}

TEST_CASE("PNG pictures of 8 and 16 bits give the samples of the same picture as PPM") {
    const TempFolder folder;
    const uint8_t rgb[] = {10, 20, 30, 40, 50, 60, 70, 80, 90, 100, 110, 120};
    write_png(folder / "p.png", PNG_FORMAT_RGB, rgb);
    CHECK(mosaic(folder, "p.png", {"--bayer", "3", "--bits", "8"}, 1) == Samples{10, 50, 80, 120});
    const uint16_t deep[] = {1000, 2000, 3000, 4000, 5000, 6000, 7000, 8000, 9000, 10000, 11000, 12000};
    write_png(folder / "d.png", PNG_FORMAT_LINEAR_RGB, deep);
    CHECK(mosaic(folder, "d.png", {"--bayer", "3", "--bits", "16"}) == Samples{1000, 5000, 8000, 12000});
}

TEST_CASE("noise has its deviation, no mean, nothing to do with its neighbour, and stays in range") {
    const TempFolder folder;
    write_file(folder / "g.ppm", ppm("256 256", 4095, Samples(3 * 65536, 2000), 2));
    double sum = 0, squares = 0, products = 0, previous = 0;
    for (const uint32_t s : mosaic(folder, "g.ppm", {"--bayer", "0", "--noise", "12.5"})) {
        const double n = double(s) - 2000;
        sum += n;
        squares += n * n;
        products += n * previous;
        previous = n;
    }
    CHECK(std::abs(sum / 65536) < 0.2);
    CHECK(std::sqrt(squares / 65536) == doctest::Approx(12.5).epsilon(0.012));
    CHECK(std::abs(products / 65536) < 2.5);
    for (const uint32_t s : mosaic(folder, "g.ppm", {"--bayer", "0", "--noise", "9000"}))
        REQUIRE(s <= 4095);
}

TEST_CASE("alpha, greyscale and broken pictures are refused in one line, and nothing is written") {
    const TempFolder folder;
    const std::vector<uint8_t> bytes(64, 9);
    write_png(folder / "alpha.png", PNG_FORMAT_RGBA, bytes.data());
    write_png(folder / "grey.png", PNG_FORMAT_GRAY, bytes.data());
    write_png(folder / "cut.png", PNG_FORMAT_RGB, bytes.data());
    const std::string whole = read_file(folder / "cut.png");
    write_file(folder / "cut.png", whole.substr(0, whole.size() - 20));
    write_file(folder / "grey.ppm", "P5\n2 1\n255\nab");
    for (const auto &[name, reason] :
         {std::pair{"alpha.png", "has an alpha channel or a transparent colour; an RGB picture is needed\n"},
          {"grey.png", "is greyscale; an RGB picture is needed\n"},
          {"grey.ppm", "is greyscale; an RGB picture is needed\n"},
          {"cut.png", ""}, // in the words of the library
          {"none.ppm", "No such file or directory\n"}}) {
        const Outcome outcome =
            cfatool_run({"mosaic", folder / name, "--bayer", "0", "-o", folder / "m.ppm"});
        CHECK(outcome.status == 2);
        CHECK(outcome.err.starts_with((folder / name) + ": " + reason));
        CHECK(std::count(outcome.err.begin(), outcome.err.end(), '\n') == 1);
    }
    CHECK(read_file(folder / "m.ppm") == "(no file)");
}
