#include <doctest/doctest.h>

#include <algorithm>

#include "cmodel/common/ppm.h"
#include "cmodel/common/ppm_stream.h"
#include "tests/support/hooks.h"
#include "tests/support/planes.h"
#include "tests/support/support.h"

using namespace cfa;

using namespace std::string_literals;

TEST_CASE("P5: channel 0, its low bytes; P6: three channels, or channel 0 three times; four header lines") {
    const TempFolder folder;
    const std::string path = folder / "out.ppm", comment = "\n# Created by ZEMBRO DPU Model\n";
    const Plane deep(1, 1, 1, {-0x1234568}), grey(2, 1, 1, {1024, 70000}),
        colour(1, 2, 3, {1, 2, 3, 4, 5, 6});
    struct Case {
        int (*write)(const char *, const FRAME *);
        const Plane &plane;
        uint32_t depth;
        std::string want;
    };
    for (const Case &c :
         {Case{CM_WritePPM5, grey, 12, "P5" + comment + "2 1\n4095\n\4\0\x11\x70"s},
          Case{CM_WritePPM5, colour, 8, "P5" + comment + "1 2\n255\n\1\4"},
          Case{CM_WritePPM, colour, 8, "P6" + comment + "1 2\n255\n\1\2\3\4\5\6"},
          Case{CM_WritePPM, grey, 7, "P6" + comment + "2 1\n127\n\0\0\0\x70\x70\x70"s},
          Case{CM_WritePPM5, deep, 24, "P5" + comment + "1 1\n16777215\n\xDC\xBA\x98"},
          Case{CM_WritePPM5, deep, 32, "P5" + comment + "1 1\n4294967295\n\xFE\xDC\xBA\x98"}}) {
        static_cast<FRAME *>(c.plane)->bit_depth = c.depth;
        CHECK(c.write(path.c_str(), c.plane) == 0);
        CHECK(read_file(path) == c.want);
    }
}

TEST_CASE("maximum values at every depth; 32 bits differ between P5 and P6") {
    for (const char kind : {'5', '6'})
        for (uint32_t depth = 0; depth <= 32; ++depth) {
            const uint64_t max = depth == 32 && kind == '6' ? 0 : (uint64_t{1} << depth) - 1;
            CHECK(ppm_header_text(kind, 1, 1, depth).ends_with("1 1\n" + std::to_string(max) + "\n"));
        }
}

TEST_CASE("what is written is read again, at every sample size and across blocks, none of which is overrun") {
    const Hooked hooked;
    const TempFolder folder;
    const std::string path = folder / "picture.ppm";
    before_call = [](Call call, int, size_t &size) {
        CHECK((call != Call::write || size <= 256 * 1024));
        return 0;
    };
    for (const uint32_t depth :
         {2u, 8u, 9u, 12u, 16u, 17u, 24u, 25u, 31u}) { // 31 is the deepest that is read
        INFO("depth ", depth);
        const Plane frame = Noise(depth).plane(1031, 257, 1, 0, static_cast<int32_t>((1u << depth) - 1));
        static_cast<FRAME *>(frame)->bit_depth = depth;
        CM_WritePPM5(path.c_str(), frame);
        const FramePtr again(CM_ReadPPM5(path.c_str(), 2));
        CHECK(again->bit_depth == depth);
        CHECK(std::equal(again->data, again->data + 1031 * 257, static_cast<FRAME *>(frame)->data));
    }
}
