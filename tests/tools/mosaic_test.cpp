#include <algorithm>
#include <cmath>
#include <doctest/doctest.h>
#include <png.h>

#include "tests/tools/tool_support.h"

namespace {

// The 4 x 4 tiles of all ids as colours; W is what sees every colour.
const char *const TILES[16] = {
    "BGBG"
    "GRGR"
    "BGBG"
    "GRGR",
    "GBGB"
    "RGRG"
    "GBGB"
    "RGRG",
    "GRGR"
    "BGBG"
    "GRGR"
    "BGBG",
    "RGRG"
    "GBGB"
    "RGRG"
    "GBGB",
    "WWWW"
    "BBBB"
    "BBBB"
    "BBBB",
    "WWWW"
    "BBBB"
    "BBBB"
    "BBBB",
    "WWWW"
    "BBBB"
    "BBBB"
    "BBBB",
    "WWWW"
    "BBBB"
    "BBBB"
    "BBBB",
    "GRGB"
    "WGWG"
    "GBGR"
    "WGWG",
    "RGBG"
    "GWGW"
    "BGRG"
    "GWGW",
    "GBGR"
    "WGWG"
    "GRGB"
    "WGWG",
    "BGRG"
    "GWGW"
    "RGBG"
    "GWGW",
    "WGWG"
    "GRGB"
    "WGWG"
    "GBGR",
    "GWGW"
    "RGBG"
    "GWGW"
    "BGRG",
    "GWGW"
    "BGRG"
    "GWGW"
    "RGBG",
    "WGWG"
    "GBGR"
    "WGWG"
    "GRGB",
};

std::string ppm(int width, int height, uint32_t max, const std::vector<uint32_t> &samples, int bytes) {
    return "P6\n" + std::to_string(width) + " " + std::to_string(height) + "\n" + std::to_string(max) + "\n" +
           big_endian(samples, bytes);
}

/// An uncompressed way to any PNG colour type, through libpng's simple interface.
void write_png(const std::string &path, png_uint_32 format, int width, int height, const void *samples) {
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(width);
    image.height = static_cast<png_uint_32>(height);
    image.format = format;
    REQUIRE(png_image_write_to_file(&image, path.c_str(), 0, samples, 0, nullptr));
}

std::vector<uint32_t> mosaic(const TempFolder &folder, const std::string &picture,
                             const std::vector<std::string> &more, int bytes = 2) {
    std::vector<std::string> args = {"mosaic", folder / picture, "-o", folder / "m.ppm"};
    args.insert(args.end(), more.begin(), more.end());
    const Outcome outcome = cfatool_run(args);
    REQUIRE_MESSAGE(outcome.status == 0, outcome.err);
    return samples_of(read_file(folder / "m.ppm"), bytes);
}

} // namespace

TEST_CASE("a mosaic of a flat colour holds that colour at each site, in all patterns") {
    const TempFolder folder;
    std::vector<uint32_t> flat;
    for (int i = 0; i < 5 * 6; ++i)
        flat.insert(flat.end(), {100, 2000, 4001});
    write_file(folder / "flat.ppm", ppm(5, 6, 4095, flat, 2));
    for (int id = 0; id < 16; ++id) {
        const auto s = mosaic(folder, "flat.ppm", {"--bayer", std::to_string(id)});
        REQUIRE(s.size() == 30);
        for (int y = 0; y < 6; ++y)
            for (int x = 0; x < 5; ++x) {
                const char site = TILES[id][4 * (y % 4) + x % 4];
                const uint32_t want = site == 'R' ? 100 : site == 'G' ? 2000 : site == 'B' ? 4001 : 2025;
                CHECK_MESSAGE(s[5 * y + x] == want, "id ", id, " y ", y, " x ", x);
            }
    }
}

