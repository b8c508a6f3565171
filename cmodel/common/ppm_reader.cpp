#include <algorithm>
#include <bit>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <limits>

#include "cmodel/common/error.h"
#include "cmodel/common/ppm_stream.h"
#include "log/log.h"

namespace cfa {

namespace {

// Big-endian samples of `Bytes` bytes, as loops that the compiler can vectorise.
template <int Bytes> void unpack(const uint8_t *bytes, uint32_t *samples, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        uint32_t sum = 0;
        for (int b = 0; b < Bytes; ++b)
            sum = sum << 8 | bytes[i * Bytes + b];
        samples[i] = sum;
    }
}

void unpack_samples(int sample_bytes, const uint8_t *bytes, uint32_t *samples, size_t count) {
    switch (sample_bytes) {
    case 1:
        return unpack<1>(bytes, samples, count);
    case 2:
        return unpack<2>(bytes, samples, count);
    case 3:
        return unpack<3>(bytes, samples, count);
    default:
        return unpack<4>(bytes, samples, count);
    }
}

// The sample of which only the first `present` bytes are in the file; each of the others counts as -1.
uint32_t incomplete_sample(const uint8_t *bytes, int present, int sample_bytes) {
    uint32_t sum = 0;
    for (int b = 0; b < sample_bytes; ++b)
        sum = (sum << 8) + (b < present ? bytes[b] : ~0u);
    return sum;
}

void skip_line(std::FILE *stream) {
    int c;
    do
        c = std::getc(stream);
    while (c != '\n' && c != EOF);
}

} // namespace

uint32_t ppm_bit_depth(int32_t max_value) {
    return static_cast<uint32_t>(std::bit_width(static_cast<uint32_t>(max_value) - 1));
}

PpmReader::PpmReader(const char *path)
    : path_(path), block_(std::make_unique_for_overwrite<uint8_t[]>(PPM_BLOCK_BYTES)),
      stream_(open_image(path, "rb")) {
    read_magic();
    skip_comments();
    if (!read_int(header_.width) || !read_int(header_.height))
        fail("Invalid image size");
    if (!read_int(header_.max_value) || header_.max_value < 1)
        fail("Invalid max_rgb");
    skip_line(stream_.get());
    header_.bit_depth = ppm_bit_depth(header_.max_value);
    sample_bytes_ = header_.bit_depth == 0 ? 0 : ppm_sample_bytes(header_.bit_depth);
    log_log(LOG_DEBUG, "common", __LINE__, "Color depth (%d) max_rgb:(%d)\n",
            static_cast<int>(header_.bit_depth), header_.max_value);
}

void PpmReader::fail(const char *what) {
    throw Error(Error::Kind::file, std::string(what) + " (error loading '" + path_ + "')");
}

void PpmReader::read_magic() {
    char line[16];
    errno = ENODATA; // what an empty file has
    if (std::fgets(line, sizeof line, stream_.get()) == nullptr)
        throw Error(Error::Kind::file, path_ + ": " + std::strerror(errno));
    if (line[0] != 'P' || line[1] != '5')
        fail("Invalid image format (must be 'P5')");
}

void PpmReader::skip_comments() {
    int c = std::getc(stream_.get());
    while (c == '#') {
        skip_line(stream_.get());
        c = std::getc(stream_.get());
    }
    std::ungetc(c, stream_.get());
}

// White space, a sign, decimal digits. False when there is no digit or the number does not fit.
bool PpmReader::read_int(int32_t &number) {
    int c = std::getc(stream_.get());
    while (std::isspace(c))
        c = std::getc(stream_.get());
    const bool negative = c == '-';
    if (c == '-' || c == '+')
        c = std::getc(stream_.get());
    if (!std::isdigit(c))
        return false;
    constexpr int64_t LIMIT = int64_t{1} << 32; // beyond any int; the rest of the digits does not matter
    int64_t sum = 0;
    for (; std::isdigit(c); c = std::getc(stream_.get()))
        sum = std::min(LIMIT, sum * 10 + (c - '0'));
    std::ungetc(c, stream_.get());
    sum = negative ? -sum : sum;
    if (sum < std::numeric_limits<int32_t>::min() || sum > std::numeric_limits<int32_t>::max())
        return false;
    number = static_cast<int32_t>(sum);
    return true;
}

void PpmReader::read(uint32_t *samples, size_t count) {
    if (sample_bytes_ == 0) {
        std::fill_n(samples, count, 0u);
        return;
    }
    const size_t size = static_cast<size_t>(sample_bytes_);
    while (count > 0) {
        const size_t wanted = std::min(count, PPM_BLOCK_BYTES / size);
        const size_t present = read_bytes(block_.get(), wanted * size);
        convert(block_.get(), present, samples, wanted);
        samples += wanted;
        count -= wanted;
    }
}

size_t PpmReader::read_bytes(uint8_t *bytes, size_t size) {
    return std::fread(bytes, 1, size, stream_.get());
}

void PpmReader::convert(const uint8_t *bytes, size_t present, uint32_t *samples, size_t count) {
    const size_t size = static_cast<size_t>(sample_bytes_);
    const size_t complete = present / size;
    unpack_samples(sample_bytes_, bytes, samples, complete);
    if (complete < count) {
        samples[complete] =
            incomplete_sample(bytes + complete * size, static_cast<int>(present % size), sample_bytes_);
        std::fill(samples + complete + 1, samples + count, incomplete_sample(nullptr, 0, sample_bytes_));
        missing_ += count - complete;
    }
}

std::string PpmReader::close() {
    stream_.reset();
    if (missing_ == 0)
        return "";
    return "Unexpected end of file in '" + path_ + "': " + std::to_string(missing_) + " samples are missing";
}

} // namespace cfa
