#include <array>
#include <doctest/doctest.h>
#include <filesystem>

#include "tests/tools/cfatool/tool_support.h"
#include "tools/cfatool/base/integer_math.h"
#include "tools/cfatool/compare/picture_compare.h"
#include "tools/cfatool/pictures/png_file.h"

using namespace cfatool;

namespace {

struct Samples {
    int width, height, channels, bytes;
    uint32_t max;
    std::vector<uint32_t> data;

    Samples(int w, int h, int c, int bits)
        : width(w), height(h), channels(c), bytes((bits + 7) / 8), max(UINT32_MAX >> (32 - bits)) {
        for (int i = 0; i < w * h * c; ++i)
            data.push_back(static_cast<uint32_t>(random_bits(bits, i)) & max);
    }
    uint32_t &at(int x, int y, int c) { return data[static_cast<size_t>((y * width + x) * channels + c)]; }
    std::string file(const std::string &header = "") const {
        const std::string size = std::to_string(width) + " " + std::to_string(height) + "\n";
        const std::string head = (channels == 1 ? "P5\n" : "P6\n") + size + std::to_string(max) + "\n";
        return (header.empty() ? head : header) + big_endian(data, bytes);
    }
};

/// Two pictures as files of a folder.
struct Pair {
    TempFolder folder;
    std::string a = folder / "a.ppm", b = folder / "b.ppm";

    Pair(const Samples &first, const Samples &second) {
        write_file(a, first.file());
        write_file(b, second.file());
    }
    Comparison compare(uint32_t tolerance = 0, const std::string &crop = "", size_t max_list = 1) const {
        return compare_pictures(a, b, {tolerance, crop, max_list, ""});
    }
};

} // namespace

TEST_CASE("planted differences are found at every depth, in every byte of a sample") {
    for (const int bits : {8, 12, 16, 24, 32}) {
        for (const int channels : {1, 3}) {
            INFO(bits, " bits, ", channels, " channels");
            const Samples a(19, 13, channels, bits);
            CHECK(Pair(a, a).compare().equal());
            for (int bit = 0; bit < bits; ++bit) {
                Samples b = a;
                b.at(18, 12, channels - 1) ^= 1u << bit; // the very last sample
                const Comparison found = Pair(a, b).compare();
                REQUIRE(found.list.size() == 1);
                CHECK(found.channel[static_cast<size_t>(channels - 1)].largest == 1u << bit);
                const Difference &d = found.list[0];
                CHECK(std::array{d.x, d.y, d.channel} == std::array{18, 12, channels - 1});
            }
        }
    }
}

TEST_CASE("figures of a comparison: counts, mean, PSNR, box, first pixel in raster order") {
    Samples a(10, 8, 3, 12);
    std::fill(a.data.begin(), a.data.end(), 1000u);
    Samples b = a;
    b.at(7, 2, 2) = 1010; // the first in raster order
    b.at(3, 5, 0) = 996;
    b.at(4, 5, 2) = 0;
    b.at(4, 5, 1) = 5000; // above the maximum value
    const Pair pair(a, b);
    const Comparison found = pair.compare(0, "", 3);
    CHECK(found.channel[0].differing == 1);
    CHECK(found.channel[1].largest == 4000);
    CHECK(found.channel[2].differing == 2);
    CHECK(found.channel[2].sum == 1010);
    CHECK(found.mean(found.channel[2], found.pixels()) == doctest::Approx(1010.0 / 80));
    // 10 log10(4095^2 / ((10^2 + 4^2 + 1000^2 + 4000^2) / 240))
    CHECK(found.psnr() == doctest::Approx(23.7429).epsilon(0.00001));
    CHECK(std::vector<int>{found.left, found.top, found.right, found.bottom} == std::vector<int>{3, 2, 7, 5});
    CHECK(found.list.size() == 3);
    CHECK(difference_text(found, found.list[0], 3) == "x 7, y 2, channel B: 1000 against 1010 (Gr site)");
    CHECK(pair.compare(10).all().differing == 2);
    CHECK(pair.compare(3999).list[0].b == 5000);
    CHECK(pair.compare(4000).equal());
    CHECK(pair.compare(0, "0,0,7,8").list[0].y == 5);
    CHECK(pair.compare(0, "5,3,5,5").equal());
    CHECK_THROWS_WITH(pair.compare(0, "5,3,6,5"), doctest::Contains("leaves the picture of 10x8"));
}