TEST_CASE("depths are scaled to the nearest step; samples above the maximum count as the maximum") {
    const TempFolder folder;
    write_file(folder / "p.ppm", ppm(2, 1, 255, {0, 1, 128, 0, 255, 0}, 1)); // id 0: B then G
    CHECK(mosaic(folder, "p.ppm", {"--bayer", "0"}) == std::vector<uint32_t>{2056, 4095});
    CHECK(mosaic(folder, "p.ppm", {"--bayer", "0", "--bits", "8"}, 1) == std::vector<uint32_t>{128, 255});
    write_file(folder / "p.ppm", ppm(2, 1, 16777215, {0, 0, 16777215, 0, 8388608, 0}, 3));
    CHECK(mosaic(folder, "p.ppm", {"--bayer", "0"}) == std::vector<uint32_t>{4095, 2048});
    write_file(folder / "p.ppm", ppm(2, 1, 4294967295, {0, 0, 4294967295, 0, 1, 0}, 4));
    CHECK(mosaic(folder, "p.ppm", {"--bayer", "0", "--bits", "31"}, 4) ==
          std::vector<uint32_t>{2147483647, 0});
    write_file(folder / "p.ppm", ppm(2, 1, 1000, {0, 0, 60000, 0, 500, 0}, 2));
    CHECK(mosaic(folder, "p.ppm", {"--bayer", "0"}) == std::vector<uint32_t>{4095, 2048});
}

TEST_CASE("PNG pictures of 8 and 16 bits give the samples of the same picture as PPM") {
    const TempFolder folder;
    const std::vector<uint8_t> rgb = {10, 20, 30, 40, 50, 60, 70, 80, 90, 100, 110, 120};
    write_png(folder / "p.png", PNG_FORMAT_RGB, 2, 2, rgb.data());
    CHECK(mosaic(folder, "p.png", {"--bayer", "3", "--bits", "8"}, 1) ==
          std::vector<uint32_t>{10, 50, 80, 120});
    const std::vector<uint16_t> deep = {1000, 2000, 3000, 4000,  5000,  6000,
                                        7000, 8000, 9000, 10000, 11000, 12000};
    write_png(folder / "d.png", PNG_FORMAT_LINEAR_RGB, 2, 2, deep.data());
    CHECK(mosaic(folder, "d.png", {"--bayer", "3", "--bits", "16"}) ==
          std::vector<uint32_t>{1000, 5000, 8000, 12000});
}

TEST_CASE("noise has its deviation and stays in range") {
    const TempFolder folder;
    const std::vector<uint32_t> grey(3 * 64 * 64, 2000);
    write_file(folder / "g.ppm", ppm(64, 64, 4095, grey, 2));
    double squares = 0;
    for (const uint32_t s : mosaic(folder, "g.ppm", {"--bayer", "0", "--noise", "12.5"}))
        squares += (double(s) - 2000) * (double(s) - 2000);
    CHECK(std::sqrt(squares / 4096) == doctest::Approx(12.5).epsilon(0.05));
    for (const uint32_t s : mosaic(folder, "g.ppm", {"--bayer", "0", "--noise", "9000"}))
        CHECK(s <= 4095);
}

TEST_CASE("alpha, greyscale and broken pictures are refused in one line, and nothing is written") {
    const TempFolder folder;
    const std::vector<uint8_t> bytes(64, 9);
    write_png(folder / "alpha.png", PNG_FORMAT_RGBA, 2, 2, bytes.data());
    write_png(folder / "grey.png", PNG_FORMAT_GRAY, 2, 2, bytes.data());
    write_png(folder / "cut.png", PNG_FORMAT_RGB, 2, 2, bytes.data());
    const std::string whole = read_file(folder / "cut.png");
    write_file(folder / "cut.png", whole.substr(0, whole.size() - 20));
    write_file(folder / "grey.ppm", "P5\n2 1\n255\nab");
    write_file(folder / "short.ppm", "P6\n2 1\n255\nabcde");
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"alpha.png", "has an alpha channel or a transparent colour; an RGB picture is needed"},
        {"grey.png", "is greyscale; an RGB picture is needed"},
        {"grey.ppm", "is greyscale; an RGB picture is needed"},
        {"short.ppm", "cut short: 5 bytes of samples, 6 expected"},
        {"none.ppm", "No such file or directory"}};
    for (const auto &[name, reason] : cases) {
        const Outcome outcome =
            cfatool_run({"mosaic", folder / name, "--bayer", "0", "-o", folder / "m.ppm"});
        CHECK(outcome.status == 2);
        CHECK(outcome.err == (folder / name) + ": " + reason + "\n");
    }
    const Outcome cut = cfatool_run({"mosaic", folder / "cut.png", "--bayer", "0", "-o", folder / "m.ppm"});
    CHECK(cut.status == 2);
    CHECK(cut.err.find(folder / "cut.png: ") == 0);
    CHECK(read_file(folder / "m.ppm") == "(no file)");
}
