#include "cmodel/cfa/src/kit/debug_image.h"

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <initializer_list>
#include <string>

#include <doctest/doctest.h>

#include "tests/support/planes.h"
#include "tests/support/support.h"

using namespace cfa;

namespace {

struct Dump {
    TempFolder folder;
    std::string path = folder / "dump";

    /// Magic line and the rest after the comment line: size, maximum, samples.
    void expect(const std::string &magic, const std::string &rest) const {
        const std::string all = read_file(path);
        CHECK(all.substr(0, 3) == magic);
        CHECK((all.substr(all.find('\n', 3) + 1) == rest));
    }
};

std::string bytes(std::initializer_list<int> list) {
    return {list.begin(), list.end()};
}

} // namespace

TEST_CASE("a debug image of one channel: magnitude times gain, limited to the depth") {
    const Plane plane(2, 1, 3, {1, -2, 3, 4, -500, 6});
    const Dump dump;
    CHECK(dump_dbg_frame(plane, 1, 10, 12, dump.path) == 0);
    dump.expect("P5\n", "2 1\n4095\n" + bytes({0, 20, 4095 >> 8, 255}));
    CHECK(dump_dbg_frame(plane, 2, 1, 8, dump.path) == 0);
    dump.expect("P5\n", "2 1\n255\n" + bytes({3, 6}));
    const Plane deep(2, 1, 1, {3 << 29, 1 << 29}); // times 2 wraps negative and shows as 0
    CHECK(dump_dbg_frame(deep, 0, 2, 12, dump.path) == 0);
    dump.expect("P5\n", "2 1\n4095\n" + bytes({0, 0, 15, 255}));
}

TEST_CASE("selector 3 writes all three channels, or reads on where there are fewer") {
    const Dump dump;
    const Plane color(1, 2, 3, {1, -2, 300, 4, 5, 6});
    CHECK(dump_dbg_frame(color, 3, 1, 8, dump.path) == 0);
    dump.expect("P6\n", "1 2\n255\n" + bytes({1, 2, 255, 4, 5, 6}));
    const Plane mono(5, 1, 1, {10, 11, 12, 13, 14});
    CHECK(dump_dbg_frame(mono, 3, 1, 8, dump.path) == 0); // the spare samples behind a plane are 0
    dump.expect("P5\n", "5 1\n255\n" + bytes({13, 14, 0, 0, 0}));
    CHECK(dump_dbg_frame(mono, 1, 1, 8, dump.path) == 0);
    dump.expect("P5\n", "5 1\n255\n" + bytes({11, 12, 13, 14, 0}));
}

TEST_CASE("any other selector writes nothing") {
    const Dump dump;
    const Plane color(1, 1, 3);
    for (int32_t selector : {4, 1000, -1, INT32_MIN}) {
        CAPTURE(selector);
        const Outcome outcome =
            run_child([&] { std::exit(dump_dbg_frame(color, selector, 1, 8, dump.path)); });
        CHECK(outcome.status == 1);
        CHECK(outcome.out == "Error...\n");
        CHECK_FALSE(std::filesystem::exists(dump.path));
    }
}

TEST_CASE("a signed map shows a quarter of the magnitude, red above and green below 0") {
    const Dump dump;
    const Plane plane(6, 1, 1, {0, 3, 4, -4, -5, 4095});
    dump_signed_map(plane, dump.path); // -5 * 4 >> 4 rounds down to -2
    dump.expect("P6\n", "6 1\n255\n" + bytes({0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 2, 0, 255, 0, 0}));
}

TEST_CASE("debug paths are cut at 1023 characters") {
    std::memset(dbg_path, 'p', 1020);
    dbg_path[1020] = '\0';
    CHECK(debug_path_of("name.ppm") == std::string(1020, 'p') + "/na");
    std::strcpy(dbg_path, "folder");
    CHECK(debug_path_of("name.ppm") == "folder/name.ppm");
    dbg_path[0] = '\0';
}
