// Pictures made and shown: chart, mosaic, preview, hex.
#include <cmath>
#include <png.h>
#include <sstream>

#include "tests/tools/cfatool/room.h"
#include "tools/cfatool/base/files.h"
#include "tools/cfatool/charts/charts.h"
#include "tools/cfatool/pictures/png_file.h"

namespace {

const std::string P5 = "P5\n# Created by ZEMBRO DPU Model\n";

struct Pictures : Room {
    /// What these words make of this file: a text, a mosaic, or a PNG as a P6 picture.
    std::string made(const std::string &words, const std::string &name, const std::string &content) const {
        put(name, content);
        const Outcome outcome = run(words);
        REQUIRE_MESSAGE(outcome.status == 0, outcome.err);
        if (!contains(words, "-o"))
            return outcome.out + outcome.err;
        if (!contains(words, "preview"))
            return get("o");
        cfatool::RgbPicture png = cfatool::read_png(*this / "o", cfatool::PngColours::any);
        const bool grey = !contains(words, "false") && !contains(name, "dbg_") &&
                          (content[1] == '5' || contains(words, "made.png"));
        CHECK(get("o")[25] == (grey ? 0 : 2)); // the colour type: grey or RGB
        for (size_t i = 0; png.channels == 1 && i < png.samples.size(); i += 3)
            png.samples.insert(png.samples.begin() + static_cast<std::ptrdiff_t>(i), 2, png.samples[i]);
        return picture("P6 " + std::to_string(png.width) + " " + std::to_string(png.height) + " 255",
                       Samples(png.samples.begin(), png.samples.end()));
    }

    /// What noise of 12.5 adds to a square picture of one value: deviations from `mean`.
    std::vector<double> noise(int width, const std::string &max, uint32_t value, double mean) const {
        const std::string side = std::to_string(width) + " ";
        put("p", picture("P6 " + side + side + max, Samples(3 * width * width, value)));
        check({{"mosaic p --bayer 0 --noise 12.5 -o o", 0, ""}});
        std::istringstream samples(run("hex o").out);
        std::vector<double> deviations;
        for (int sample; samples >> std::hex >> sample;)
            deviations.push_back(sample - mean);
        return deviations;
    }

    /// 2 x 2 pixels of any PNG colour type as a file's bytes, through libpng's simple interface.
    std::string png(png_uint_32 format, const void *samples) const {
        png_image image = {};
        image.version = PNG_IMAGE_VERSION;
        image.width = image.height = 2;
        image.format = format;
        REQUIRE(png_image_write_to_file(&image, (*this / "made.png").c_str(), 0, samples, 0, nullptr));
        return get("made.png");
    }
};

} // namespace

