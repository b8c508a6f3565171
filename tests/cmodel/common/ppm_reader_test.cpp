#include <doctest/doctest.h>

#include <cmath>
#include <string>
#include <vector>

#include "cmodel/common/ppm.h"
#include "cmodel/common/ppm_stream.h"
#include "tests/support/support.h"

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

void check_error(const std::string &bytes, const std::string &message) {
    const Outcome outcome = read_picture(bytes);
    INFO("header: ", bytes);
    CHECK(outcome.status == 1);
    CHECK(outcome.err == message + "\n");
    CHECK(outcome.out == "");
}

const std::string bad_magic = "Invalid image format (must be 'P5') (error loading 'FILE')";
const std::string bad_size = "Invalid image size (error loading 'FILE')";
const std::string bad_max = "Invalid max_rgb (error loading 'FILE')";

} // namespace

TEST_CASE("headers that are read") {
    const std::string pixels = "\1\2\3\4"s;
    const std::string want = "1: 12 bits 2 x 1: 258 772";
    for (const std::string &header : {
             "P5\n2 1\n4095\n"s, "P5\n# one\n# two\n2 1\n4095\n"s,
             "P5 ignored\n#\n2\t\v\f\r\n 1 4095 rest of the line\n"s, "P5\r\n2 1\r\n4095\r\n"s,
             "P59\n+2 01\n0004095\n"s,
             "P5 14 letters \n# c\n2 1 4095\n"s, // 14 characters and the line feed: the longest first line
         }) {
        INFO(header);
        const Outcome outcome = read_picture(header + pixels);
        CHECK(outcome.status == 0);
        CHECK(outcome.out == want);
        CHECK(outcome.err == "");
    }
    CHECK(read_picture("P5\n0 3\n4095\n").out == "1: 12 bits 0 x 3:");
    CHECK(read_picture("P5\n3 0\n4095\n").out == "1: 12 bits 3 x 0:");
}

TEST_CASE("headers that lie or end early") {
    check_error("", "FILE: No data available");
    check_error("P6\n2 1\n4095\n", bad_magic);
    check_error("P", bad_magic);
    check_error("5P\n", bad_magic);
    check_error("\n", bad_magic);
    check_error("P5\n#" + std::string(100000, '#'), bad_size); // the comment never ends
    for (const char *size : {"", "2", "2 ", "2 x", "x", "- 2 1", "2 -", "2,1", "2 # 1\n1", "2147483648 1",
                             "1 2147483648", "-2147483649 1", "1 99999999999999999999999999"})
        check_error("P5\n"s + size, bad_size);
    check_error("P5 2 1 4095 here\n2 1 4095\n", bad_size); // the first line is longer than 15 characters
    for (const char *max : {"", "x", "# comment\n4095", "0", "-1", "2147483648", "-2147483648",
                            "9223372036854775808", "-9223372036854775808", "18446744073709551617"})
        check_error("P5\n2 1\n"s + max, bad_max);
    for (const char *size : {"-1 1", "1 -1", "-1 0", "0 -5", "65536 65536", "2147483647 2147483647",
                             "-2147483648 1", "46341 46341"})
        check_error("P5\n"s + size + "\n4095\n", "Unable to allocate memory");
}

TEST_CASE("a folder as input is an error of the system, not a picture") {
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
    const std::string bytes = "\x01\x82\x03\x84\x05\x86\x07\x88"s;
    CHECK(read_picture("P5 \n1 2 1\n" + bytes).out == "1: 0 bits 1 x 2: 0 0");
    CHECK(read_picture("P5 \n1 2 255\n" + bytes).out == "1: 8 bits 1 x 2: 1 130");
    CHECK(read_picture("P5 \n1 2 257\n" + bytes).out == "1: 9 bits 1 x 2: 386 900");
    CHECK(read_picture("P5 \n1 2 65536\n" + bytes).out == "1: 16 bits 1 x 2: 386 900");
    CHECK(read_picture("P5 \n1 2 65537\n" + bytes).out == "1: 17 bits 1 x 2: 98819 8652166");
    CHECK(read_picture("P5 \n1 2 16777217\n" + bytes).out == "1: 25 bits 1 x 2: 25297796 92669832");
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
             Case{"2 1 4095", 0, " -257 -257", 2},
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
        CHECK(outcome.err == (c.missing == 0 ? ""
                                             : "Unexpected end of file in 'FILE': " +
                                                   std::to_string(c.missing) + " samples are missing\n"));
    }
    // The header alone, without even its last line feed.
    CHECK(read_picture("P5\n1 1 255").out == "1: 8 bits 1 x 1: -1");
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

TEST_CASE("the reader logs depth and maximum value, line feed included") {
    const TempFolder folder;
    write_file(folder / "in.ppm", "P5\n1 1\n4097\nab");
    take_log();
    CM_DelFRAME(CM_ReadPPM5((folder / "in.ppm").c_str(), 2));
    const std::vector<std::string> log = take_log();
    REQUIRE(log.size() == 1);
    CHECK(log[0].substr(0, 13) == "DEBUG common:");
    CHECK(log[0].substr(log[0].find(": ")) == ": Color depth (13) max_rgb:(4097)\n");
}
