// Strict decimal numbers from text.
#include "tools/cfatool/base/numbers.h"

#include <algorithm>
#include <charconv>
#include <fmt/core.h>
#include <limits>

#include "tools/cfatool/base/trouble.h"

namespace cfatool {
namespace {

constexpr int64_t NO_DIGITS = -1;
constexpr int64_t TOO_LARGE = -2;

/// The value of a text of digits, or one of the above.
int64_t digits_value(const std::string &text) {
    int64_t value = 0;
    const char *const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error == std::errc::invalid_argument || stop != end || text[0] == '-')
        return NO_DIGITS;
    return error == std::errc() ? value : TOO_LARGE;
}

/// "2.5" for 2500.
std::string thousandths_text(int64_t value) {
    std::string text = fmt::format("{}.{:03}", value / 1000, value % 1000);
    text.erase(text.find_last_not_of('0') + 1);
    return text.back() == '.' ? text.substr(0, text.size() - 1) : text;
}

} // namespace

int64_t parse_decimal(const std::string &text, const std::string &what, int64_t min, int64_t max) {
    const int64_t value = digits_value(text);
    if (value == NO_DIGITS)
        throw UsageTrouble(fmt::format("{}: '{}' is not a plain decimal number", what, text));
    if (value < min || value > max)
        throw UsageTrouble(fmt::format("{}: {} is outside {} to {}", what, text, min, max));
    return value;
}

int64_t parse_thousandths(const std::string &text, const std::string &what, int64_t min, int64_t max) {
    const size_t point = std::min(text.find('.'), text.size());
    const std::string whole = text.substr(0, point);
    std::string decimals = point < text.size() ? text.substr(point + 1) : "0";
    if (digits_value(whole) == NO_DIGITS || digits_value(decimals) == NO_DIGITS || decimals.size() > 3)
        throw UsageTrouble(
            fmt::format("{}: '{}' is not a decimal number with at most three decimals", what, text));
    decimals.resize(3, '0');
    const int64_t value = digits_value(whole + decimals);
    if (value < min || value > max)
        throw UsageTrouble(fmt::format("{}: {} is outside {} to {}", what, text, thousandths_text(min),
                                       thousandths_text(max)));
    return value;
}

std::vector<int64_t> parse_list(const std::string &text, const std::string &what, char separator,
                                size_t count, int64_t min, int64_t max) {
    std::vector<int64_t> values;
    size_t begin = 0;
    while (true) {
        const size_t end = std::min(text.find(separator, begin), text.size());
        values.push_back(parse_decimal(text.substr(begin, end - begin), what, min, max));
        if (end == text.size())
            break;
        begin = end + 1;
    }
    if (values.size() != count)
        throw UsageTrouble(
            fmt::format("{}: '{}' holds {} numbers, not {}", what, text, values.size(), count));
    return values;
}

Size parse_size(const std::string &text, const std::string &what) {
    if (std::count(text.begin(), text.end(), 'x') != 1 || text.front() == 'x' || text.back() == 'x')
        throw UsageTrouble(what + ": '" + text + "' is not of the form WIDTHxHEIGHT");
    const auto size = parse_list(text, what, 'x', 2, 1, 65535);
    if (size[0] * size[1] > std::numeric_limits<int32_t>::max())
        throw UsageTrouble(what + ": " + text + " is more than 2147483647 pixels");
    return {static_cast<int>(size[0]), static_cast<int>(size[1])};
}

Crop parse_crop(const std::string &text, const std::string &what) {
    const auto c = parse_list(text, what, ',', 4, 0, std::numeric_limits<int32_t>::max());
    if (c[2] < 1 || c[3] < 1)
        throw UsageTrouble(what + ": '" + text + "' holds no pixel");
    return {static_cast<int>(c[0]), static_cast<int>(c[1]), static_cast<int>(c[2]), static_cast<int>(c[3])};
}

} // namespace cfatool