TEST_CASE_FIXTURE(Pictures, "samples of every depth and form become samples, colours and text") {
    const std::string scale = picture("P6 4 1 255", {0, 0, 0, 85, 85, 85, 128, 128, 128, 255, 255, 255}),
                      bright = picture("P6 2 1 255", {127, 127, 127, 255, 255, 255});
    const std::string p4095 = std::string("\x07\xff\x0f\xff", 4),
                      above = picture("P5 3 1 4095", {40, 4096, 60000});
    const std::string map = picture("P6 3 1 255", {0, 0, 0, 10, 0, 0, 0, 200, 0}),
                      two = picture("P6 2 1 255", {0, 1, 128, 0, 255, 0});
    const uint8_t rgb[] = {10, 20, 30, 40, 50, 60, 70, 80, 90, 100, 110, 120};
    const uint16_t deep[] = {1000, 2000, 3000, 4000, 5000, 6000, 7000, 8000, 9000, 10000, 11000, 12000};
    const std::string hex = "hex p", show = "preview p -o o ", mosaic = "mosaic p -o o --bayer ",
                      chart = "chart -o o --bayer 0 ";
    const std::string flat = "chart flat -o o --rgb 100,2000,4001 --bayer ";
    for (const auto &[words, content, want] : std::vector<std::array<std::string, 3>>{
             {hex, picture("P5 2 2 255", {0, 10, 200, 255}), "00\n0a\nc8\nff\n"},
             {hex, picture("P5 1 1 256", {256}), "100\n"},
             {hex, picture("P6 1 1 4095", {1, 2, 0xABC}), "001\n002\nabc\n"},
             {hex, picture("P5 1 1 16777215", {0x123}), "000123\n"},
             {hex, picture("P5 2 1 4095", {7, 0xFFFF}),
              "007\nffff\np: 1 samples above the maximum value 4095 take more than 3 digits\n"},
             {hex + " --back 2x2 -o o --bits 8", "0_1 // a 7f\n@3 FF/* 1\n*/@1 a\n0b//",
              picture(P5 + "2 2\n255", {1, 10, 11, 255})},
             {hex + " --back 1x1 -o o --colour", "1 2 0_f_ff",
              picture("P6" + P5.substr(2) + "1 1\n4095", {1, 2, 4095})},
             {show, picture("P5 4 1 255", {0, 85, 128, 255}), scale},
             {show, picture("P5 4 1 4095", {0, 1365, 2048, 4095}), scale},
             {show, picture("P5 4 1 16777215", {0, 5592405, 8388608, 16777215}), scale},
             {show, picture("P5 4 1 4294967295", {0, 1431655765, 2147483648, 4294967295}), scale},
             {show, above, picture("P6 3 1 255", {2, 2, 2, 255, 255, 255, 255, 255, 255})},
             {show + "--gain 10.5", above, picture("P6 3 1 255", {26, 26, 26, 255, 255, 255, 255, 255, 255})},
             {show, "P5 2 1 4095\n" + p4095, bright},
             {show, "P5\n#a\n#b\n2 # w\n1\n# 9\n4095\n" + p4095, bright},
             {show, "P5#x\n2\t1\n\n4095 " + p4095, bright},
             {show, "P5\r\n2 1\r\n4095\r\n" + p4095, bright},
             // A maximum value of 0 is 32 bits in P6 pictures, or no bit at all.
             {show, "P6 1 1 0\n" + std::string("\xff\xff\xff\xff\0\0\0\0\x80\0\0\0", 12),
              picture("P6 1 1 255", {255, 0, 128})},
             {show, picture("P6 1 1 0", {0, 0, 0}), picture("P6 1 1 255", {0, 0, 0})},
             {show, picture("P5 2 1 0", {0, 0}), picture("P6 2 1 255", {0, 0, 0, 0, 0, 0})},
             {show, map, map},
             {show + "--false-colour", picture("P5 3 1 255", {0, 51, 255}),
              picture("P6 3 1 255", {0, 0, 0, 30, 40, 170, 255, 255, 255})},
             {mosaic + "0", two, picture(P5 + "2 1\n4095", {2056, 4095})},
             {mosaic + "0 --bits 8", two, picture(P5 + "2 1\n255", {128, 255})},
             {mosaic + "0", picture("P6 2 1 16777215", {0, 1, 16777215, 0, 8388608, 0}),
              picture(P5 + "2 1\n4095", {4095, 2048})},
             {mosaic + "0 --bits 31", picture("P6 2 1 4294967295", {0, 1, 4294967295, 0, 1, 0}),
              picture(P5 + "2 1\n2147483647", {2147483647, 0})},
             {mosaic + "0", picture("P6 2 1 1000", {0, 1, 60000, 0, 500, 0}),
              picture(P5 + "2 1\n4095", {4095, 2048})},
             {mosaic + "3 --bits 8", png(PNG_FORMAT_RGB, rgb), picture(P5 + "2 2\n255", {10, 50, 80, 120})},
             {mosaic + "3 --bits 16", png(PNG_FORMAT_LINEAR_RGB, deep),
              picture(P5 + "2 2\n65535", {1000, 5000, 8000, 12000})},
             {chart + "flat --size 1x1 --bits 08", "", picture(P5 + "1 1\n255", {0x80})},
             {chart + "flat --size 1x1", "", picture(P5 + "1 1\n4095", {0x800})},
             // GR / BG; ids without a pattern; 4 x 4 sites, where (R + 2G + B) / 4 sees every colour.
             {flat + "2 --size 2x2", "", picture(P5 + "2 2\n4095", {2000, 100, 4001, 2000})},
             {flat + "4 --size 2x2", "", picture(P5 + "2 2\n4095", {2025, 2025, 4001, 4001})},
             {flat + "8 --size 4x4", "",
              picture(P5 + "4 4\n4095", {2000, 100, 2000, 4001, 2025, 2000, 2025, 2000, 2000, 4001, 2000, 100,
                                         2025, 2000, 2025, 2000})},
             {chart + "ramp --size 9x1", "",
              picture(P5 + "9 1\n4095", {0, 511, 1023, 1535, 2047, 2559, 3071, 3583, 4095})}})
        CHECK(words + ": " + made(words, "p", content) == words + ": " + want);
    // The looks that file names ask for.
    CHECK(made("preview dbg_img_DirInfo.ppm -o o", "dbg_img_DirInfo.ppm",
               picture("P5 4 1 4095", {0, 1, 2, 3})) ==
          picture("P6 4 1 255", {0x50, 0x50, 0x50, 0xF0, 0x90, 0x18, 0x28, 0x78, 0xF0, 0xFF, 0x00, 0xFF}));
    CHECK(made("preview dbg_sg_dalta_HF_4x_8b.ppm -o o", "dbg_sg_dalta_HF_4x_8b.ppm", map) ==
          picture("P6 3 1 255", {255, 255, 255, 255, 215, 215, 0, 255, 0}));
    // A part of two pictures side by side, twice as large.
    put("a", picture("P5 2 2 255", {1, 2, 3, 4}));
    const std::string row = std::string(6, 4) + std::string(24, '\xFF') + std::string(6, 7);
    CHECK(made("preview a b --crop 1,1,1,1 --zoom 2 -o o", "b", picture("P5 2 2 255", {4, 5, 6, 7})) ==
          "P6 12 2 255\n" + row + row);
    // Three in rows of two, white below the second; an I is 2 dots wide of 5 in its first row of ink.
    const std::string sheet =
        made("preview a b a --crop 1,1,1,1 --zoom 10 --columns 2 --label 'i.' --label b --label - -o o", "b",
             picture("P5 2 2 255", {4, 5, 6, 7}));
    const auto pixel = [&sheet](size_t x, size_t y) {
        return static_cast<uint8_t>(sheet[std::string("P6 28 68 255\n").size() + 3 * (28 * y + x)]);
    };
    CHECK(sheet.starts_with("P6 28 68 255\n"));
    for (const auto &at : std::vector<std::array<size_t, 3>>{{0, 20, 4},
                                                             {9, 29, 4},
                                                             {18, 29, 7},
                                                             {10, 25, 255},
                                                             {1, 0, 255},
                                                             {2, 0, 0},
                                                             {7, 1, 0},
                                                             {8, 0, 255},
                                                             {18, 0, 0},
                                                             {0, 33, 255},
                                                             {9, 64, 4},
                                                             {18, 64, 255},
                                                             {0, 44, 0},
                                                             {9, 45, 0},
                                                             {0, 42, 255}})
        CHECK_MESSAGE(pixel(at[0], at[1]) == at[2], at[0] << " " << at[1]);
    CHECK(made("preview b --crop 1,1,1,1 --zoom 40 --label i -o o", "b", get("b")).substr(13 + 3 * 26, 18) ==
          std::string(18, '\xFF')); // said once
    CHECK(contains(run("preview a b --label x -o o").err, "cfatool preview: 1 labels for 2 pictures (see"));
    CHECK(made("preview made.png -o o", "a", png(PNG_FORMAT_GRAY, rgb)) ==
          picture("P6 2 2 255", {10, 10, 10, 20, 20, 20, 30, 30, 30, 40, 40, 40}));
}

