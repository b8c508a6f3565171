// Reading in place: one pread for the rows of a part.
#include "tools/cfatool/runs/plane_file.h"

#include <algorithm>
#include <cerrno>
#include <unistd.h>

#include "tools/cfatool/base/trouble.h"
#include "tools/cfatool/pictures/picture_reader.h"

namespace cfatool {
namespace {

bool is_npy(const std::string &path) {
    constexpr std::string_view END = ".npy"; // the name decides: a pipe cannot be opened twice
    return path.size() > END.size() && path.compare(path.size() - END.size(), END.size(), END) == 0;
}

PlaneForm form_of(const PictureInfo &info) {
    return {info.width, info.height, info.channels, info.bytes, true, false, info.max, 0, info.png};
}

/// Samples of `Bytes` bytes, as a loop that the compiler can vectorise.
template <int Bytes, bool BIG> void decode_as(const uint8_t *from, size_t count, bool sign, int32_t *to) {
    constexpr int LAST = Bytes - 1;
    constexpr int UNUSED = 32 - 8 * std::min(Bytes, 4);
    for (size_t i = 0; i < count; ++i) {
        uint32_t sample = 0;
        for (int b = 0; b < std::min(Bytes, 4); ++b)
            sample |= static_cast<uint32_t>(from[i * Bytes + static_cast<size_t>(BIG ? LAST - b : b)])
                      << (8 * b);
        to[i] = sign ? static_cast<int32_t>(sample << UNUSED) >> UNUSED : static_cast<int32_t>(sample);
    }
}

template <bool BIG> void decode_bytes(int bytes, const uint8_t *from, size_t count, bool sign, int32_t *to) {
    switch (bytes) {
    case 1:
        return decode_as<1, BIG>(from, count, sign, to);
    case 2:
        return decode_as<2, BIG>(from, count, sign, to);
    case 3:
        return decode_as<3, BIG>(from, count, sign, to);
    case 4:
        return decode_as<4, BIG>(from, count, sign, to);
    default:
        return decode_as<8, BIG>(from, count, sign, to);
    }
}

} // namespace

PlaneFile::PlaneFile(const std::string &path) : path_(path), stream_(nullptr, &std::fclose) {
    if (is_npy(path)) {
        stream_ = open_to_read(path);
        form_ = read_npy_header(path, stream_.get());
        return;
    }
    PictureReader reader(path);
    form_ = form_of(reader.info());
    const size_t size = form_.width > 0 ? form_.row_bytes() * static_cast<size_t>(form_.height) : 0;
    if ((form_.begin = reader.begin()) >= 0) {
        stream_ = reader.release();
        if (lseek(fileno(stream_.get()), 0, SEEK_END) != form_.begin + static_cast<int64_t>(size))
            throw file_trouble(path, "bytes follow the last sample");
        return;
    }
    memory_.resize(size);
    reader.read_bytes(memory_.data(), size);
    reader.finish();
}

void PlaneFile::read_bytes(int y, int rows, uint8_t *to) const {
    size_t left = form_.row_bytes() * static_cast<size_t>(rows);
    const size_t at = form_.row_bytes() * static_cast<size_t>(y);
    if (!stream_) {
        std::copy_n(memory_.data() + at, left, to);
        return;
    }
    for (off_t from = form_.begin + static_cast<off_t>(at); left > 0;) {
        const ssize_t count = pread(fileno(stream_.get()), to, left, from);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            throw count < 0 ? errno_trouble(path_) : file_trouble(path_, "has become shorter");
        to += count;
        from += count;
        left -= static_cast<size_t>(count);
    }
}

void PlaneFile::decode(const uint8_t *from, size_t count, int32_t *to) const {
    form_.big_endian ? decode_bytes<true>(form_.bytes, from, count, form_.is_signed, to)
                     : decode_bytes<false>(form_.bytes, from, count, form_.is_signed, to);
    if (form_.bytes < 8)
        return;
    for (size_t i = 0; i < count; ++i) { // the upper half: that of a number of 32 bits, signed or not
        int32_t upper = 0;
        decode_as<4, false>(from + 8 * i + (form_.big_endian ? 0 : 4), 1, false, &upper);
        if (upper != 0 && !(form_.is_signed && upper == -1 && to[i] < 0))
            throw file_trouble(path_, "holds numbers beyond 32 bits");
    }
}

std::vector<int32_t> PlaneFile::read(int x, int y, int width, int height) const {
    const auto channels = static_cast<size_t>(form_.channels);
    const size_t part = static_cast<size_t>(width) * channels;
    std::vector<int32_t> samples(part * static_cast<size_t>(height));
    std::vector<uint8_t> row(samples.empty() ? 0 : form_.row_bytes());
    const size_t skipped = static_cast<size_t>(x) * channels * static_cast<size_t>(form_.bytes);
    for (int i = 0; i < height && !samples.empty(); ++i) {
        read_bytes(y + i, 1, row.data());
        decode(row.data() + skipped, part, samples.data() + part * static_cast<size_t>(i));
    }
    return samples;
}

} // namespace cfatool
