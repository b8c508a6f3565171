#include <doctest/doctest.h>

#include <random>
#include <string>

#include "cmodel/common/ppm.h"
#include "cmodel/common/ppm_stream.h"
#include "tests/support/support.h"

using namespace cfa;

using namespace std::string_literals;

namespace {

const std::string comment = "# Created by ZEMBRO DPU Model\n";

std::string written(const FRAME *frame, int (*write)(const char *, const FRAME *)) {
    const TempFolder folder;
    const std::string path = folder / "out.ppm";
    CHECK(write(path.c_str(), frame) == 0);
    return read_file(path);
}

std::string max_value_line(char kind, uint32_t bit_depth) {
    const std::string text = ppm_header_text(kind, 1, 1, bit_depth);
    return text.substr(text.rfind('\n', text.size() - 2) + 1);
}

} // namespace

TEST_CASE(
    "P5: channel 0, truncated to the bytes of the depth; P6: three channels, or channel 0 three times") {
    const FramePtr frame(CM_NewFRAME(2, 2, 2, 1, 1, 12));
    frame->data[0] = 1024;
    frame->data[1] = 70000; // 0x11170
    CHECK(written(frame.get(), CM_WritePPM5) == "P5\n" + comment + "2 1\n4095\n" + "\x04\x00\x11\x70"s);

    const FramePtr colour(CM_NewFRAME(2, 0, 1, 2, 3, 8));
    for (uint32_t i = 0; i < 6; i++)
        colour->data[i] = 'a' + i;
    CHECK(written(colour.get(), CM_WritePPM5) == "P5\n" + comment + "1 2\n255\n" + "ad");
    CHECK(written(colour.get(), CM_WritePPM) == "P6\n" + comment + "1 2\n255\n" + "abcdef");

    const FramePtr grey(CM_NewFRAME(2, 2, 2, 1, 1, 7));
    grey->data[0] = 'x';
    grey->data[1] = 'y';
    CHECK(written(grey.get(), CM_WritePPM) == "P6\n" + comment + "2 1\n127\n" + "xxxyyy");
}

TEST_CASE("maximum values at every depth; 32 bits differ between P5 and P6") {
    for (uint32_t depth = 0; depth < 32; depth++) {
        const std::string want = std::to_string((uint64_t{1} << depth) - 1) + "\n";
        CHECK(max_value_line('5', depth) == want);
        CHECK(max_value_line('6', depth) == want);
    }
    CHECK(max_value_line('5', 32) == "4294967295\n");
    CHECK(max_value_line('6', 32) == "0\n");
}

TEST_CASE("what is written is read again, at every sample size and across blocks") {
    const TempFolder folder;
    const std::string path = folder / "picture.ppm";
    std::mt19937 random(3);
    // 31 bits is the deepest maximum value that the reader takes.
    for (uint32_t depth : {1u, 8u, 9u, 12u, 16u, 17u, 24u, 25u, 31u}) {
        INFO("depth ", depth);
        const FramePtr frame(CM_NewFRAME(2, 2, 1031, 257, 1, depth));
        for (uint32_t i = 0; i < 1031 * 257; i++)
            frame->data[i] = static_cast<uint32_t>(random()) >> (32 - depth);
        CM_WritePPM5(path.c_str(), frame.get());
        const FramePtr again(CM_ReadPPM5(path.c_str(), 2));
        // 2^1 - 1 is the one maximum value whose depth the reader takes one lower: no sample is read then.
        CHECK(again->bit_depth == (depth == 1 ? 0 : depth));
        uint32_t different = 0;
        for (uint32_t i = 0; i < 1031 * 257; i++)
            different += again->data[i] != (depth == 1 ? 0 : frame->data[i]);
        CHECK(different == 0);
    }
    // 32 bits can be written but not read: the four bytes themselves.
    const FramePtr deep(CM_NewFRAME(2, 2, 1, 1, 1, 32));
    deep->data[0] = 0xFEDCBA98;
    CHECK(written(deep.get(), CM_WritePPM5) == "P5\n" + comment + "1 1\n4294967295\n\xFE\xDC\xBA\x98");
}
