// Comparison of two files: bytes first, samples only in the rows that differ.
#include "tools/cfatool/compare/picture_compare.h"

#include <algorithm>
#include <cstring>
#include <fmt/core.h>
#include <optional>

#include "tools/cfatool/base/trouble.h"
#include "tools/cfatool/compare/difference_map.h"
#include "tools/cfatool/pictures/picture_crop.h"

namespace cfatool {
namespace {

constexpr size_t CHUNK_BYTES = 128 * 1024; // of either file: both stay in the cache

std::string form_text(const PlaneForm &form) {
    return fmt::format("{}x{} with {}", form.width, form.height,
                       form.channels == 1 ? "1 channel" : "3 channels");
}

std::string mismatch_of(const PlaneFile &a, const PlaneFile &b) {
    const PlaneForm &fa = a.form(), &fb = b.form();
    if (fa.width != fb.width || fa.height != fb.height || fa.channels != fb.channels)
        return fmt::format("size mismatch: {} is {}, {} is {}", a.path(), form_text(fa), b.path(),
                           form_text(fb));
    const bool both_say = fa.max != 0 && fb.max != 0;
    const bool deep_png = (fa.png || fb.png) && fa.bytes == fb.bytes; // deep samples stand in it as they are
    if (both_say && fa.max != fb.max && !deep_png)
        return fmt::format("depth mismatch: maximum value {} in {}, {} in {}", fa.max, a.path(), fb.max,
                           b.path());
    return "";
}

/// Samples of one file, some rows at a time.
struct Side {
    const PlaneFile &file;
    std::vector<uint8_t> bytes;
    std::vector<int32_t> row;
    bool is_signed;

    explicit Side(const PlaneFile &of) : file(of), is_signed(of.form().is_signed) {
        row.resize(of.form().row_samples());
    }
    void read(int y, int rows) {
        bytes.resize(file.form().row_bytes() * static_cast<size_t>(rows));
        file.read_bytes(y, rows, bytes.data());
    }
    const uint8_t *bytes_of(int i) const {
        return bytes.data() + file.form().row_bytes() * static_cast<size_t>(i);
    }
    void decode(int i) { file.decode(bytes_of(i), row.size(), row.data()); }
    int64_t at(size_t i) const { return is_signed ? row[i] : int64_t{static_cast<uint32_t>(row[i])}; }
    bool reaches(uint32_t limit) const {
        uint32_t most = 0;
        for (const int32_t sample : row)
            most = std::max(most, static_cast<uint32_t>(sample));
        return most >= limit;
    }
};

class Comparer {
  public:
    Comparer(const PlaneFile &a, const PlaneFile &b, const CompareOptions &options, Comparison &found)
        : a_(a), b_(b), options_(options), found_(found) {
        const PlaneForm &fa = a.form(), &fb = b.form();
        same_form_ = fa.bytes == fb.bytes && fa.big_endian == fb.big_endian && fa.is_signed == fb.is_signed;
        is_short_ = fa.bytes < 4 && fb.bytes < 4 && fa.width < 65536; // squares add up in 64 bits
        if (!options.map.empty())
            map_.emplace(found.width, found.height);
    }

    void rows(const Crop &crop) {
        const size_t most = std::max(a_.file.form().row_bytes(), b_.file.form().row_bytes());
        const int step = static_cast<int>(std::max<size_t>(CHUNK_BYTES / std::max<size_t>(most, 1), 1));
        for (int y = crop.y; y < crop.y + crop.height; y += step) {
            const int rows = std::min(step, crop.y + crop.height - y);
            a_.read(y, rows);
            b_.read(y, rows);
            if (equal_bytes(0, rows) && !wanted())
                continue;
            for (int i = 0; i < rows; ++i)
                row(crop, y + i, i);
        }
        if (map_)
            map_->write(options_.map);
    }

  private:
    /// Whether samples are needed of rows that are equal, too.
    bool wanted() const { return map_ || (options_.limit != 0 && !found_.reaches_limit); }
    bool equal_bytes(int i, int rows) const {
        return same_form_ && std::memcmp(a_.bytes_of(i), b_.bytes_of(i),
                                         a_.file.form().row_bytes() * static_cast<size_t>(rows)) == 0;
    }

    void row(const Crop &crop, int y, int i) {
        const bool equal = equal_bytes(i, 1);
        if (equal && !wanted())
            return;
        a_.decode(i);
        b_.decode(i);
        if (options_.limit != 0 && !found_.reaches_limit)
            found_.reaches_limit = a_.reaches(options_.limit) || b_.reaches(options_.limit);
        if (map_)
            for (int x = crop.x; x < crop.x + crop.width; ++x)
                paint(x, y);
        if (equal)
            return;
        uint64_t differing = 0;
        for (int c = 0; c < found_.channels; ++c)
            differing += is_short_ ? totals<true>(crop, y, c) : totals<false>(crop, y, c);
        if (differing > 0)
            note_places(crop, y);
    }

    uint64_t difference_at(size_t i) const {
        const int64_t a = a_.at(i), b = b_.at(i);
        return static_cast<uint64_t>(std::max(a, b) - std::min(a, b));
    }
    bool counts(int x, int y) const {
        return sites_contain(options_.sites, x, y, static_cast<uint32_t>(options_.bayer));
    }

