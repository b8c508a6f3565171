#include "cmodel/cfa/src/picture_run.h"

#include <cstdio>
#include <filesystem>
#include <sstream>
#include <string>

#include <doctest/doctest.h>
#include <sys/resource.h>

#include "cmodel/cfa/src/kit/debug_image.h"
#include "cmodel/cfa/src/reg_parse/cfa_reg.h"
#include "cmodel/cmodel_top/src/reg_parse/cmodel_top_reg.h"
#include "log/log.h"
#include "tests/support/equality.h"
#include "tests/support/registers.h"
#include "tests/support/support.h"

using namespace cfa;

namespace {

using Way = void (*)(const char *, const OutputPaths &, Notice);

void print(const char *line) {
    std::fprintf(stderr, "%s\n", line);
}

// The log without time stamps and line numbers: a record's line is that of its call.
std::string log_text(const std::string &path) {
    std::istringstream records(read_file(path));
    std::string text;
    for (std::string line; std::getline(records, line);) {
        const size_t number = line.find(':', 20);
        text += line.size() < 20 || number == std::string::npos
                    ? line
                    : line.substr(20, number - 20) + line.substr(line.find(':', number + 1));
        text += "\n";
    }
    return text;
}

// One picture, and where its outputs go; both ways run on the same paths.
struct Bench : FreshRegisters {
    Bench() { INIT_CMODEL_TOP_REG("NULL"); }
    ~Bench() { INIT_CMODEL_TOP_REG("NULL"); }

    // All that a run leaves.
    struct Result {
        Outcome outcome;
        std::string log, rgb, dc, gain;
    };

    // The dc file is there before, and longer than the new one.
    Result run(Way way, const std::string &picture, int timeout_ms) const {
        for (const auto &entry : std::filesystem::directory_iterator(folder.path))
            std::filesystem::remove_all(entry.path());
        write_file(folder / "raw", picture);
        write_file(folder / "dc", std::string(100000, 'x'));
        const Outcome outcome = run_child(
            [&] {
                log_add_fp(std::fopen((folder / "log").c_str(), "a"), 0);
                way(raw.c_str(), {rgb.c_str(), dc.c_str(), gain.c_str()}, print);
            },
            timeout_ms);
        return {outcome, log_text(folder / "log"), bytes(rgb), bytes(dc), bytes(gain)};
    }

    // Both ways; fails the test where they differ.
    Result compare(const std::string &picture, int timeout_ms = 30000) const {
        const Result frames = run(run_picture_in_frames, picture, timeout_ms);
        const Result rows = run(run_picture, picture, timeout_ms);
        CHECK(rows.outcome.status == frames.outcome.status);
        CHECK(rows.outcome.out == frames.outcome.out);
        CHECK(rows.outcome.err == frames.outcome.err);
        CHECK(rows.log == frames.log);
        CHECK((rows.rgb == frames.rgb)); // no thousands of bytes in a message
        CHECK((rows.dc == frames.dc));
        CHECK((rows.gain == frames.gain));
        return rows;
    }

    TempFolder folder;
    std::string raw = folder / "raw", rgb = folder / "rgb", dc = folder / "dc", gain = folder / "gain";

  private:
    static std::string bytes(const std::string &path) { // a device would never end
        return std::filesystem::is_regular_file(path) ? read_file(path) : "(no file)";
    }
};

std::string header(const std::string &size, int max_value = 4095) {
    return "P5\n" + size + "\n" + std::to_string(max_value) + "\n";
}

// Random samples of 0..largest in words of this many bytes.
std::string samples(uint32_t seed, int count, int32_t largest = 4095, int word_bytes = 2) {
    Noise noise(seed);
    std::string bytes;
    for (int i = 0; i < count; i++) {
        const int32_t v = noise.in(0, largest);
        for (int b = word_bytes - 1; b >= 0; b--)
            bytes += static_cast<char>(v >> (8 * b));
    }
    return bytes;
}

} // namespace

TEST_CASE_FIXTURE(Bench, "rows and frames: regular pictures, all features, every register") {
    for (uint32_t seed = 0; seed < 60; seed++) {
        INFO("seed ", seed);
        draw_registers(seed);
        const PictureSize size = small_size(seed);
        const std::string text = std::to_string(size.width) + " " + std::to_string(size.height);
        const Result result =
            compare(header(text) + samples(seed, size.width * size.height, seed % 4 == 0 ? 1 : 4095));
        CHECK(result.outcome.status == 0);
        CHECK(result.rgb.starts_with("P6\n"));
    }
}

TEST_CASE_FIXTURE(Bench, "rows and frames: more than a block of rows, rows of more than a block") {
    for (const bool sharpens : {false, true}) {
        cfa_reg.hw.reg_cfa_shpn_enable = sharpens;
        cfa_reg.hw.reg_cfa_shpn_gain_value = 77;
        compare(header("1000 150") + samples(1, 150000));
        compare(header("50001 3") + samples(2, 150003));
    }
}

