#include "tools/cfatool/charts/charts.h"

#include <doctest/doctest.h>
#include <set>

#include "tests/tools/cfatool/tool_support.h"

using namespace cfatool;

// Every byte of every chart: chart_sums.sh. Here is what the charts are meant to show.

namespace {

using Samples = std::vector<uint32_t>;

/// The samples of a chart as the program writes it, 12 bits.
Samples chart(const std::string &name, const std::string &size, const std::string &bayer,
              const std::vector<std::string> &more = {}) {
    const TempFolder folder;
    const Outcome outcome =
        cfatool_run({"chart", name, "--size", size, "--bayer", bayer, "-o", folder / "c.ppm"}, more);
    REQUIRE_MESSAGE(outcome.status == 0, outcome.err);
    return samples_of(read_file(folder / "c.ppm"), 2);
}

} // namespace

TEST_CASE("a chart file has the model's header and depth") {
    const TempFolder folder;
    for (const auto &[bits, end] : {std::pair{"8", std::string("255\n\x80")},
                                    {"12", std::string("4095\n\x08\x00", 7)},
                                    {"24", std::string("16777215\n\x80\x00\x00", 12)},
                                    {"31", std::string("2147483647\n\x40\x00\x00\x00", 15)}}) {
        cfatool_run(
            {"chart", "flat", "--size", "1x1", "--bayer", "0", "--bits", bits, "-o", folder / "c.ppm"});
        CHECK(read_file(folder / "c.ppm") == "P5\n# Created by ZEMBRO DPU Model\n1 1\n" + end);
    }
}

TEST_CASE("a ramp runs from 0 to full in each band's colours") {
    // Band 0 is white, 1 red, 2 green, 3 blue; on even rows of pattern 3 red sites stand at even columns.
    const auto s = chart("ramp", "9x16", "3");
    CHECK(Samples(s.begin(), s.begin() + 9) == Samples{0, 511, 1023, 1535, 2047, 2559, 3071, 3583, 4095});
    CHECK(s[2 * 9 + 8] == 4095); // red band, red site
    CHECK(s[2 * 9 + 7] == 0);    // red band, green site
    CHECK(s[4 * 9 + 7] == 3583); // green band, green site
    CHECK(s[6 * 9 + 8] == 0);    // blue band, red site
    CHECK(s[7 * 9 + 7] == 3583); // blue band, blue site
}

TEST_CASE("a checker of one pixel alternates; a wider one has squares of its period") {
    CHECK(chart("checker", "4x2", "0", {"--period", "1"}) == Samples{4095, 0, 4095, 0, 0, 4095, 0, 4095});
    CHECK(chart("checker", "6x1", "0", {"--period", "2"}) == Samples{4095, 4095, 0, 0, 4095, 4095});
}

TEST_CASE("stripes repeat with their period and follow their angle") {
    const auto upright = chart("stripes", "16x4", "0", {"--period", "4", "--angle", "0"});
    const auto level = chart("stripes", "4x16", "0", {"--period", "4", "--angle", "90"});
    const uint32_t expected[4] = {2048, 4095, 2048, 0}; // a sine a quarter turn a pixel
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 16; ++x) {
            CHECK(upright[16 * y + x] == doctest::Approx(expected[x % 4]).epsilon(0.001));
            CHECK(level[4 * x + y] == doctest::Approx(expected[x % 4]).epsilon(0.001));
        }
}

TEST_CASE("a zone plate is bright in the middle, symmetrical, and alternates at its border") {
    const auto s = chart("zone-plate", "65x65", "0");
    const auto at = [&](int x, int y) { return s[65 * y + x]; };
    CHECK(at(32, 32) == 4095);
    for (int d = 1; d <= 32; ++d) {
        CHECK(at(32 + d, 32) == at(32 - d, 32));
        CHECK(at(32 + d, 32) == at(32, 32 + d));
    }
    CHECK(std::abs(int(at(62, 32)) - int(at(63, 32))) > 3500);
    CHECK(std::abs(int(at(63, 32)) - int(at(64, 32))) > 3500);
}

TEST_CASE("impulses put bright and dark pixels on every site of a 2 x 2 pattern") {
    const auto s = chart("impulses", "200x200", "0");
    std::set<int> seen;
    for (int y = 0; y < 200; ++y)
        for (int x = 0; x < 200; ++x)
            if (s[200 * y + x] != 1023)
                seen.insert(8 * (s[200 * y + x] == 4095) + 2 * (y % 2) + x % 2);
    CHECK(seen == std::set<int>{0, 1, 2, 3, 8, 9, 10, 11});
}

TEST_CASE("a slanted edge is a dark square that leans by its angle") {
    const auto s = chart("slanted-edge", "100x100", "0", {"--angle", "10"});
    // The left edge in row y lies where the level crosses the middle; it moves by tan(10 degrees) a row.
    const auto edge = [&](int y) {
        int x = 0;
        while (s[100 * y + x] > 1791)
            ++x;
        return x;
    };
    CHECK(s[0] == 3071);
    CHECK(s[50 * 100 + 50] == 512);
    CHECK(edge(35) - edge(65) == doctest::Approx(30 * 0.17633).epsilon(0.2));
}

TEST_CASE("noise depends on its seed alone and uses the whole range") {
    const auto s = chart("noise", "64x64", "0", {"--seed", "3"});
    CHECK(s == chart("noise", "64x64", "2", {"--seed", "3"}));
    CHECK(s != chart("noise", "64x64", "0", {"--seed", "4"}));
    CHECK(std::set<uint32_t>(s.begin(), s.end()).size() > 2000);
}

TEST_CASE("hues: red, yellow, green and blue in eighths of a degree, and grey has none") {
    const auto is = [](const Rgb &c, int64_t r, int64_t g, int64_t b) {
        return c.r == r && c.g == g && c.b == b;
    };
    CHECK(is(colour_of_hue(0, FULL, FULL), FULL, 0, 0));
    CHECK(is(colour_of_hue(480, FULL, FULL), FULL, FULL, 0));
    CHECK(is(colour_of_hue(960, FULL, FULL), 0, FULL, 0));
    CHECK(is(colour_of_hue(1920, FULL, FULL), 0, 0, FULL));
    CHECK(is(colour_of_hue(560, 0, 1000), 1000, 1000, 1000));
}

TEST_CASE("every chart paints every size, and the noise of the scene is small") {
    for (const Chart &c : charts())
        for (const char *size : {"1x1", "1x9", "7x1"})
            CHECK(!chart(c.name, size, "5").empty());
    const auto noisy = chart("scene", "64x48", "0", {"--seed", "1"});
    const auto clean = chart("scene", "64x48", "0", {"--seed", "1", "--noise", "0"});
    CHECK(noisy != clean);
    for (size_t i = 0; i < noisy.size(); ++i)
        REQUIRE(std::abs(int(noisy[i]) - int(clean[i])) <= 24); // six times four steps
}