    /// Adds up one channel of a row: short samples in loops that the compiler can vectorise. Returns how many
    /// lie beyond the tolerance.
    template <bool SHORT> uint64_t totals(const Crop &crop, int y, int c) {
        ChannelDifferences &channel = found_.channel[static_cast<size_t>(c)];
        const auto step = static_cast<size_t>(found_.channels);
        const size_t from = static_cast<size_t>(crop.x) * step + static_cast<size_t>(c);
        const auto tolerance = static_cast<int64_t>(options_.tolerance);
        const auto width = static_cast<size_t>(crop.width);
        uint64_t sum = 0, squares = 0, differing = 0;
        if (SHORT && options_.sites == Sites::all) {
            const int32_t *const a = a_.row.data() + from, *const b = b_.row.data() + from;
            const auto beyond = static_cast<int32_t>(std::min<int64_t>(tolerance, INT32_MAX));
            int32_t largest = 0;
            uint32_t count = 0;
            for (size_t x = 0; x < width; ++x) {
                const int32_t difference = std::abs(a[x * step] - b[x * step]);
                largest = std::max(largest, difference);
                sum += static_cast<uint32_t>(difference);
                squares += uint64_t{static_cast<uint32_t>(difference)} * static_cast<uint32_t>(difference);
                count += difference > beyond;
            }
            channel.largest = std::max<uint64_t>(channel.largest, static_cast<uint64_t>(largest));
            channel.squares += static_cast<double>(squares);
            differing = count;
        } else {
            for (size_t x = 0; x < width; ++x) {
                if (!counts(crop.x + static_cast<int>(x), y))
                    continue;
                const uint64_t difference = difference_at(from + x * step);
                channel.largest = std::max(channel.largest, difference);
                sum += difference;
                channel.squares += static_cast<double>(difference) * static_cast<double>(difference);
                differing += difference > options_.tolerance;
            }
        }
        channel.sum += sum;
        channel.differing += differing;
        return differing;
    }

    /// Widens the bounding box and fills the list. REQUIRES a difference in the row.
    void note_places(const Crop &crop, int y) {
        const auto channels = static_cast<size_t>(found_.channels);
        const auto differs = [&](int x, size_t c) {
            return difference_at(static_cast<size_t>(x) * channels + c) > options_.tolerance && counts(x, y);
        };
        const auto pixel_differs = [&](int x) {
            return differs(x, 0) || (channels > 1 && (differs(x, 1) || differs(x, 2)));
        };
        int left = crop.x, right = crop.x + crop.width - 1;
        while (!pixel_differs(left))
            ++left;
        while (!pixel_differs(right))
            --right;
        const bool first = found_.list.empty();
        found_.left = first ? left : std::min(found_.left, left);
        found_.right = first ? right : std::max(found_.right, right);
        found_.top = first ? y : found_.top;
        found_.bottom = y;
        const size_t most = std::max<size_t>(options_.max_list, 1);
        for (int x = left; x <= right && found_.list.size() < most; ++x)
            for (size_t c = 0; c < channels && found_.list.size() < most; ++c)
                if (const size_t i = static_cast<size_t>(x) * channels + c; differs(x, c))
                    found_.list.push_back({x, y, static_cast<int>(c), a_.at(i), b_.at(i)});
    }

    void paint(int x, int y) {
        const auto channels = static_cast<size_t>(found_.channels);
        const size_t at = static_cast<size_t>(x) * channels;
        uint64_t beyond = 0, most = 0;
        for (size_t i = at; i < at + channels; ++i) {
            const uint64_t difference = difference_at(i);
            most = std::max({most, static_cast<uint64_t>(std::max<int64_t>(a_.at(i), 0)), difference});
            if (difference > options_.tolerance && counts(x, y))
                beyond = std::max(beyond, difference);
        }
        map_->add(a_.at(at + channels / 2), beyond, most);
    }

    Side a_, b_;
    const CompareOptions &options_;
    Comparison &found_;
    bool same_form_;
    bool is_short_; // samples of less than 32 bits
    std::optional<DifferenceMap> map_;
};

} // namespace

Comparison compare_pictures(const std::string &path_a, const std::string &path_b,
                            const CompareOptions &options) {
    const PlaneFile a(path_a), b(path_b);
    Comparison found;
    found.mismatch = mismatch_of(a, b);
    if (!found.mismatch.empty())
        return found;
    const PlaneForm &form = a.form().png ? b.form() : a.form();
    const Crop crop = crop_in(options.crop, path_a, form.width, form.height);
    found.width = crop.width;
    found.height = crop.height;
    found.channels = form.channels;
    found.max = form.max;
    found.range = options.range == 0 ? form.max
                  : form.max == 0    ? options.range
                                     : std::min(options.range, form.max);
    if (!options.map.empty() && found.pixels() == 0)
        throw file_trouble(path_a, "a picture of no pixels has no map");
    if (found.pixels() > 0) // 2147483647 rows of no pixels are nothing to read
        Comparer(a, b, options, found).rows(crop);
    return found;
}

} // namespace cfatool
