#include "cmodel/cfa/src/picture_run.h"

#include <filesystem>

#include <doctest/doctest.h>
#include <sys/resource.h>

#include "cmodel/cfa/src/kit/debug_image.h"
#include "log/log.h"
#include "tests/support/equality.h"
#include "tests/support/hooks.h"
#include "tests/support/registers.h"
#include "tests/support/tool.h"

using namespace cfa;

namespace {

// One picture, and where its outputs go; both ways run on the same paths.
struct Bench : FreshRegisters, Job {
    Bench() : Job("") {}

    Outcome run_way(void (*way)(const char *, const OutputPaths &, Notice)) const {
        return run_child([&] {
            const rlimit bound = {1 << 30, 1 << 30}; // gigabytes are refused
            if (!SANITIZED)
                setrlimit(RLIMIT_AS, &bound);
            watch();
            log_add_fp(std::fopen(args[LOG].c_str(), "a"), 0);
            way(args[RAW].c_str(), {args[RGB].c_str(), args[DC].c_str(), args[GAIN].c_str()},
                [](const char *line) { std::fprintf(stderr, "%s\n", line); });
        });
    }

    // Both ways; fails the test where what they leave differs. The dc file is there before, and longer.
    Outcome compare(const std::string &picture) const {
        std::map<std::string, std::string> found[2];
        std::vector<std::string> logs[2];
        Outcome outcomes[2];
        for (const bool rows : {false, true}) {
            clear();
            write_file(args[RAW], picture);
            write_file(folder / "dc", std::string(100000, 'x'));
            outcomes[rows] = run_way(rows ? run_picture : run_picture_in_frames);
            found[rows] = pictures();
            logs[rows] = log();
        }
        CHECK(outcomes[1] == outcomes[0]);
        CHECK(logs[1] == logs[0]);
        CHECK((found[1] == found[0])); // no thousands of bytes in a message
        return outcomes[1];
    }
};

} // namespace

TEST_CASE_FIXTURE(Bench, "rows and frames: regular pictures, all features, every register") {
    for (uint32_t seed = 0; seed < 30; ++seed) {
        INFO("seed ", seed);
        draw_registers(seed);
        const PictureSize size = small_size(seed);
        CHECK(compare(mosaic(size.width, size.height, seed, 4095, seed % 4 == 0 ? 1 : 4095)).status == 0);
        CHECK(outputs().rgb.starts_with("P6\n"));
    }
}

TEST_CASE_FIXTURE(Bench, "rows and frames: more than a block, rows of more than a block; every depth") {
    cfa_reg.hw.reg_cfa_shpn_gain_value = 77;
    for (const bool sharpens : {false, true}) {
        cfa_reg.hw.reg_cfa_shpn_enable = sharpens;
        compare(mosaic(1000, 150));
        compare(mosaic(1001, 1000)); // two threads
        compare(mosaic(50001, 3));
    }
    for (const int bits : {0, 1, 2, 7, 8, 9, 12, 15, 16, 17, 24, 25, 30})
        for (const int32_t largest : {255, 4095, INT32_MAX}) {
            INFO(bits, " bits, samples to ", largest);
            cfa_reg.hw.reg_cfa_shpn_enable = largest == 4095;
            compare(mosaic(9, 7, 3, 1 << bits, std::min(1 << bits, largest)));
        }
}

TEST_CASE_FIXTURE(Bench,
                  "rows and frames: one sample beyond the bound, wherever it stands, in whatever block") {
    for (const auto &[picture, places] : {std::pair{mosaic(70, 9), std::vector{0, 1, 69, 70, 629}},
                                          {mosaic(480, 276), {0, 131071, 131072, 132479}}})
        for (const int at : places) {
            INFO("sample ", at);
            std::string changed = picture;
            changed[picture.find("4095\n") + 5 + 2 * static_cast<size_t>(at)] = at % 2 == 0 ? '\x10' : '\xff';
            CHECK(compare(changed).status == 0);
        }
    std::string twice = mosaic(70, 9); // two that are alike
    for (const size_t at : {0, 2})
        twice[twice.find("4095\n") + 5 + 2 * at] = '\x10';
    CHECK(compare(twice).status == 0);
}

TEST_CASE_FIXTURE(
    Bench, "rows and frames: data missing and too many, 4 x 4 patterns, slopes, debug images, one place") {
    for (const int max : {255, 4095}) {
        const std::string whole = mosaic(13, 8, 6, max);
        const size_t head = whole.size() - 104 * (max == 255 ? 1 : 2);
        for (const size_t present : {0, 1, 2, 53, 103})
            compare(whole.substr(0, head + present));
        compare(whole + "tail");
    }
    const std::string picture = mosaic(17, 9);
    cmodel_top_reg.hw.reg_img_bayerid = 8;
    compare(picture);
    cmodel_top_reg.hw.reg_img_bayerid = 1;
    cfa_reg.hw.reg_cfa_cmoire_pd_slp0 = -1;
    compare(picture);
    reset();
    cfa_reg.hw.reg_cfa_enable = 0;
    compare(picture);
    reset();
    std::snprintf(dbg_path, sizeof dbg_path, "%s", folder.path.c_str());
    dump_dbg_img = true;
    compare(picture);
    dump_dbg_img = false;
    CHECK(pictures().size() > 20);
    for (const std::string &place : {folder / "one", args[RAW], std::string("/dev/null")})
        for (const bool sharpens : {false, true}) {
            INFO(place);
            cfa_reg.hw.reg_cfa_shpn_enable = sharpens;
            args[RGB] = args[DC] = args[GAIN] = place;
            CHECK(compare(picture).status == 0);
        }
}

TEST_CASE_FIXTURE(
    Bench, "memory: 2 bytes a pixel, 2 more for a gain map; nothing for a size that no output can have") {
    if (SANITIZED)
        return;
    const size_t pixels = 256 * 8192, lines = 2500000; // line buffers, blocks, streams
    write_file(args[RAW], mosaic(256, 8192));
    for (const bool sharpens : {false, true}) {
        cfa_reg.hw.reg_cfa_shpn_enable = sharpens;
        CHECK(run_way(run_picture).status == 0);
        CHECK(watched->bytes < (sharpens ? 4 : 2) * pixels + lines);
    }
    // Beyond 2^31 samples in one channel, and in three: whole frames say so, the first with its 4 bytes a
    // sample.
    for (const auto &[size, most] :
         {std::pair{"46341 46341", size_t{0}}, {"26755 26755", size_t{26755} * 26755 * 4}}) {
        write_file(args[RAW], std::string("P5\n") + size + "\n4095\n");
        const Outcome outcome = run_way(run_picture);
        CHECK(outcome == error_line("Unable to allocate memory"));
        CHECK(watched->most >= most);
        CHECK(watched->most < most + lines);
    }
}
