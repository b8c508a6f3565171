#include <doctest/doctest.h>

#include <cmath>

#include "cmodel/common/ppm.h"
#include "cmodel/common/ppm_stream.h"
#include "tests/support/support.h"

using namespace cfa;

using namespace std::string_literals;

namespace {

const std::string of_file = " (error loading 'FILE')\n";
const std::string magic = "Invalid image format (must be 'P5')" + of_file,
                  size = "Invalid image size" + of_file, max_value = "Invalid max_rgb" + of_file,
                  memory = "Unable to allocate memory\n";

std::string missing(int count) {
    return "\nUnexpected end of file in 'FILE': " + std::to_string(count) + " samples are missing\n";
}

// What reading the picture of these bytes gives: depth, sizes and samples, then what was said on standard
// error.
std::string read_picture(const std::string &bytes) {
    const TempFolder folder;
    const std::string path = folder / "in.ppm";
    write_file(path, bytes);
    Outcome outcome = run_child([&] {
        const FramePtr frame(CM_ReadPPM5(path.c_str(), 2));
        std::printf("%d: %u bits %u x %u:", frame->format == 2 && frame->type == 2 && frame->channels == 1,
                    frame->bit_depth, frame->width, frame->height);
        for (uint32_t i = 0; i < frame->width * frame->height && i < 20; ++i)
            std::printf(" %d", static_cast<int32_t>(frame->data[i]));
    });
    CHECK(outcome.status == (outcome.out.empty() ? 1 : 0));
    for (size_t at; (at = outcome.err.find(path)) != std::string::npos;)
        outcome.err.replace(at, path.size(), "FILE");
    return outcome.out + (outcome.out.empty() || outcome.err.empty() ? "" : "\n") + outcome.err;
}

} // namespace

TEST_CASE("headers, and what they give") {
    const std::string good = "1: 12 bits 2 x 1: 258 772", million(1000000, '#');
    const std::pair<std::string, std::vector<std::string>> tables[] = {
        {good,
         {"P5\n2 1\n4095\n", "P5\n2 1 4095\n", "P5 text\n# one\n#\n2\n1\n4096 ends at a line feed\n",
          "P5\n \t2\v1\f4095\n", "P5\r\n2 1\r\n4095\r\n", "P59\n+2 01\n0004095\n",
          "P5 14 letters \n# c\n2 1 4095\n", // 14 characters and the line feed: the longest first line
          "P5\n#" + million + "\n2 1\n4095\n",
          "P5\n2" + std::string(1000000, ' ') + "1\n4095" + million + "\n"}},
        {magic,
         {"P6\n2 1\n4095\n", "p5\n", " P5\n", "\xEF\xBB\xBFP5\n", std::string(100, '\0'), "P\0P5\n"s, "P"}},
        {size,
         {"P5\nx\n255\n", "P5\n2 x\n255\n", "P5\n- 2 1\n255\n", "P5\n2,1\n255\n", "P5\n2 # 1\n1\n255\n",
          "P5 2 1 4095\n", "P5\r2 1\r4095\r", // all of it is the first line
          "P5 2 1 4095 here\n2 1 4095\n",     // over 15 characters
          "P5\n#" + million, "P5\n" + million + "\n"}},
        {max_value, {"P5\n2 1\nx", "P5\n2 1\n# comment\n4095", "P5\n2 1\n"}},
        {memory, {"P5\n-1 0\n255\n", "P5\n0 -1\n255\n", "P5\n46341 46341\n255\n", "P5\n65536 65536\n255\n"}},
    };
    for (const auto &[want, headers] : tables)
        for (const std::string &header : headers) {
            INFO(header.substr(0, 60));
            CHECK(read_picture(header + "\1\2\3\4") == want);
        }
    CHECK(read_picture("") == "FILE: No data available\n");
    const Outcome outcome = run_child([&] { CM_ReadPPM5("/proc", 2); });
    CHECK(outcome.err == "/proc: Is a directory\n");
}