TEST_CASE("compare: status and words, for scripts too") {
    const Samples a(6, 4, 1, 24);
    Samples b = a;
    b.at(5, 1, 0) ^= 512; // what a reader of 16 bits would see only by luck
    const Pair pair(a, b);
    const auto compare = [&](const std::vector<std::string> &more = {}) {
        return cfatool_run({"compare", pair.a, pair.b}, more);
    };
    const Outcome text = compare({"--bayer", "0", "--map", pair.folder / "m.png"});
    CHECK(text.status == 1);
    CHECK(contains(text.out, "first difference: x 5, y 1: "));
    CHECK(contains(text.out, "(R site)"));
    const RgbPicture map = read_png(pair.folder / "m.png");
    for (size_t i = 0; i < map.samples.size(); i += 3) // grey but for the one pixel
        CHECK((map.samples[i] != map.samples[i + 1]) == (i == (6 + 5) * 3));
    CHECK(contains(compare({"--json"}).out, "\"first\":{\"x\":5,\"y\":1,\"channel\":\"grey\""));
    CHECK(compare({"--tolerance", "512"}).status == 0);
    CHECK(compare({"--tolerance", "511"}).status == 1);

    // Header lines of other writers; another size, another depth.
    struct Case {
        std::string bytes;
        int status;
        std::string start;
    };
    for (const Case &c : {Case{a.file("P5 # a writer's name\n#more\n 6\t4 16777215\n"), 0, ""},
                          Case{Samples(6, 4, 3, 24).file(), 1, "size mismatch: "},
                          Case{Samples(6, 4, 1, 23).file(), 1, "depth mismatch: "}}) {
        write_file(pair.b, c.bytes);
        const Outcome outcome = compare();
        CHECK(outcome.status == c.status);
        CHECK(outcome.out.starts_with(c.start));
    }
}

TEST_CASE("compare refuses what it cannot read whole, with status 2 and one line") {
    const Samples a(6, 4, 1, 16);
    const Pair pair(a, a);
    const std::string whole = a.file();
    for (const std::string &bad : {whole.substr(0, whole.size() - 1), whole + "x", std::string()}) {
        write_file(pair.b, bad);
        const Outcome outcome = cfatool_run({"compare", pair.a, pair.b});
        CHECK(outcome.status == 2);
        CHECK(outcome.out.empty());
        CHECK(outcome.err.starts_with(pair.b + ": "));
    }
    CHECK(cfatool_run({"compare", pair.a, pair.folder / "none"}).err ==
          (pair.folder / "none") + ": No such file or directory\n");
    CHECK(cfatool_run({"compare", pair.a, pair.folder.path}).status == 2);
}

TEST_CASE("any number of rows without pixels is compared at once") {
    const TempFolder folder;
    const std::string tall = folder / "tall.ppm";
    write_file(tall, "P5\n0 2147483647\n255\n");
    CHECK(run_program({std::getenv("CFATOOL"), "compare", tall, tall}, 5000).status == 0);
}

TEST_CASE("compare of two runs names the first stage in pipeline order, not in the order of names") {
    namespace fs = std::filesystem;
    const TempFolder folder;
    const std::string golden = source_root() + "/tests/data/golden/everything_on_scene_id2";
    for (const char *side : {"a", "b"})
        fs::copy(golden, folder / side, fs::copy_options::recursive);
    const auto compare = [&](const std::vector<std::string> &more = {}) {
        return cfatool_run({"compare", folder / "a", folder / "b"}, more);
    };
    CHECK(compare().status == 0);
    CHECK(contains(compare().out, "no difference in 38 images"));

    // MinRGB comes before AHDiff; a difference in its sample at x 2, y 1 of 64 x 48 pixels of two bytes.
    for (const char *name : {"dbg_img_AHDiff.ppm", "dbg_img_MinRGB.ppm", "dbg_sg_rgb_luma.ppm"}) {
        std::string bytes = read_file(folder / "b/dbg/" + name);
        bytes[bytes.size() - 64 * 48 * 2 + (64 + 2) * 2 + 1] ^= 1;
        write_file(folder / "b/dbg/" + name, bytes);
    }
    const Outcome outcome = compare();
    CHECK(outcome.status == 1);
    CHECK(contains(outcome.out,
                   "first stage that differs: cfa_CalPredictPixel, dbg_img_MinRGB.ppm: 1 of 3072 samples "
                   "differ, largest 1, first at x 2, y 1: "));
    CHECK(contains(compare({"--json"}).out, "\"first_stage\":\"cfa_CalPredictPixel\""));

    // Debug images of the one against the other's own folder; then one that is cut.
    const std::vector<std::string> with_own_folder = {"compare", folder / "a", folder / "a/dbg"};
    CHECK(cfatool_run(with_own_folder, {"--common"}).status == 0);
    const Outcome one_sided = cfatool_run(with_own_folder);
    CHECK(one_sided.status == 1);
    CHECK(contains(one_sided.out, "only in " + (folder / "a")));
    fs::resize_file(folder / "b/out.ppm", 1000);
    CHECK(compare().status == 2);
    CHECK(contains(compare().err, "cut short"));
    CHECK(cfatool_run({"compare", folder / "a", folder.path}).status == 2); // nothing in common
}
