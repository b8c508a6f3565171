// Reader of P5 and P6 pictures.
#include "tools/cfatool/pictures/picture_reader.h"

#include <bit>
#include <fmt/core.h>
#include <limits>
#include <sys/file.h>
#include <sys/stat.h>

#include "cmodel/common/ppm_stream.h"
#include "tools/cfatool/base/text.h"
#include "tools/cfatool/base/trouble.h"

namespace cfatool {
namespace {

bool is_digit(int c) {
    return c >= '0' && c <= '9';
}

/// The next character that is neither white space nor part of a comment.
int next_character(std::FILE *stream) {
    int c = std::fgetc(stream);
    while (is_blank(c) || c == '#') {
        if (c == '#')
            while (c != '\n' && c != EOF)
                c = std::fgetc(stream);
        else
            c = std::fgetc(stream);
    }
    return c;
}

/// REQUIRES samples of `bytes` bytes, high byte first.
void unpack(const std::vector<uint8_t> &from, int bytes, std::vector<uint32_t> &to) {
    const uint8_t *p = from.data();
    for (uint32_t &sample : to) {
        sample = 0;
        for (int i = 0; i < bytes; ++i)
            sample = sample << 8 | *p++;
    }
}

} // namespace

PictureReader::PictureReader(const std::string &path) : path_(path), stream_(open_to_read(path)) {
    flock(fileno(stream_.get()), LOCK_SH); // where locks are not supported, reading goes on without
    read_header();
    const auto need = static_cast<int64_t>(info_.row_samples()) * info_.height * info_.bytes;
    const int64_t left = bytes_left();
    if (left >= 0 && left < need)
        throw file_trouble(path, fmt::format("cut short: {} bytes of samples, {} expected", left, need));
    if (info_.height > 0) // the width of a picture without rows may be anything
        buffer_.resize(info_.row_samples() * info_.bytes);
}

/// Bytes from here to the end of a regular file, -1 for any other.
int64_t PictureReader::bytes_left() const {
    struct stat status = {};
    if (fstat(fileno(stream_.get()), &status) != 0 || !S_ISREG(status.st_mode))
        return -1;
    return static_cast<int64_t>(status.st_size) - std::ftell(stream_.get());
}

uint32_t PictureReader::header_number(const char *what) {
    uint64_t value = 0;
    int c = next_character(stream_.get());
    if (!is_digit(c))
        throw file_trouble(path_, fmt::format("no {} in the header", what));
    for (; is_digit(c); c = std::fgetc(stream_.get())) {
        value = value * 10 + (c - '0');
        if (value > std::numeric_limits<uint32_t>::max())
            throw file_trouble(path_, fmt::format("{} in the header is too large", what));
    }
    std::ungetc(c, stream_.get());
    return static_cast<uint32_t>(value);
}

void PictureReader::read_header() {
    const int p = std::fgetc(stream_.get());
    if (p == EOF && std::ferror(stream_.get()))
        throw errno_trouble(path_);
    const int kind = std::fgetc(stream_.get());
    const int behind = std::fgetc(stream_.get());
    if (p != 'P' || (kind != '5' && kind != '6') || !(is_blank(behind) || behind == '#'))
        throw file_trouble(path_, "not a P5 or P6 picture");
    std::ungetc(behind, stream_.get());
    info_.channels = kind == '5' ? 1 : 3;
    const uint64_t width = header_number("width");
    const uint64_t height = header_number("height");
    constexpr uint64_t LIMIT = std::numeric_limits<int32_t>::max();
    if (width > LIMIT || height > LIMIT || width * height > LIMIT / info_.channels)
        throw file_trouble(path_, "more than 2147483647 samples");
    info_.width = static_cast<int>(width);
    info_.height = static_cast<int>(height);
    const uint32_t max = header_number("maximum value");
    const int end = std::fgetc(stream_.get());
    if (!is_blank(end))
        throw file_trouble(path_, "no white space behind the maximum value");
    if (end == '\r') {
        const int next = std::fgetc(stream_.get());
        if (next != '\n')
            std::ungetc(next, stream_.get());
    }
    decide_bytes(max);
}

/// A maximum of 0 stands for 32 bits in the model's P6 pictures and for a depth of 0 (one zero byte a sample)
/// in all of them: the length of the file tells which.
void PictureReader::decide_bytes(uint32_t max) {
    const int64_t samples = static_cast<int64_t>(info_.row_samples()) * info_.height;
    if (max == 0 && info_.channels == 3 && bytes_left() == samples * 4)
        max = std::numeric_limits<uint32_t>::max();
    else if (max == 0 && bytes_left() == samples)
        max = 1;
    if (max == 0)
        throw file_trouble(path_, "maximum value 0");
    info_.max = max;
    info_.bytes = cfa::ppm_sample_bytes(static_cast<uint32_t>(std::bit_width(max)));
}

void PictureReader::read_row(std::vector<uint32_t> &row) {
    if (std::fread(buffer_.data(), 1, buffer_.size(), stream_.get()) != buffer_.size()) {
        if (std::ferror(stream_.get()))
            throw errno_trouble(path_);
        throw file_trouble(path_, fmt::format("cut short in row {}", rows_read_));
    }
    ++rows_read_;
    row.resize(info_.row_samples());
    unpack(buffer_, info_.bytes, row);
}

void PictureReader::finish() {
    if (std::fgetc(stream_.get()) != EOF)
        throw file_trouble(path_, "bytes follow the last sample");
}

} // namespace cfatool
