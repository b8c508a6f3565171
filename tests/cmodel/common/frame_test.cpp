#include "cmodel/common/frame.h"

#include <doctest/doctest.h>

#include <algorithm>

#include "tests/support/hooks.h"

using namespace cfa;

TEST_CASE("a new frame has its fields, zero samples and three spare zeros; deleting less than a frame is "
          "harmless") {
    delete[] new uint32_t[63]{1, 2, 3}; // what is given again is not zero
    const FramePtr frame(CM_NewFRAME(2, 0, 5, 4, 3, 12));
    const uint32_t fields[] = {2, 0, 5, 4, 3, 12};
    CHECK(std::equal(fields, fields + 6, &frame->type));
    CHECK(std::count(frame->data, frame->data + 5 * 4 * 3 + 3, 0u) == 63);
    sample(frame.get(), 2, 3, 1) = ~0u;
    CHECK(frame->data[3 * (5 * 2 + 3) + 1] == ~0u);
    CHECK(value(frame.get(), 2, 3, 1) == -1);

    FRAME without_buffer = {}; // an automatic object: freeing it would crash
    for (FRAME *less : {static_cast<FRAME *>(nullptr), &without_buffer, CM_NewFRAME(2, 2, 0, 0, 1, 12)})
        CHECK(CM_DelFRAME(less) == 0);
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
             Case{0xFFFFFFFF, 0, 1, false}, Case{0, 0x80000000, 1, false}, // -1, although there is no pixel
             Case{26755, 26755, 3, false}, Case{26754, 26755, 3, true},    // 2147490075 and 2147409810
             Case{0x7FFFFFFF, 0x7FFFFFFF, 0, true}                         // no channel, no sample
         })
        CHECK(frame_size_ok(c.width, c.height, c.channels) == c.ok);
}
