// Strict decimal numbers from text.
#include "tools/cfatool/base/numbers.h"

#include <algorithm>
#include <limits>

#include "tools/cfatool/base/trouble.h"

namespace cfatool {
namespace {

bool all_digits(const std::string &text) {
    return !text.empty() &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

/// The value of a text of digits; anything above the int64 range gives its maximum.
int64_t digits_value(const std::string &digits) {
    constexpr int64_t MAX = std::numeric_limits<int64_t>::max();
    int64_t value = 0;
    for (const char c : digits) {
        const int digit = c - '0';
        if (value > (MAX - digit) / 10)
            return MAX;
        value = value * 10 + digit;
    }
    return value;
}

std::string thousandths_text(int64_t value) {
    std::string text = std::to_string(value / 1000);
    std::string decimals = std::to_string(1000 + value % 1000).substr(1);
    while (!decimals.empty() && decimals.back() == '0')
        decimals.pop_back();
    return decimals.empty() ? text : text + "." + decimals;
}

} // namespace

int64_t parse_decimal(const std::string &text, const std::string &what, int64_t min, int64_t max) {
    if (!all_digits(text))
        throw UsageTrouble(what + ": '" + text + "' is not a plain decimal number");
    const int64_t value = digits_value(text);
    if (value < min || value > max)
        throw UsageTrouble(what + ": " + text + " is outside " + std::to_string(min) + " to " +
                           std::to_string(max));
    return value;
}

int64_t parse_thousandths(const std::string &text, const std::string &what, int64_t min, int64_t max) {
    const size_t point = std::min(text.find('.'), text.size());
    const std::string whole = text.substr(0, point);
    std::string decimals = point < text.size() ? text.substr(point + 1) : "0";
    if (!all_digits(whole) || !all_digits(decimals) || decimals.size() > 3)
        throw UsageTrouble(what + ": '" + text + "' is not a decimal number with at most three decimals");
    decimals.resize(3, '0');
    const int64_t value = digits_value(whole + decimals);
    if (value < min || value > max)
        throw UsageTrouble(what + ": " + text + " is outside " + thousandths_text(min) + " to " +
                           thousandths_text(max));
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
        throw UsageTrouble(what + ": '" + text + "' holds " + std::to_string(values.size()) +
                           " numbers, not " + std::to_string(count));
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
