// Packing of tiles.
#include "tools/cfatool/page/tile_code.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <vector>

namespace cfatool {
namespace {

constexpr int BLOCK = 64;
constexpr uint8_t FOLDED = 128;

using Block = std::array<uint32_t, BLOCK>;

/// The bits that the largest needs.
int width_of(const Block &values, int count) {
    uint32_t any = 0;
    for (int i = 0; i < count; ++i)
        any |= values[i];
    return std::bit_width(any);
}

/// Writes `count` values of `width` bits; returns the first byte behind them.
uint8_t *put_bits(const Block &values, int count, int width, uint8_t *to) {
    uint64_t bits = 0;
    int held = 0;
    for (int i = 0; i < count; ++i) {
        bits |= uint64_t{values[i]} << held;
        held += width;
        if (held >= 32) {
            std::memcpy(to, &bits, 4);
            to += 4;
            bits >>= 32;
            held -= 32;
        }
    }
    for (; held > 0; held -= 8, bits >>= 8)
        *to++ = static_cast<uint8_t>(bits);
    return to;
}

/// REQUIRES row[-1] to be the sample before.
uint8_t *put_block(const uint32_t *row, int count, uint8_t *to) {
    Block plain, folded;
    for (int i = 0; i < count; ++i) {
        const uint32_t difference = row[i] - row[i - 1];
        plain[i] = row[i];
        folded[i] = difference << 1 ^ (0u - (difference >> 31));
    }
    const int plain_width = width_of(plain, count), folded_width = width_of(folded, count);
    const bool fold = folded_width < plain_width; // a negative sample needs 32 bits as it is
    *to++ = static_cast<uint8_t>(fold ? FOLDED + folded_width : plain_width);
    return put_bits(fold ? folded : plain, count, std::min(plain_width, folded_width), to);
}

} // namespace

void append_packed(const SampleWindow &window, std::string &bytes) {
    const size_t blocks = static_cast<size_t>((window.width + BLOCK - 1) / BLOCK);
    const size_t row_limit = blocks + 4 * static_cast<size_t>(window.width);
    std::vector<uint8_t> packed(row_limit * static_cast<size_t>(window.height));
    std::vector<uint32_t> row(static_cast<size_t>(window.width) + 1); // the sample before stands in front
    uint8_t *to = packed.data();
    for (int y = 0; y < window.height; ++y) {
        row[0] = y == 0 ? 0 : row[1];
        for (int x = 0; x < window.width; ++x)
            row[x + 1] = static_cast<uint32_t>(window.first[y * window.pitch + x * window.step]);
        for (int x = 0; x < window.width; x += BLOCK)
            to = put_block(&row[x + 1], std::min(BLOCK, window.width - x), to);
    }
    bytes.append(reinterpret_cast<const char *>(packed.data()), static_cast<size_t>(to - packed.data()));
}

std::string script_text(const std::string &bytes) {
    static const std::array<bool, 256> ESCAPED = [] {
        std::array<bool, 256> escaped = {};
        for (const uint8_t c : {'\n', '\r', '\'', '\\'})
            escaped[c] = true;
        return escaped;
    }();
    std::string text(2 * bytes.size(), '\0');
    char *to = text.data();
    for (const char c : bytes) {
        *to = '\\'; // stays where it is needed
        to += ESCAPED[static_cast<uint8_t>(c)];
        *to++ = c == '\n' ? 'n' : c == '\r' ? 'r' : c;
    }
    text.resize(static_cast<size_t>(to - text.data()));
    return text;
}

} // namespace cfatool
