#include "cmodel/common/frame.h"

#include <doctest/doctest.h>

#include "tests/support/support.h"

TEST_CASE("a new frame has its fields, zero samples and three spare zeros") {
    const FramePtr frame(CM_NewFRAME(2, 0, 5, 4, 3, 12));
    CHECK(frame->type == 2);
    CHECK(frame->format == 0);
    CHECK(frame->width == 5);
    CHECK(frame->height == 4);
    CHECK(frame->channels == 3);
    CHECK(frame->bit_depth == 12);
    uint32_t sum = 0;
    for (int i = 0; i < 5 * 4 * 3 + 3; i++)
        sum |= frame->data[i];
    CHECK(sum == 0);

    sample(frame.get(), 2, 3, 1) = ~0u;
    CHECK(frame->data[3 * (5 * 2 + 3) + 1] == ~0u);
    CHECK(value(frame.get(), 2, 3, 1) == -1);
}

TEST_CASE("deleting nothing, and a frame without a buffer, is harmless") {
    CHECK(CM_DelFRAME(nullptr) == 0);
    FRAME without_buffer = {};
    CHECK(CM_DelFRAME(&without_buffer) == 0); // an automatic object: freeing it would crash
    CHECK(CM_DelFRAME(CM_NewFRAME(2, 2, 0, 0, 1, 12)) == 0);
}

TEST_CASE("sizes that no frame can have end the process") {
    struct Case {
        uint32_t width, height, channels;
        bool ok;
    };
    const Case cases[] = {
        {0, 0, 1, true},
        {0x7FFFFFFF, 1, 1, true},           // 2147483647 samples: the limit itself
        {0x7FFFFFFF, 1, 3, false},          //
        {65536, 32768, 1, false},           // 2^31
        {65536, 65536, 1, false},           // 2^32: a 32-bit product would be 0
        {0x7FFFFFFF, 0x7FFFFFFF, 3, false}, // beyond 2^63
        {0xFFFFFFFF, 1, 1, false},          // -1
        {0xFFFFFFFF, 0, 1, false},          // -1, although there is no pixel
        {0, 0x80000000, 1, false},          //
        {26755, 26755, 3, false},           // 2147490075
        {26754, 26755, 3, true},            // 2147409810
        {0x7FFFFFFF, 0x7FFFFFFF, 0, true},  // no channel, no sample
    };
    for (const Case &c : cases) {
        INFO(c.width, " x ", c.height, " x ", c.channels);
        CHECK(CM_FrameSizeOk(c.width, c.height, c.channels) == c.ok);
        if (!c.ok) {
            const Outcome outcome = run_child([&] { CM_NewFRAME(2, 2, c.width, c.height, c.channels, 12); });
            CHECK(outcome.status == 1);
            CHECK(outcome.err == "Unable to allocate memory\n");
        }
    }
}
