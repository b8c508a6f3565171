#include "tools/cfatool/pictures/memory_text.h"

#include <algorithm>
#include <bit>
#include <fmt/core.h>

#include "tools/cfatool/base/text.h"
#include "tools/cfatool/base/trouble.h"

namespace cfatool {
namespace {

class Parser {
  public:
    Parser(const std::string &path, const std::string &text, size_t count, uint32_t most)
        : path_(path), text_(text), most_(most), samples_(count), given_(count) {}

    std::vector<uint32_t> read() {
        while (skip_blanks(), at_ < text_.size()) {
            const bool address = text_[at_] == '@';
            at_ += address;
            const uint64_t number = read_number(address ? "an address" : "a number");
            if (address)
                next_ = number;
            else
                put(number);
        }
        const auto missing = std::find(given_.begin(), given_.end(), false);
        if (missing != given_.end())
            throw file_trouble(path_, fmt::format("{} of {} samples are not given, first at address {:x}",
                                                  std::count(missing, given_.end(), false), samples_.size(),
                                                  missing - given_.begin()));
        return samples_;
    }

  private:
    [[noreturn]] void fail(const std::string &reason) const {
        const auto line =
            std::count(text_.begin(), text_.begin() + static_cast<std::ptrdiff_t>(at_), '\n') + 1;
        throw file_trouble(path_, fmt::format("line {}: {}", line, reason));
    }

    void skip_blanks() {
        for (; at_ < text_.size(); ++at_) {
            const bool comment = text_.compare(at_, 2, "//") == 0, block = text_.compare(at_, 2, "/*") == 0;
            if (!comment && !block && !is_blank(text_[at_]))
                return;
            if (!comment && !block)
                continue;
            const size_t end = text_.find(comment ? "\n" : "*/", at_ + 2);
            if (block && end == std::string::npos)
                fail("a comment without end");
            at_ = std::min(end == std::string::npos ? text_.size() : end + block, text_.size());
        }
    }

    uint64_t read_number(const char *what) {
        uint64_t number = 0;
        const size_t begin = at_;
        for (; at_ < text_.size() && !is_blank(text_[at_]) && text_[at_] != '/'; ++at_) {
            const char c = text_[at_];
            const bool digit = c >= '0' && c <= '9', letter = (c | 32) >= 'a' && (c | 32) <= 'f';
            if (c == '_' && at_ > begin)
                continue;
            if ((c | 32) == 'x' || (c | 32) == 'z')
                fail("x and z are no samples");
            if (!digit && !letter)
                fail(fmt::format("'{}' in {}", c, what));
            number = number << 4 | static_cast<uint64_t>(digit ? c - '0' : (c | 32) - 'a' + 10);
            if (number > UINT32_MAX)
                fail("a number of more than 32 bits");
        }
        if (at_ == begin)
            fail(fmt::format("{} is missing", what));
        return number;
    }

    void put(uint64_t number) {
        if (next_ >= samples_.size())
            fail(fmt::format("address {:x} is behind the last of {} samples", next_, samples_.size()));
        if (number > most_)
            fail(fmt::format("{:x} does not fit the samples, whose largest is {:x}", number, most_));
        samples_[next_] = static_cast<uint32_t>(number);
        given_[next_++] = true;
    }

    const std::string &path_, &text_;
    uint32_t most_;
    size_t at_ = 0, next_ = 0;
    std::vector<uint32_t> samples_;
    std::vector<bool> given_;
};

} // namespace

int hex_digits(uint32_t sample) {
    return (static_cast<int>(std::bit_width(sample)) + 3) / 4;
}

uint64_t put_memory_text(PictureReader &reader, const Crop &crop,
                         const std::function<void(const std::string &)> &put) {
    const PictureInfo &info = reader.info();
    const int digits = hex_digits(info.max);
    uint64_t wide = 0;
    std::vector<uint32_t> row;
    for (int y = 0; y < info.height; ++y) {
        reader.read_row(row);
        if (y < crop.y || y >= crop.y + crop.height)
            continue;
        std::string text;
        const size_t begin = static_cast<size_t>(crop.x) * info.channels;
        for (size_t i = begin; i < begin + static_cast<size_t>(crop.width) * info.channels; ++i) {
            text += fmt::format("{:0{}x}\n", row[i], digits);
            wide += hex_digits(row[i]) > digits;
        }
        put(text);
    }
    reader.finish();
    return wide;
}

std::vector<uint32_t> read_memory_text(const std::string &path, const std::string &text, size_t count,
                                       uint32_t most) {
    return Parser(path, text, count, most).read();
}

} // namespace cfatool
