// Input pictures that lie or end early, through the whole tool: status, line, and no output file on an error.
#include <doctest/doctest.h>

#include <filesystem>
#include <vector>

#include <sys/resource.h>

#include "tests/trust/job.h"

namespace {

const std::string bypass_ini = "[cfa]\nreg_cfa_enable = 0\n";

// Decimal numbers around the powers of two to 2^64 and down to -2^64, and one far beyond.
std::vector<__int128> numbers() {
    std::vector<__int128> all = {0, 1, 2, 3, 4, 46340, 46341};
    for (const int bits : {8, 15, 16, 17, 24, 30, 31, 32, 33, 48, 62, 63, 64})
        for (const int delta : {-1, 0, 1})
            all.push_back((__int128{1} << bits) + delta);
    const size_t count = all.size();
    for (size_t i = 1; i < count; i++)
        all.push_back(-all[i]);
    all.push_back(__int128{1} << 120);
    return all;
}

std::string text_of(__int128 number) {
    if (number < 0)
        return "-" + text_of(-number);
    std::string digits(1, static_cast<char>('0' + static_cast<int>(number % 10)));
    return number < 10 ? digits : text_of(number / 10) + digits;
}

bool fits_int(__int128 number) {
    return number >= -2147483648LL && number <= 2147483647LL;
}

// Gigabytes of zeros for a lying header are refused by the system; to the tool they are an allocation error
// too.
void limit_memory() {
    if (!SANITIZED) {
        const rlimit limit = {1u << 30, 1u << 30};
        setrlimit(RLIMIT_AS, &limit);
    }
}

void check_no_outputs(const Job &job) {
    for (const Argument output : {RGB, DC, GAIN})
        CHECK_FALSE(std::filesystem::exists(job.args[output]));
}

std::string missing_line(const Job &job, size_t samples) {
    return samples == 0 ? ""
                        : "Unexpected end of file in '" + job.args[RAW] + "': " + std::to_string(samples) +
                              " samples are missing\n";
}

// What the tool says of the first `length` bytes of a picture whose header has lines of these lengths.
struct Cut {
    size_t magic, comments, size_line, max_line;
    int sample_bytes;

    // The line, or "" when the picture is read with `missing` samples.
    std::string error(const std::string &bytes, const std::string &path, size_t &missing) const {
        const size_t length = bytes.size();
        if (length == 0)
            return path + ": No data available\n";
        const std::string tail = " (error loading '" + path + "')\n";
        if (length < 2)
            return "Invalid image format (must be 'P5')" + tail;
        const std::string size = bytes.substr(std::min(length, magic + comments), size_line);
        const size_t blank = size.find(' ');
        if (blank == std::string::npos || blank + 1 == size.size())
            return "Invalid image size" + tail;
        if (length <= magic + comments + size_line)
            return "Invalid max_rgb" + tail;
        const size_t header = magic + comments + size_line + max_line;
        const size_t data = length > header ? length - header : 0;
        missing = 12 - std::min<size_t>(12, data / static_cast<size_t>(sample_bytes));
        return "";
    }
};

} // namespace

TEST_CASE("a small picture cut at every byte, with trailing data, bypassed and not") {
    struct Form {
        std::string header;
        Cut cut;
    };
    // The maximum value cut short is another depth: 4, 40 and 409 have samples of 1, 1 and 2 bytes.
    const auto bytes_at = [](const std::string &digits) { return std::stoi(digits) <= 256 ? 1 : 2; };
    for (const Form &form :
         {Form{"P5\n4 3\n4095\n", {3, 0, 4, 5, 2}}, Form{"P5 x\n# one\n#\n4 3\n255\n", {5, 8, 4, 4, 1}},
          Form{"P5\r\n# one\r\n4 3\r\n2147483647\r\n", {4, 7, 5, 12, 4}}}) {
        const size_t samples = 12 * static_cast<size_t>(form.cut.sample_bytes);
        const std::string whole = form.header + std::string(samples, '\7') + "trailing";
        for (const std::string &ini : {std::string(), bypass_ini}) {
            Job job("", ini);
            Thin thin(2);
            if (ini.empty())
                thin.take(); // the bytes that the other INI file leaves out
            for (size_t length = 0; length <= whole.size(); length++) {
                if (!thin.take())
                    continue;
                const std::string bytes = whole.substr(0, length);
                INFO(length, " bytes of ", form.header);
                write_file(job.args[RAW], bytes);
                Cut cut = form.cut;
                const size_t max_at = cut.magic + cut.comments + cut.size_line;
                if (length > max_at && length < form.header.size() && cut.sample_bytes != 4)
                    cut.sample_bytes = bytes_at(bytes.substr(max_at));
                size_t missing = 0;
                const std::string error = cut.error(bytes, job.args[RAW], missing);
                job.remove_outputs();
                const Outcome outcome = job.run();
                CHECK(outcome.out == "");
                if (!error.empty()) {
                    CHECK(outcome.status == 1);
                    CHECK(outcome.err == error);
                    check_no_outputs(job);
                } else {
                    CHECK(outcome.status == 0);
                    CHECK(outcome.err == missing_line(job, missing));
                    CHECK(job.outputs().dc.size() == job.outputs().gain.size());
                    CHECK(job.outputs().rgb.starts_with("P6\n"));
                }
            }
        }
    }
}

