#include "tools/cfatool/base/numbers.h"

#include <doctest/doctest.h>

#include "tools/cfatool/base/suggestion.h"
#include "tools/cfatool/base/trouble.h"

using namespace cfatool;

TEST_CASE("numbers are plain decimals within their range") {
    CHECK(parse_decimal("08", "--n", 0, 15) == 8);
    CHECK(parse_decimal("9223372036854775807", "--n", 0, INT64_MAX) == INT64_MAX);
    for (const char *bad : {"", "0x10", "-1", "+1", " 1", "1 ", "1.0", "1e3", "ten"})
        CHECK_THROWS_WITH_AS(parse_decimal(bad, "--n", 0, 99),
                             (std::string("--n: '") + bad + "' is not a plain decimal number").c_str(),
                             UsageTrouble);
    CHECK_THROWS_WITH_AS(parse_decimal("16", "--n", 0, 15), "--n: 16 is outside 0 to 15", UsageTrouble);
    CHECK_THROWS_AS(parse_decimal("18446744073709551617", "--n", 0, 15), UsageTrouble); // 1 after wrapping
}

TEST_CASE("numbers with decimals are exact thousandths") {
    CHECK(parse_thousandths("2.5", "--n", 0, 9000) == 2500);
    CHECK(parse_thousandths("0.001", "--n", 0, 9000) == 1);
    CHECK(parse_thousandths("9", "--n", 0, 9000) == 9000);
    for (const char *bad : {".5", "5.", "1.2345", "1,5", "9.001", "-1"})
        CHECK_THROWS_AS(parse_thousandths(bad, "--n", 0, 9000), UsageTrouble);
}

TEST_CASE("sizes and rectangles") {
    const auto size = parse_size("640x480", "--size");
    CHECK((size.width == 640 && size.height == 480));
    for (const char *bad :
         {"", "640", "640x", "x480", "640x480x3", "0x480", "65536x1", "65535x65535", "640X480"})
        CHECK_THROWS_AS(parse_size(bad, "--size"), UsageTrouble);
    CHECK(parse_crop("1,2,3,4", "--crop").height == 4);
    for (const char *bad : {"1,2,3", "1,2,3,4,5", "1,2,0,4", "1,2,3,", "a,b,c,d"})
        CHECK_THROWS_AS(parse_crop(bad, "--crop"), UsageTrouble);
}

TEST_CASE("the nearest name is found, a far one is not offered") {
    const std::vector<std::string> names = {"chart", "mosaic", "preview"};
    CHECK(nearest("chrat", names) == "chart");
    CHECK(nearest("previw", names) == "preview");
    CHECK(nearest("xyzzy", names).empty());
}
