#include "cmodel/common/register_block.h"

#include <doctest/doctest.h>

using namespace cfa;

TEST_CASE("values are cut to their width and read back with their sign") {
    CHECK(register_truncate(256, 8, false) == 0);
    CHECK(register_truncate(5000, 12, false) == 904);
    CHECK(register_truncate(-1, 12, false) == 4095);
    CHECK(register_truncate(-1, 13, true) == -1);
    CHECK(register_truncate(255156, 18, true) == -6988);
    CHECK(register_truncate(0x1FFFFFFFF, 31, false) == 0x7FFFFFFF);
    CHECK(register_truncate(0x40000000, 31, true) == -0x40000000);
    CHECK(register_min(18, true) == -131072);
    CHECK(register_max(18, true) == 131071);
    CHECK(register_min(1, false) == 0);
    CHECK(register_max(16, false) == 65535);
}

TEST_CASE("a register is signed in formulas, whatever its own signedness") {
    Register<12, unsigned> slope{};
    slope = 904;
    CHECK(((-64 * slope) >> 5) == -1808);
}
