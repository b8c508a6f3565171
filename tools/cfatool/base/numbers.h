// Numbers as the command line takes them: plain decimals, range-checked. 0x10 is refused, 08 is 8.
// `what` names the option in the UsageTrouble that each throws.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace cfatool {

/// A whole number of digits only, min..max.
int64_t parse_decimal(const std::string &text, const std::string &what, int64_t min, int64_t max);

/// A number with up to three decimals, as thousandths: "2.5" gives 2500. max is in thousandths too.
int64_t parse_thousandths(const std::string &text, const std::string &what, int64_t min, int64_t max);

/// Exactly `count` whole numbers set apart by `separator`: "640x480", "10,20,64,48".
std::vector<int64_t> parse_list(const std::string &text, const std::string &what, char separator,
                                size_t count, int64_t min, int64_t max);

/// A width and height of 1 to 65535 and at most 2147483647 pixels, "WxH".
struct Size {
    int width = 0;
    int height = 0;
};
Size parse_size(const std::string &text, const std::string &what);

/// A rectangle "X,Y,W,H" with W and H at least 1; whether it lies in a picture is the caller's check.
struct Crop {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};
Crop parse_crop(const std::string &text, const std::string &what);

} // namespace cfatool
