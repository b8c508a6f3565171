#include "cmodel/cfa/src/lines/kernels/file_words.h"

#include <vector>

#include <doctest/doctest.h>

#include "tests/support/planes.h"

using namespace cfa;

namespace {

constexpr uint8_t UNTOUCHED = 0xa5;

// Random bytes as a row of words: split, joined, interleaved with two others; nothing beyond its width.
template <class Word> void check_width(int width) {
    Noise noise(width);
    constexpr int size = sizeof(Word);
    std::vector<Word> words(width), back(width + 1, UNTOUCHED), rgb(3 * width + 1, UNTOUCHED);
    auto *const bytes = reinterpret_cast<uint8_t *>(words.data());
    for (int i = 0; i < size * width; ++i)
        bytes[i] = static_cast<uint8_t>(noise.in(0, i % size == size - 1 ? 255 : 127));
    std::vector<Sample> half[2]{std::vector<Sample>(width / 2 + 2, UNTOUCHED),
                                std::vector<Sample>(width / 2 + 2, UNTOUCHED)};
    split_words(words.data(), width, half[0].data(), half[1].data());
    const SplitRow row{{half[0].data(), half[1].data()}}, next{{half[0].data() + 1, half[1].data()}};
    join_words(row, width, back.data());
    join_words(row, next, row, width, rgb.data());
    int wrong = half[0][(width + 1) / 2] != UNTOUCHED || half[1][width / 2] != UNTOUCHED ||
                back[width] != UNTOUCHED || rgb[3 * width] != UNTOUCHED;
    uint16_t all = 0;
    for (int x = 0; x < width; ++x) {
        const int number = size == 1 ? bytes[x] : bytes[2 * x] << 8 | bytes[2 * x + 1];
        all |= static_cast<uint16_t>(number);
        wrong += half[x % 2][x / 2] != number || back[x] != words[x] || rgb[3 * x] != words[x] ||
                 rgb[3 * x + 2] != words[x];
        wrong += x + 2 < width && rgb[3 * x + 1] != words[x % 2 == 0 ? x + 2 : x];
    }
    CHECK(wrong == 0);
    if constexpr (size == 2)
        CHECK(union_of_words(words.data(), words.size()) == all);
}

} // namespace

TEST_CASE("rows of words: split, joined, interleaved, their union") {
    for (int width = 1; width < 1100; width += width < 140 || (width > 510 && width < 514) ? 1 : 53) {
        INFO("width ", width);
        check_width<uint8_t>(width);
        check_width<uint16_t>(width);
    }
}

TEST_CASE("a word keeps the low bits of the sample") {
    const Sample sample = 0x123;
    uint8_t bytes[3] = {};
    join_words(SplitRow{{&sample, &sample}}, 2, bytes);
    CHECK(std::vector<int>(bytes, bytes + 3) == std::vector<int>{0x23, 0x23, 0});
}