TEST_CASE_FIXTURE(Pictures,
                  "what is no picture for the purpose is named with the reason, and nothing is written") {
    const std::vector<uint8_t> bytes(64, 9);
    const std::string whole = png(PNG_FORMAT_RGB, bytes.data()),
                      grey = "is greyscale; an RGB picture is needed";
    for (const auto &[content, reason] : std::vector<std::pair<std::string, std::string>>{
             {"", "not a P5 or P6 picture"},
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
             {"P6\n1 1\n255\nabcd", "bytes follow the last sample"},
             {"P5\n2 1\n255\nab", grey},
             {png(PNG_FORMAT_GRAY, bytes.data()), grey},
             {whole.substr(0, whole.size() - 20), ""},
             {png(PNG_FORMAT_RGBA, bytes.data()),
              "has an alpha channel or a transparent colour; an RGB picture is needed"}}) {
        put("p", content);
        check({{"mosaic p --bayer 0 -o o", 2, "p: " + reason + (reason.empty() ? "" : "\n")}});
    }
    for (const auto &[text, reason] : std::vector<std::pair<std::string, std::string>>{
             {"1\n\n1x", "line 3: x and z are no samples"},
             {"Z", "line 1: x and z are no samples"},
             {"1 2 3", "line 1: address 2 is behind the last of 2 samples"},
             {"@1 0", "1 of 2 samples are not given, first at address 0"},
             {"1 1000", "line 1: 1000 does not fit the samples, whose largest is fff"},
             {"1 100000000", "line 1: a number of more than 32 bits"},
             {"1 /*\n", "line 1: a comment without end"},
             {"1 @ 2", "line 1: an address is missing"},
             {"1 g", "line 1: 'g' in a number"},
             {"_1 2", "line 1: '_' in a number"},
             {"1/2 3", "line 1: a number is missing"}}) {
        put("p", text);
        check({{"hex p --back 2x1 -o o", 2, "p: " + reason + "\n"}});
    }
    put("p", "P5\n2147483647 0\n255\n");
    check({{"preview p -o o", 2, "p: a picture of no pixels has no preview\n"}});
    CHECK(list() == "made.png\np\n");
}