TEST_CASE("sizes of every kind: 0, negative, beyond an int, products beyond an int") {
    Job job("", bypass_ini);
    const std::vector<__int128> all = numbers();
    Thin thin(97);
    for (const __int128 width : all)
        for (const __int128 height : all) {
            const bool fits = fits_int(width) && fits_int(height);
            const bool refused = !fits || width < 0 || height < 0 || width * height * 3 > 2147483647;
            if ((!refused && width * height > 100000) || !thin.take())
                continue;
            if (SANITIZED && refused && fits && width >= 0 && height >= 0 && width * height <= 2147483647)
                continue; // the raw frame alone is allowed and takes gigabytes
            INFO(text_of(width), " x ", text_of(height));
            write_file(job.args[RAW], "P5\n" + text_of(width) + " " + text_of(height) + "\n4095\n");
            job.remove_outputs();
            const Outcome outcome = job.run(60000, limit_memory);
            CHECK(outcome.out == "");
            CHECK(outcome.status == (refused ? 1 : 0));
            if (!fits)
                CHECK(outcome.err == "Invalid image size (error loading '" + job.args[RAW] + "')\n");
            else if (refused)
                CHECK(outcome.err == "Unable to allocate memory\n");
            else
                CHECK(outcome.err == missing_line(job, static_cast<size_t>(width * height)));
            if (refused)
                check_no_outputs(job);
            else
                CHECK(job.outputs().dc.substr(33, 100).starts_with(text_of(width) + " " + text_of(height)));
        }
}

TEST_CASE("maximum values from -2^64 to 2^64") {
    Job job("");
    Thin thin(7);
    for (int bits = 0; bits <= 64; bits++)
        for (const int delta : {-2, -1, 0, 1, 2})
            for (const int sign : {1, -1}) {
                if (!thin.take())
                    continue;
                const __int128 max = sign * ((__int128{1} << bits) + delta);
                INFO(text_of(max));
                write_file(job.args[RAW],
                           "P5\n4 3\n" + text_of(max) + "\n" + std::string(48, '\1') + "trailing");
                job.remove_outputs();
                const Outcome outcome = job.run();
                if (max < 1 || max > 2147483647) {
                    check_error(outcome, "Invalid max_rgb (error loading '" + job.args[RAW] + "')");
                    check_no_outputs(job);
                    continue;
                }
                check_silent(outcome);
                int depth = 0;
                while ((__int128{1} << depth) < max)
                    depth++;
                const std::string head =
                    "P5\n# Created by ZEMBRO DPU Model\n4 3\n" + text_of((__int128{1} << depth) - 1) + "\n";
                const size_t bytes = depth <= 8 ? 1 : depth <= 16 ? 2 : depth <= 24 ? 3 : 4;
                CHECK(job.outputs().gain.substr(0, head.size()) == head);
                CHECK(job.outputs().gain.size() == head.size() + 12 * bytes);
            }
}

TEST_CASE("pictures that the enabled block cannot take end before an output is opened") {
    Job job("");
    for (int width = 0; width <= 4; width++)
        for (int height = 0; height <= 3; height++) {
            const std::string size = std::to_string(width) + " x " + std::to_string(height);
            INFO(size);
            write_file(job.args[RAW], mosaic(width, height, 4095, 1));
            job.args[DEBUG] = "1";
            const Outcome outcome = job.run();
            if (width == 4 && height == 3) {
                check_silent(outcome);
                continue;
            }
            check_error(outcome,
                        "Picture of " + size + " is too small: the enabled block takes 4 x 3 and larger");
            check_no_outputs(job);
            CHECK_FALSE(std::filesystem::exists(job.folder / "dbg_img_AvgRGB.ppm"));
        }
}

TEST_CASE("wrong magics, comments of megabytes, blanks of megabytes, one-line headers") {
    Job job("", bypass_ini);
    const std::string path = job.args[RAW];
    const std::string million(1000000, '#');
    const std::string pixels(24, '\1');
    const std::string magic = "Invalid image format (must be 'P5') (error loading '" + path + "')";
    const std::string size = "Invalid image size (error loading '" + path + "')";
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"P6\n4 3\n4095\n" + pixels, magic},
        {"p5\n4 3\n4095\n" + pixels, magic},
        {" P5\n4 3\n4095\n" + pixels, magic},
        {"\xEF\xBB\xBFP5\n4 3\n4095\n" + pixels, magic},
        {std::string(100, '\0'), magic},
        {std::string("P\0P5\n", 5), magic},
        {"P5 4 3 4095 " + pixels, size},    // one line, as other tools may write it
        {"P5 4 3 4095\n" + pixels, size},   // the numbers belong to the magic line
        {"P5\r4 3\r4095\r" + pixels, size}, // old line ends: all of it is the magic line
        {"P5\n#" + million, size},          // a comment without end
        {"P5\n" + million + "\n", size},    // a comment and nothing behind it
        {"P5\n#" + million + "\n4 3\n4095\n" + pixels, ""},
        {"P5\n4" + std::string(1000000, ' ') + "3\n4095" + million + "\n" + pixels, ""},
        {"P5\n000000000000000000000000004 +3 4095\n" + pixels, ""},
        {"P5\n4 3 4095\r\n" + pixels, ""},
    };
    for (const auto &[bytes, error] : cases) {
        const std::string start = bytes.substr(0, 30);
        INFO(start);
        write_file(path, bytes);
        job.remove_outputs();
        const Outcome outcome = job.run();
        if (!error.empty()) {
            check_error(outcome, error);
            check_no_outputs(job);
            continue;
        }
        check_silent(outcome);
        CHECK(job.outputs().rgb.ends_with(std::string(72, '\1')));
    }
}
