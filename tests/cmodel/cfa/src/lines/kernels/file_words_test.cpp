#include "cmodel/cfa/src/lines/kernels/file_words.h"

#include <vector>

#include <doctest/doctest.h>

#include "tests/support/planes.h"

using namespace cfa;

namespace {

constexpr int32_t UNTOUCHED = 0xa5;

// The number that a file word stands for, read byte by byte.
int32_t number(const uint8_t *word) {
    return *word;
}
int32_t number(const uint16_t *word) {
    const auto *const bytes = reinterpret_cast<const uint8_t *>(word);
    return bytes[0] << 8 | bytes[1];
}

struct Halves {
    explicit Halves(int width) : even((width + 1) / 2 + 1, UNTOUCHED), odd(width / 2 + 1, UNTOUCHED) {}
    Sample at(int x) const { return x % 2 == 0 ? even[x / 2] : odd[x / 2]; }
    SplitRow row() const { return {{even.data(), odd.data()}}; }
    std::vector<Sample> even, odd;
};

template <class Word> void check_width(Noise &noise, int width) {
    const int32_t largest = sizeof(Word) == 1 ? 255 : 4095;
    std::vector<Word> words(width);
    Halves color[3] = {Halves(width), Halves(width), Halves(width)};
    for (Halves &halves : color) {
        for (Word &word : words)
            word = static_cast<Word>(noise.in(0, largest));
        for (Word &word : words)
            word = file_order(word);
        split_words(words.data(), width, halves.even.data(), halves.odd.data());
        int wrong = halves.even.back() != UNTOUCHED || halves.odd.back() != UNTOUCHED;
        for (int x = 0; x < width; x++)
            wrong += halves.at(x) != number(&words[x]);
        std::vector<Word> back(width + 1, UNTOUCHED);
        join_words(halves.row(), width, back.data());
        wrong += back.back() != UNTOUCHED;
        for (int x = 0; x < width; x++)
            wrong += back[x] != words[x];
        CHECK(wrong == 0);
    }
    std::vector<Word> rgb(3 * width + 1, UNTOUCHED);
    join_words(color[0].row(), color[1].row(), color[2].row(), width, rgb.data());
    int wrong = rgb.back() != UNTOUCHED;
    for (int i = 0; i < 3 * width; i++)
        wrong += number(&rgb[i]) != color[i % 3].at(i / 3);
    CHECK(wrong == 0);
}

} // namespace

TEST_CASE("rows of words: split, joined, interleaved; nothing beyond their width") {
    Noise noise(1);
    for (int width = 1; width < 1100; width += width < 140 ? 1 : 61) {
        INFO("width ", width);
        check_width<uint8_t>(noise, width);
        check_width<uint16_t>(noise, width);
    }
    for (int width : {511, 512, 513, 1023, 1024, 1025})
        check_width<uint16_t>(noise, width);
}

TEST_CASE("a word keeps the low bits of the sample, high byte first") {
    const Sample even[] = {1024, 0x123}, odd[] = {255, 4095};
    uint8_t bytes[4];
    join_words(SplitRow{{even, odd}}, 4, bytes);
    CHECK(std::vector<int>(bytes, bytes + 4) == std::vector<int>{0, 255, 0x23, 255});
    uint16_t words[4];
    join_words(SplitRow{{even, odd}}, 4, words);
    const auto *const file = reinterpret_cast<const uint8_t *>(words);
    CHECK(std::vector<int>(file, file + 8) == std::vector<int>{4, 0, 0, 255, 1, 0x23, 15, 255});
}

TEST_CASE("the union of words has the bits of each") {
    for (const size_t count : {1u, 7u, 64u, 1000u})
        for (size_t at : {size_t{0}, count / 2, count - 1}) {
            std::vector<uint16_t> words(count, file_order(uint16_t{0x0100}));
            words[at] = file_order(uint16_t{0x1002});
            CHECK(union_of_words(words.data(), count) == (count == 1 ? 0x1002 : 0x1102));
        }
    CHECK(union_of_words(nullptr, 0) == 0);
}