TEST_CASE("numbers at the ends of what an int holds, and beyond; maximum values and their depths") {
    for (const char *beyond :
         {"2147483648", "-2147483649", "4294967296", "9223372036854775808", "18446744073709551618"}) {
        INFO(beyond);
        CHECK(read_picture("P5\n"s + beyond + " 1\n255\n") == size);
        CHECK(read_picture("P5\n1 "s + beyond + "\n255\n") == size);
        CHECK(read_picture("P5\n1 0\n"s + beyond + "\n") == max_value);
    }
    for (const char *least : {"0", "-1", "-2147483648"})
        CHECK(read_picture("P5\n1 0\n"s + least + "\n") == max_value);
    CHECK(read_picture("P5\n0 -2147483648\n255\n") == memory);
    CHECK(read_picture("P5\n0 2147483647\n255\n") == "1: 8 bits 0 x 2147483647:");
    for (int bits = 0; bits < 31; ++bits)
        for (const int delta : {-1, 0, 1})
            if (const int64_t max = (int64_t{1} << bits) + delta; max > 0)
                CHECK(ppm_bit_depth(static_cast<int32_t>(max)) ==
                      std::ceil(std::log2(static_cast<double>(max))));
    CHECK(ppm_bit_depth(2147483647) == 31);
}

TEST_CASE("a picture cut at every byte: a missing byte counts as -1") {
    const std::string whole = "P5\n#c\n2 1\n300\n\2\2\2\2tail";
    struct Case {
        size_t from; // up to the next case's
        std::string want;
    };
    const Case cases[] = {{0, "FILE: No data available\n"},
                          {1, magic},
                          {2, size},
                          {9, max_value},
                          {11, "1: 2 bits 2 x 1: -1 -1" + missing(2)}, // a maximum of 3
                          {12, "1: 5 bits 2 x 1: -1 -1" + missing(2)},
                          {13, "1: 9 bits 2 x 1: -257 -257" + missing(2)},
                          {15, "1: 9 bits 2 x 1: 511 -257" + missing(2)}, // 2 * 256 - 1
                          {16, "1: 9 bits 2 x 1: 514 -257" + missing(1)},
                          {17, "1: 9 bits 2 x 1: 514 511" + missing(1)},
                          {18, "1: 9 bits 2 x 1: 514 514"}};
    const Case *current = cases;
    for (size_t length = 0; length <= whole.size(); ++length) {
        INFO(length, " bytes");
        if (current + 1 < std::end(cases) && length == current[1].from)
            ++current;
        CHECK(read_picture(whole.substr(0, length)) == current->want);
    }
    const std::pair<std::string, std::string> deep[] = {
        {"1\n\1", "0 bits 1 x 1: 0"},
        {"255\n\202", "8 bits 1 x 1: 130"},
        {"65536\n\1\202", "16 bits 1 x 1: 386"},
        {"65537\n\1\202\3", "17 bits 1 x 1: 98819"},
        {"65537\n\1\202", "17 bits 1 x 1: 98815" + missing(1)}, // 386 * 256 - 1
        {"65537\n\1", "17 bits 1 x 1: 65279" + missing(1)},     // 65536 - 257
        {"65537\n", "17 bits 1 x 1: -65793" + missing(1)},
        {"16777217\n\1\202\3\204", "25 bits 1 x 1: 25297796"},
        {"2147483647\n\2\2\2", "31 bits 1 x 1: 33686015" + missing(1)},
        {"2147483647\n", "31 bits 1 x 1: -16843009" + missing(1)},
    };
    for (const auto &[tail, want] : deep)
        CHECK(read_picture("P5\n1 1\n" + tail) == "1: " + want);
    std::string ones; // the end of the first block and all of the second are missing
    for (int i = 0; i < 20; ++i)
        ones += i < 10 ? " 1" : " -1";
    CHECK(read_picture("P5\n300000 1\n255\n" + std::string(10, '\1')) ==
          "1: 8 bits 300000 x 1:" + ones + missing(299990));
}