TEST_CASE_FIXTURE(Pictures, "noise has its deviation, no mean, nothing to do with its neighbours, a limit") {
    const std::vector<double> n = noise(256, "4095", 2000, 2000);
    double sum = 0, squares = 0, left = 0, above = 0;
    for (size_t i = 256; i < n.size(); ++i)
        sum += n[i], squares += n[i] * n[i], left += n[i] * n[i - 1], above += n[i] * n[i - 255];
    CHECK(std::abs(sum / 65280) < 0.2);
    CHECK(std::sqrt(squares / 65280) == doctest::Approx(12.5).epsilon(0.012));
    CHECK(std::max(std::abs(left), std::abs(above)) / 65280 < 2.5);
    // It falls on the maximum, however far the picture lies above it: half of the samples come below.
    const std::vector<double> high = noise(64, "1000", 60000, 4095);
    CHECK(std::abs(std::count(high.begin(), high.end(), 0) - 2048) < 200);
}

TEST_CASE_FIXTURE(Room, "every chart has the bytes that were recorded, and paints every size") {
    std::istringstream sums(read_file(source_root() + "/tests/data/charts.sha256"));
    size_t count = 0;
    for (std::string sum, file; sums >> sum >> file; ++count) {
        std::string words = file.substr(0, file.find('.')) + " --size 161x121 --bayer 1 --seed 7";
        if (file == "zone-plate-4x4-noise.ppm")
            words = "zone-plate --size 64x48 --bayer 8 --bits 16 --noise 2.5 --seed 7";
        if (file == "stripes-24.ppm")
            words = "stripes --size 64x48 --bayer 0 --bits 24 --angle 123.4 --period 3.1";
        check({{"chart " + words + " -o c", 0, ""}});
        CHECK_MESSAGE(cfatool::sha256_of_file(*this / "c") == sum, file);
    }
    CHECK(count == cfatool::charts().size() + 2);
    for (const cfatool::Chart &chart : cfatool::charts())
        for (const char *size : {"1x1", "1x9", "7x1"})
            check({{std::string("chart ") + chart.name + " --bayer 5 -o c --size " + size, 0, ""}});
}
