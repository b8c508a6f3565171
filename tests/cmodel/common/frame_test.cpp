#include "cmodel/common/frame.h"

#include <doctest/doctest.h>

using namespace cfa;

TEST_CASE("a new frame has its fields, zero samples and three spare zeros") {
    const FramePtr frame(CM_NewFRAME(2, 0, 5, 4, 3, 12));
    const bool fields = frame->type == 2 && frame->format == 0 && frame->width == 5 && frame->height == 4 &&
                        frame->channels == 3 && frame->bit_depth == 12;
    CHECK(fields);
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

TEST_CASE("sizes that a frame can have: no negative one, and no more than 2147483647 samples") {
    struct Case {
        uint32_t width, height, channels;
        bool ok;
    };
    for (const Case &c : {
             Case{0, 0, 1, true}, Case{0x7FFFFFFF, 1, 1, true},           // the limit itself
             Case{0x7FFFFFFF, 1, 3, false}, Case{65536, 32768, 1, false}, // 2^31
             Case{65536, 65536, 1, false},                                // 2^32: a 32-bit product would be 0
             Case{0x7FFFFFFF, 0x7FFFFFFF, 3, false},                      // beyond 2^63
             Case{0xFFFFFFFF, 1, 1, false},                               // -1
             Case{0xFFFFFFFF, 0, 1, false},                               // -1, although there is no pixel
             Case{0, 0x80000000, 1, false}, Case{26755, 26755, 3, false}, // 2147490075
             Case{26754, 26755, 3, true},                                 // 2147409810
             Case{0x7FFFFFFF, 0x7FFFFFFF, 0, true}                        // no channel, no sample
         }) {
        INFO(c.width, " x ", c.height, " x ", c.channels);
        CHECK(frame_size_ok(c.width, c.height, c.channels) == c.ok);
    }
}
