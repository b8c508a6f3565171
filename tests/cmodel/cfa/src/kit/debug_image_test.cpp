#include "cmodel/cfa/src/kit/debug_image.h"

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <vector>

#include <doctest/doctest.h>

#include "tests/support/planes.h"
#include "tests/support/support.h"

using namespace cfa;

namespace {

struct Dump {
    TempFolder folder;
    std::string path = folder / "dump";

    /// The magic, and the bytes behind the comment line and the header lines.
    void expect(const std::string &magic, const std::vector<uint8_t> &samples) const {
        const std::string all = read_file(path);
        CHECK(all.starts_with(magic));
        CHECK(all.ends_with("\n" + std::string(samples.begin(), samples.end())));
    }
};

} // namespace

TEST_CASE("debug images: products that wrap, selectors beyond the channels, depths") {
    const Plane deep(2, 1, 1, {(3 << 29) + 1, -(1 << 29)}), mono(5, 1, 1, {10, 11, 12, 13, 14});
    const Plane color(2, 1, 3, {1, -2, 3, 4, -500, 6});
    const Dump dump;
    CHECK(dump_dbg_frame(deep, 0, 2, 12, dump.path) == 0); // times 2: wraps below 0 and shows as 0; 2^30
    dump.expect("P5\n", {0, 0, 15, 255});
    dump_dbg_frame(mono, 3, 1, 8, dump.path); // reads on; the spare samples behind a plane are 0
    dump.expect("P5\n", {13, 14, 0, 0, 0});
    dump_dbg_frame(color, 3, 1, 8, dump.path);
    dump.expect("P6\n", {1, 2, 3, 4, 255, 6});
    // -5 * 4 >> 4 rounds down to -2; 2^29 * 4 wraps below 0.
    dump_signed_map(Plane(5, 1, 1, {3, 4, -5, 4095, 1 << 29}), dump.path);
    dump.expect("P6\n", {0, 0, 0, 1, 0, 0, 0, 2, 0, 255, 0, 0, 0, 255, 0});
}

TEST_CASE("any selector but 0 to 3 writes nothing") {
    const Dump dump;
    for (const int32_t selector : {4, -1, INT32_MIN}) {
        const Outcome outcome =
            run_child([&] { std::exit(dump_dbg_frame(Plane(1, 1, 3), selector, 1, 8, dump.path)); });
        CHECK(outcome.status == 1);
        CHECK(outcome.out == "Error...\n");
        CHECK_FALSE(std::filesystem::exists(dump.path));
    }
}

TEST_CASE("debug paths are cut at 1023 characters") {
    std::memset(dbg_path, 'p', 1020);
    dbg_path[1020] = '\0';
    CHECK(debug_path_of("name.ppm") == std::string(1020, 'p') + "/na");
    dbg_path[0] = '\0';
}
