#include "tools/cfatool/regress/sums.h"

#include <bit>
#include <charconv>
#include <fmt/core.h>
#include <fstream>
#include <vector>

#define XXH_INLINE_ALL
#include <xxhash.h>

#include "cmodel/common/ppm_stream.h"
#include "tools/cfatool/base/files.h"
#include "tools/cfatool/base/trouble.h"
#include "tools/cfatool/runs/plane_file.h"

namespace cfatool {
namespace {

constexpr size_t SUMS_LENGTH = 98;

XXH3_state_t *state_of(const std::shared_ptr<void> &state) {
    return static_cast<XXH3_state_t *>(state.get());
}

} // namespace

std::string sum_text(const Sum &sum) {
    return fmt::format("{:016x}{:016x}", sum.high, sum.low);
}

Sum read_sum(std::string_view text) {
    Sum sum;
    const char *const middle = text.data() + 16, *const end = text.data() + text.size();
    if (text.size() != 32 || std::from_chars(text.data(), middle, sum.high, 16).ptr != middle ||
        std::from_chars(middle, end, sum.low, 16).ptr != end)
        throw Trouble(fmt::format("'{}' is no sum of 32 digits", text));
    return sum;
}

Summer::Summer() : state_(XXH3_createState(), XXH3_freeState) {
    if (state_ == nullptr)
        throw std::bad_alloc();
    XXH3_128bits_reset(state_of(state_));
}

void Summer::add(const void *bytes, size_t size) {
    XXH3_128bits_update(state_of(state_), bytes, size);
}

void Summer::add(std::string_view text) {
    const uint64_t size = text.size();
    add(&size, sizeof size);
    add(text.data(), text.size());
}

Sum Summer::sum() const {
    const XXH128_hash_t hash = XXH3_128bits_digest(state_of(state_));
    return {hash.high64, hash.low64};
}

Summer Summer::of_picture(int channels, int width, int height, uint32_t bit_depth) {
    const std::string header = cfa::ppm_header_text(channels == 3 ? '6' : '5', static_cast<uint32_t>(width),
                                                    static_cast<uint32_t>(height), bit_depth);
    Summer summer;
    summer.add(header.data(), header.size());
    return summer;
}

Sum sum_of_text(std::string_view text) {
    const XXH128_hash_t hash = XXH3_128bits(text.data(), text.size());
    return {hash.high64, hash.low64};
}

Sum sum_of_file(const std::string &path) {
    const Stream stream = open_to_read(path);
    Summer summer;
    std::vector<char> block(1 << 18);
    size_t count = 0;
    while ((count = std::fread(block.data(), 1, block.size(), stream.get())) > 0)
        summer.add(block.data(), count);
    if (std::ferror(stream.get()))
        throw errno_trouble(path);
    return summer.sum();
}

std::string sums_text(const OutputSums &sums) {
    return sum_text(sums[0]) + " " + sum_text(sums[1]) + " " + sum_text(sums[2]);
}

OutputSums read_sums(std::string_view text) {
    if (text.size() != SUMS_LENGTH || text[32] != ' ' || text[65] != ' ')
        throw Trouble(fmt::format("'{}' is not three sums", text));
    return {read_sum(text.substr(0, 32)), read_sum(text.substr(33, 32)), read_sum(text.substr(66))};
}

Sum sum_of_picture(const std::string &path) {
    const PlaneFile file(path);
    const PlaneForm &form = file.form();
    Summer summer = Summer::of_picture(form.channels, form.width, form.height,
                                       static_cast<uint32_t>(std::bit_width(form.max)));
    const int rows = static_cast<int>(std::max<size_t>(1, (1 << 18) / std::max<size_t>(1, form.row_bytes())));
    std::vector<uint8_t> block(form.row_bytes() * static_cast<size_t>(rows));
    for (int y = 0; y < form.height; y += rows) {
        const int count = std::min(rows, form.height - y);
        file.read_bytes(y, count, block.data());
        summer.add(block.data(), form.row_bytes() * static_cast<size_t>(count));
    }
    return summer.sum();
}

OutputSums sums_of_outputs(const std::string &folder) {
    const auto sum = [&folder](const char *file) { return sum_of_picture(folder + "/" + file); };
    return {sum(OUTPUT_FILES[0]), sum(OUTPUT_FILES[1]), sum(OUTPUT_FILES[2])};
}

RecordedSums read_recorded_sums(const std::string &path,
                                const std::function<bool(const std::string &name)> &wanted) {
    std::ifstream lines(path);
    if (!lines)
        throw errno_trouble(path);
    RecordedSums sums;
    size_t number = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        const size_t tab = line.find('\t');
        if (tab != SUMS_LENGTH)
            throw file_trouble(path, fmt::format("line {} is not three sums and a case", number));
        if (const std::string name = line.substr(tab + 1); wanted(name))
            sums[name] = read_sums(std::string_view(line).substr(0, tab));
    }
    return sums;
}

std::string recorded_sums_line(const std::string &name, const OutputSums &sums) {
    return sums_text(sums) + "\t" + name + "\n";
}

} // namespace cfatool