TEST_CASE_FIXTURE(Bench, "rows and frames: every depth, deep files of small samples too") {
    for (const bool sharpens : {false, true}) {
        cfa_reg.hw.reg_cfa_shpn_enable = sharpens;
        for (const int bits : {0, 1, 2, 7, 8, 9, 12, 15, 16, 17, 24, 25, 30}) {
            const int bytes = bits == 0 ? 0 : (bits + 7) / 8;
            const int32_t max_value = 1 << bits;
            for (const int32_t largest : {std::min(max_value, 255), std::min(max_value, 4095), max_value}) {
                INFO(bits, " bits, samples to ", largest);
                compare(header("9 7", max_value) + samples(3, 63, largest, bytes));
            }
        }
    }
}

TEST_CASE_FIXTURE(Bench, "rows and frames: one sample beyond the bound, wherever it stands") {
    const std::string head = header("70 9"), data = samples(5, 630);
    for (const size_t at : {0, 1, 69, 70, 317, 628, 629})
        for (const char high : {'\x10', '\x7f', '\xff'}) {
            INFO("sample ", at);
            std::string changed = data;
            changed[2 * at] = high;
            CHECK(compare(head + changed).outcome.status == 0);
        }
}

TEST_CASE_FIXTURE(Bench,
                  "rows and frames: missing data, data too many, headers that lie, pictures too small") {
    for (const int bytes : {1, 2}) {
        const int max_value = bytes == 1 ? 255 : 4095;
        const std::string data = samples(6, 104, max_value, bytes);
        for (const size_t present : {size_t{0}, size_t{1}, size_t{2}, size_t{53}, data.size() - 1})
            compare(header("13 8", max_value) + data.substr(0, present));
        compare(header("13 8", max_value) + data + "tail");
    }
    for (const char *size : {"0 5", "4 2", "3 100", "-4 3", "65536 65536", "x 4"}) {
        INFO(size);
        CHECK(compare(header(size) + samples(7, 300)).outcome.status == 1);
    }
}

TEST_CASE_FIXTURE(Bench, "rows and frames: bypass, 4 x 4 patterns, contradicting slopes, debug images") {
    const std::string picture = header("17 9") + samples(10, 153);
    cmodel_top_reg.hw.reg_img_bayerid = 8;
    compare(picture);
    cmodel_top_reg.hw.reg_img_bayerid = 1;
    cfa_reg.hw.reg_cfa_cmoire_pd_slp0 = -1;
    compare(picture);
    INIT_CFA_REG("NULL");
    cfa_reg.hw.reg_cfa_enable = 0;
    for (const char *size : {"17 9", "1 1", "3 2", "0 4"})
        CHECK(compare(header(size) + samples(10, 153)).outcome.status == 0);
    INIT_CFA_REG("NULL");
    std::snprintf(dbg_path, sizeof dbg_path, "%s", folder.path.c_str());
    dump_dbg_img = true;
    compare(picture);
    dump_dbg_img = false;
    CHECK(std::filesystem::exists(folder / "dbg_img_GH.ppm"));
}

// Each output on its own: tests/trust.
TEST_CASE_FIXTURE(Bench,
                  "rows and frames: outputs that fail, outputs that coincide with each other and the input") {
    const std::string picture = header("21 12") + samples(11, 252);
    for (const std::string &place : {folder / "one", raw, std::string("/dev/null"), std::string("/dev/full")})
        for (const bool sharpens : {false, true}) {
            INFO(place);
            cfa_reg.hw.reg_cfa_shpn_enable = sharpens;
            rgb = dc = gain = place;
            CHECK(compare(picture).outcome.status == (place == "/dev/full" ? 1 : 0));
        }
}

#ifndef __SANITIZE_ADDRESS__
TEST_CASE_FIXTURE(Bench, "a regular picture needs 2 bytes a pixel, 2 more for a gain map") {
    write_file(raw, header("2000 1500") + samples(12, 3000000));
    const auto growth = [&](Way way) { // bytes a pixel
        const Outcome outcome = run_child([&] {
            rusage usage;
            getrusage(RUSAGE_SELF, &usage);
            const long before = usage.ru_maxrss;
            way(raw.c_str(), {"/dev/null", "/dev/null", "/dev/null"}, print);
            getrusage(RUSAGE_SELF, &usage);
            std::printf("%ld", (usage.ru_maxrss - before) * 1024 / 3000000);
        });
        return std::stol(outcome.out);
    };
    constexpr long lines = 3; // line buffers and rounding to huge pages
    CHECK(growth(run_picture) < 2 + lines);
    cfa_reg.hw.reg_cfa_shpn_enable = 1;
    CHECK(growth(run_picture) < 4 + lines);
    CHECK(growth(run_picture_in_frames) > 4 + 12 + 4 + 4 - 1);
}
#endif
