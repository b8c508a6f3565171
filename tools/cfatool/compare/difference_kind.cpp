#include "tools/cfatool/compare/difference_kind.h"

#include <algorithm>
#include <array>
#include <bit>
#include <fmt/core.h>

#include "tools/cfatool/pictures/colour_sites.h"

namespace cfatool {
namespace {

constexpr uint64_t FEWEST = 4;          // samples: what fewer have in common may be chance
constexpr uint32_t SMALLEST_RANGE = 15; // codes have no largest value
constexpr int MARGIN = 2;               // of a shifted plane that is filled in one way or another

uint32_t swapped(uint32_t v) {
    return (v & 0xFF) << 8 | (v >> 8 & 0xFF);
}

/// What stays true of every sample that differs.
struct Common {
    int64_t delta = 0;
    bool first = true, one_delta = true, all_swapped = true, at_limit = true;
    uint32_t bits = 0;      // that differ in any
    uint32_t bits_of_a = 0; // that were set in A where they differ
    bool one_way = true;    // each time the same way
    uint32_t colours = 0;   // of the sites, a bit each

    void add(int64_t a, int64_t b, uint32_t range) {
        const auto ua = static_cast<uint32_t>(a), ub = static_cast<uint32_t>(b);
        const int64_t d = b - a;
        one_delta = one_delta && (first || d == delta);
        delta = d;
        one_way = one_way && (first || (ua & (ua ^ ub)) == bits_of_a);
        bits_of_a = ua & (ua ^ ub);
        bits |= ua ^ ub;
        all_swapped = all_swapped && std::max(ua, ub) <= 0xFFFF && swapped(ua) == ub;
        at_limit = at_limit && range >= SMALLEST_RANGE && std::max(a, b) >= range;
        first = false;
    }
    /// Whether no further sample can change what is said.
    bool settled() const {
        return !one_delta && !std::has_single_bit(bits) && !all_swapped && !at_limit &&
               !std::has_single_bit(colours);
    }
};

/// The colours of a pattern's sites by their names, a bit each.
struct SiteNames {
    std::vector<std::string> names;
    std::array<uint32_t, 16> bits = {}; // no pattern is larger than 4 x 4

    explicit SiteNames(int bayer) {
        for (int i = 0; i < 16 && bayer >= 0; ++i) {
            const std::string name = site_name(i % 4, i / 4, static_cast<uint32_t>(bayer));
            const auto found = std::find(names.begin(), names.end(), name);
            bits[static_cast<size_t>(i)] = 1u << (found - names.begin());
            if (found == names.end())
                names.push_back(name);
        }
    }
    uint32_t bit(int x, int y) const {
        return bits[static_cast<size_t>(y % 4) * 4 + static_cast<size_t>(x % 4)];
    }
};

Common what_is_common(const PlaneFile &a, const PlaneFile &b, const Comparison &found, uint32_t range,
                      int bayer, Sites sites) {
    Common common;
    const SiteNames site_names(bayer);
    const auto number = [](int32_t sample, const PlaneFile &file) {
        return file.form().is_signed ? sample : int64_t{static_cast<uint32_t>(sample)};
    };
    const int width = a.form().width, channels = a.form().channels;
    for (int y = found.top; y <= found.bottom && !common.settled(); ++y) {
        const std::vector<int32_t> row_a = a.read(0, y, width, 1), row_b = b.read(0, y, width, 1);
        if (row_a == row_b)
            continue;
        size_t i = 0;
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < channels; ++c, ++i)
                if (row_a[i] != row_b[i] && sites_contain(sites, x, y, static_cast<uint32_t>(bayer))) {
                    common.add(number(row_a[i], a), number(row_b[i], b), range);
                    common.colours |= site_names.bit(x, y);
                }
    }
    return common;
}

/// Whether B is A with its content moved by (dx, dy), but for a margin.
bool is_shifted(const PlaneFile &a, const PlaneFile &b, int dx, int dy) {
    const int width = a.form().width - 2 * MARGIN, height = a.form().height - 2 * MARGIN;
    for (int y = 0; y < height && width > 0; ++y)
        if (a.read(MARGIN - dx, MARGIN + y - dy, width, 1) != b.read(MARGIN, MARGIN + y, width, 1))
            return false;
    return width > 0 && height > 0;
}

std::string shift_text(const PlaneFile &a, const PlaneFile &b) {
    struct Shift {
        int dx, dy;
        const char *text;
    };
    constexpr Shift SHIFTS[] = {{1, 0, "one column to the right"},
                                {-1, 0, "one column to the left"},
                                {0, 1, "one row down"},
                                {0, -1, "one row up"}};
    for (const Shift &shift : SHIFTS)
        if (is_shifted(a, b, shift.dx, shift.dy))
            return fmt::format("B is A shifted by {}", shift.text);
    return "";
}

/// Where the bounding box lies in an outer row or column or two.
std::string border_text(const PlaneForm &form, const Comparison &found) {
    const auto lines = [](const char *which, const char *kind, int count) {
        return count == 1 ? fmt::format("only in the {} {}", which, kind)
                          : fmt::format("only in the {} {} {}s", which, count, kind);
    };
    if (found.bottom < MARGIN && form.height > 2 * MARGIN)
        return lines("first", "row", found.bottom + 1);
    if (found.top >= form.height - MARGIN && form.height > 2 * MARGIN)
        return lines("last", "row", form.height - found.top);
    if (found.right < MARGIN && form.width > 2 * MARGIN)
        return lines("first", "column", found.right + 1);
    if (found.left >= form.width - MARGIN && form.width > 2 * MARGIN)
        return lines("last", "column", form.width - found.left);
    return "";
}

} // namespace

std::vector<std::string> difference_kinds(const std::string &path_a, const std::string &path_b,
                                          const Comparison &found, uint32_t range, int bayer, Sites sites) {
    const uint64_t differing = found.all().differing;
    if (!found.mismatch.empty() || differing < FEWEST)
        return {};
    const PlaneFile a(path_a), b(path_b);
    std::vector<std::string> kinds;
    const auto add = [&](const std::string &kind) {
        if (!kind.empty())
            kinds.push_back(kind);
    };
    add(border_text(a.form(), found));
    const Common common = what_is_common(a, b, found, range, bayer, sites);
    if (common.all_swapped)
        add("the bytes are swapped");
    else if (std::has_single_bit(common.bits))
        add(fmt::format("bit {} {}", std::bit_width(common.bits) - 1,
                        !common.one_way         ? "is inverted"
                        : common.bits_of_a != 0 ? "is lost in B"
                                                : "is set in B"));
    else if (common.one_delta)
        add(fmt::format("B is A {} {}", common.delta < 0 ? "-" : "+", std::abs(common.delta)));
    if (std::has_single_bit(common.colours))
        add(fmt::format("only at {} sites",
                        SiteNames(bayer).names[static_cast<size_t>(std::countr_zero(common.colours))]));
    for (int c = 0; c < found.channels && found.channels > 1; ++c)
        if (found.channel[static_cast<size_t>(c)].differing == differing)
            add(fmt::format("only in channel {}", channel_name(found.channels, c)));
    if (common.at_limit)
        add(fmt::format("only where a sample is {} or more", range));
    if (kinds.empty() && differing > found.pixels() / 64) // few samples are no shift
        add(shift_text(a, b));
    return kinds;
}

} // namespace cfatool
