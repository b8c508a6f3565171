// Reader of P5, P6 and PNG pictures.
#include "tools/cfatool/pictures/picture_reader.h"

#include <algorithm>
#include <bit>
#include <fmt/core.h>
#include <limits>
#include <sys/file.h>
#include <sys/stat.h>

#include "cmodel/common/ppm_stream.h"
#include "tools/cfatool/base/text.h"
#include "tools/cfatool/base/trouble.h"
#include "tools/cfatool/pictures/png_file.h"

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

/// Samples of `Bytes` bytes, high byte first, as a loop that the compiler can vectorise.
template <int Bytes> void unpack(const uint8_t *from, std::vector<uint32_t> &to) {
    const size_t count = to.size();
    for (size_t i = 0; i < count; ++i) {
        uint32_t sample = 0;
        for (int b = 0; b < Bytes; ++b)
            sample = sample << 8 | from[i * Bytes + static_cast<size_t>(b)];
        to[i] = sample;
    }
}

} // namespace

PictureReader::PictureReader(const std::string &path) : path_(path), stream_(open_to_read(path)) {
    flock(fileno(stream_.get()), LOCK_SH); // where locks are not supported, reading goes on without
    read_header();
    const auto need = static_cast<int64_t>(info_.row_samples()) * info_.height * info_.bytes;
    const int64_t left = bytes_left();
    if (!info_.png && left >= 0 && left < need)
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
    if (p == 0x89 && kind == 'P' && behind == 'N')
        return read_png_samples();
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

int64_t PictureReader::begin() const {
    return info_.png || bytes_left() < 0 ? -1 : std::ftell(stream_.get());
}

void PictureReader::read_png_samples() {
    RgbPicture picture = read_png(path_, PngColours::any);
    info_ = {picture.width, picture.height, picture.channels, picture.max, picture.max > 255 ? 2 : 1, true};
    png_ = std::move(picture.samples);
    std::fseek(stream_.get(), 0, SEEK_END); // what follows the last sample is the decoder's matter
}

void PictureReader::read_bytes(uint8_t *to, size_t size) {
    if (info_.png) {
        std::copy_n(png_.data() + bytes_read_, size, to);
    } else if (std::fread(to, 1, size, stream_.get()) != size) {
        if (std::ferror(stream_.get()))
            throw errno_trouble(path_);
        throw file_trouble(path_, fmt::format("cut short in row {}", bytes_read_ / buffer_.size()));
    }
    bytes_read_ += size;
}

void PictureReader::read_row(std::vector<uint32_t> &row) {
    read_bytes(buffer_.data(), buffer_.size());
    row.resize(info_.row_samples());
    switch (info_.bytes) {
    case 1:
        return unpack<1>(buffer_.data(), row);
    case 2:
        return unpack<2>(buffer_.data(), row);
    case 3:
        return unpack<3>(buffer_.data(), row);
    default:
        return unpack<4>(buffer_.data(), row);
    }
}

void PictureReader::finish() {
    if (std::fgetc(stream_.get()) != EOF)
        throw file_trouble(path_, "bytes follow the last sample");
}

} // namespace cfatool
