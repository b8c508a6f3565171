#include <doctest/doctest.h>

#include <cmath>
#include <string>
#include <vector>

#include "cmodel/common/ppm.h"
#include "cmodel/common/ppm_stream.h"
#include "tests/support/support.h"

using namespace cfa;

using namespace std::string_literals;

namespace {

// Reads the picture of these bytes in a child and prints depth, sizes and samples.
Outcome read_picture(const std::string &bytes) {
    const TempFolder folder;
    const std::string path = folder / "in.ppm";
    write_file(path, bytes);
    Outcome outcome = run_child([&] {
        const FramePtr frame(CM_ReadPPM5(path.c_str(), 2));
        std::printf("%d: %u bits %u x %u:", frame->format == 2 && frame->type == 2 && frame->channels == 1,
                    frame->bit_depth, frame->width, frame->height);
        for (uint32_t i = 0; i < frame->width * frame->height; i++)
            std::printf(" %d", static_cast<int32_t>(frame->data[i]));
    });
    for (size_t at; (at = outcome.err.find(path)) != std::string::npos;)
        outcome.err.replace(at, path.size(), "FILE");
    return outcome;
}

} // namespace

// Headers cut short, extreme numbers, comments of megabytes: tests/trust, through the tool.
TEST_CASE("headers that are read") {
    for (const std::string &header : {
             "P5\n# one\n# two\n2 1\n4095\n"s, "P5 ignored\n#\n2\t\v\f\r\n 1 4095 rest of the line\n"s,
             "P5\r\n2 1\r\n4095\r\n"s, "P59\n+2 01\n0004095\n"s,
             "P5 14 letters \n# c\n2 1 4095\n"s, // 14 characters and the line feed: the longest first line
         }) {
        INFO(header);
        const Outcome outcome = read_picture(header + "\1\2\3\4");
        CHECK(outcome.status == 0);
        CHECK(outcome.out == "1: 12 bits 2 x 1: 258 772");
        CHECK(outcome.err == "");
    }
}

TEST_CASE("headers that lie") {
    const auto check_error = [](const std::string &bytes, const std::string &message) {
        const Outcome outcome = read_picture(bytes);
        INFO("header: ", bytes);
        CHECK(outcome.status == 1);
        CHECK(outcome.err == message + "\n");
        CHECK(outcome.out == "");
    };
    const std::string file = " (error loading 'FILE')";
    for (const char *size : {"x", "2 x", "- 2 1", "2,1", "2 # 1\n1", "-2147483649 1"})
        check_error("P5\n"s + size + "\n255\n", "Invalid image size" + file);
    check_error("P5 2 1 4095 here\n2 1 4095\n", "Invalid image size" + file); // over 15 characters
    for (const char *max : {"x", "# comment\n4095", "0"})
        check_error("P5\n2 1\n"s + max, "Invalid max_rgb" + file);
    for (const char *size : {"-1 0", "-2147483648 1", "46341 46341"})
        check_error("P5\n"s + size + "\n4095\n", "Unable to allocate memory");
    const TempFolder folder;
    const Outcome outcome = run_child([&] { CM_ReadPPM5(folder.path.c_str(), 2); });
    CHECK(outcome.status == 1);
    CHECK(outcome.err == folder.path + ": Is a directory\n");
}

TEST_CASE("depth is the logarithm of the maximum value, rounded up") {
    CHECK(ppm_bit_depth(1) == 0);
    for (int bit = 1; bit < 31; bit++)
        for (int delta = -2; delta <= 2; delta++) {
            const int64_t max = (int64_t{1} << bit) + delta;
            if (max < 1)
                continue;
            INFO(max);
            CHECK(ppm_bit_depth(static_cast<int32_t>(max)) == std::ceil(std::log2(static_cast<double>(max))));
        }
    CHECK(ppm_bit_depth(2147483647) == 31);
}

TEST_CASE("samples of 0 to 4 bytes, high byte first") {
    for (const auto &[max, want] : {std::pair{"1", "0 bits 1 x 2: 0 0"},
                                    {"255", "8 bits 1 x 2: 1 130"},
                                    {"257", "9 bits 1 x 2: 386 900"},
                                    {"65536", "16 bits 1 x 2: 386 900"},
                                    {"65537", "17 bits 1 x 2: 98819 8652166"},
                                    {"16777217", "25 bits 1 x 2: 25297796 92669832"}})
        CHECK(read_picture("P5 \n1 2 "s + max + "\n\x01\x82\x03\x84\x05\x86\x07\x88").out == "1: "s + want);
}

TEST_CASE("data cut at every byte: a missing byte counts as -1") {
    struct Case {
        std::string header;
        int present; // bytes, each of value 2
        std::string samples;
        int missing;
    };
    for (const Case &c : {
             Case{"3 1 255", 2, " 2 2 -1", 1},
             Case{"2 1 4095", 4, " 514 514", 0},
             Case{"2 1 4095", 3, " 514 511", 1}, // 2 * 256 - 1
             Case{"2 1 4095", 2, " 514 -257", 1},
             Case{"2 1 4095", 1, " 511 -257", 2},
             Case{"1 1 100000", 2, " 131583", 1}, // 2 * 65536 + 2 * 256 - 1
             Case{"1 1 100000", 1, " 130815", 1}, // 2 * 65536 - 257
             Case{"1 1 100000", 0, " -65793", 1},
             Case{"1 1 2147483647", 3, " 33686015", 1},
             Case{"1 1 2147483647", 0, " -16843009", 1},
         }) {
        INFO(c.header, ", ", c.present, " bytes");
        const Outcome outcome =
            read_picture("P5\n" + c.header + "\n" + std::string(static_cast<size_t>(c.present), '\2'));
        CHECK(outcome.status == 0);
        CHECK(outcome.out.substr(outcome.out.rfind(':') + 1) == c.samples);
        const std::string message =
            "Unexpected end of file in 'FILE': " + std::to_string(c.missing) + " samples are missing\n";
        CHECK(outcome.err == (c.missing == 0 ? "" : message));
    }
}

TEST_CASE("a picture of several blocks, cut in the second") {
    constexpr size_t count = 3 * 131072 + 17;
    constexpr size_t present = 200000;
    const TempFolder folder;
    const std::string path = folder / "in.ppm";
    std::string bytes = "P5\n" + std::to_string(count) + " 1\n65535\n";
    const auto want = [](size_t i) { return static_cast<uint32_t>(i * 40503 % 65536); };
    for (size_t i = 0; i < present; i++) {
        bytes += static_cast<char>(want(i) >> 8);
        bytes += static_cast<char>(want(i));
    }
    write_file(path, bytes);
    size_t wrong = 0;
    const Outcome outcome = run_child([&] {
        const FramePtr frame(CM_ReadPPM5(path.c_str(), 2));
        for (size_t i = 0; i < count; i++)
            wrong += frame->data[i] != (i < present ? want(i) : static_cast<uint32_t>(-257));
        std::printf("%zu", wrong);
    });
    CHECK(outcome.out == "0");
    CHECK(outcome.err == "Unexpected end of file in '" + path + "': 193233 samples are missing\n");
}
