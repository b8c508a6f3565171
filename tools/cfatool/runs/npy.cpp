// The header of NumPy files: a magic word, a length, and a dictionary in Python's notation.
#include "tools/cfatool/runs/npy.h"

#include <algorithm>
#include <bit>
#include <fmt/core.h>
#include <regex>
#include <sys/stat.h>

#include "tools/cfatool/base/trouble.h"

namespace cfatool {
namespace {

static_assert(std::endian::native == std::endian::little, "samples are written as they stand in memory");

constexpr std::string_view MAGIC = "\x93NUMPY";
constexpr size_t PREFIX = 10;    // magic, version, length of the dictionary
constexpr size_t ALIGNMENT = 64; // of the first sample

/// The dictionary without its blanks: any number of them may stand between its words.
std::string read_dictionary(const std::string &path, std::FILE *stream) {
    uint8_t head[12] = {};
    bool good = std::fread(head, 1, PREFIX, stream) == PREFIX;
    if (good && !std::equal(MAGIC.begin(), MAGIC.end(), reinterpret_cast<const char *>(head)))
        throw file_trouble(path, "is no NumPy file");
    size_t length = head[8] | static_cast<size_t>(head[9]) << 8;
    if (good && head[6] >= 2) { // format 2 has four bytes for the length
        good = std::fread(head + PREFIX, 1, 2, stream) == 2;
        length |= static_cast<size_t>(head[10]) << 16 | static_cast<size_t>(head[11]) << 24;
    }
    std::string text(good ? std::min<size_t>(length, 1 << 16) : 0, ' ');
    if (!good || length != text.size() || std::fread(text.data(), 1, length, stream) != length)
        throw std::ferror(stream) != 0 ? errno_trouble(path)
                                       : file_trouble(path, "cut short in the NumPy header");
    std::erase_if(text, [](char c) { return c == ' ' || c == '\n'; });
    return text;
}

/// The part of the dictionary that the first group matches.
std::string entry(const std::string &path, const std::string &text, const char *expression) {
    std::smatch found;
    if (!std::regex_search(text, found, std::regex(expression)))
        throw file_trouble(path, "a NumPy array that is no plane of whole numbers: " + text.substr(0, 100));
    return found[1];
}

} // namespace

PlaneForm read_npy_header(const std::string &path, std::FILE *stream) {
    const std::string text = read_dictionary(path, stream);
    const std::string kind = entry(path, text, "'descr':'([<>|=]?[iub][1248])'");
    entry(path, text, "'fortran_order':(False)");
    const std::string shape = entry(path, text, "'shape':\\((\\d{1,9},\\d{1,9}(?:,[13])?),?\\)");
    PlaneForm form;
    form.channels = 1;
    std::sscanf(shape.c_str(), "%d,%d,%d", &form.height, &form.width, &form.channels);
    form.bytes = kind.back() - '0';
    form.big_endian = kind[0] == '>';
    form.is_signed = kind[kind.size() - 2] == 'i';
    form.begin = std::ftell(stream);

    struct stat status = {};
    if (static_cast<uint64_t>(form.width) * static_cast<uint64_t>(form.height) >
        static_cast<uint64_t>(INT32_MAX / form.channels))
        throw file_trouble(path, "more than 2147483647 samples");
    const int64_t need = static_cast<int64_t>(form.row_bytes()) * form.height;
    const int64_t left = fstat(fileno(stream), &status) == 0 ? status.st_size - form.begin : 0;
    if (left != need)
        throw file_trouble(path, fmt::format("{}: {} bytes of samples, {} expected",
                                             left < need ? "cut short" : "too long", left, need));
    return form;
}

NpyFile::NpyFile(const std::string &path, const PlaneForm &form) : file_(path), row_bytes_(form.row_bytes()) {
    std::string text = fmt::format("{{'descr': '<{}{}', 'fortran_order': False, 'shape': ({}, {}{}), }}",
                                   form.is_signed ? 'i' : 'u', form.bytes, form.height, form.width,
                                   form.channels > 1 ? fmt::format(", {}", form.channels) : "");
    const size_t used = (PREFIX + text.size() + 1) % ALIGNMENT;
    text += std::string((ALIGNMENT - used) % ALIGNMENT, ' ') + '\n';
    const char version_and_length[] = {1, 0, static_cast<char>(text.size() & 255),
                                       static_cast<char>(text.size() >> 8)};
    file_.write(MAGIC.data(), MAGIC.size());
    file_.write(version_and_length, sizeof version_and_length);
    file_.write(text);
}

} // namespace cfatool
