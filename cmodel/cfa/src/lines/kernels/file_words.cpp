#include "cmodel/cfa/src/lines/kernels/file_words.h"

#include <algorithm>

#include "cmodel/cfa/src/lines/kernels/basics.h"

namespace cfa {

namespace {

// Columns that are interleaved at a time; their three channels stay in the first-level cache.
constexpr Index TILE_COLUMNS = 512;

// What a word of a row is to the sample it stands for.
struct InFile {
    static constexpr uint8_t order(uint8_t v) { return v; }
    static constexpr uint16_t order(uint16_t v) { return file_order(v); }
};
struct InMemory {
    static constexpr uint16_t order(uint16_t v) { return v; }
};

// The bodies. Inlined always: each kernel below compiles them for its instruction sets.

template <class Place, class Word, class Sample> [[gnu::always_inline]] inline void
split(const Word *words, int width, Sample *__restrict even, Sample *__restrict odd) {
    for (Index i = 0; i < width / 2; ++i) {
        even[i] = static_cast<Sample>(Place::order(words[2 * i]));
        odd[i] = static_cast<Sample>(Place::order(words[2 * i + 1]));
    }
    if (width % 2 != 0)
        even[width / 2] = static_cast<Sample>(Place::order(words[width - 1]));
}

template <class Place, class Word, class Sample> [[gnu::always_inline]] inline void
join(SplitRow<Sample> row, Index first, Index width, Word *__restrict words) {
    const Sample *const even = row.half[0] + first / 2;
    const Sample *const odd = row.half[1] + first / 2;
    for (Index i = 0; i < width / 2; ++i) {
        words[2 * i] = Place::order(static_cast<Word>(even[i]));
        words[2 * i + 1] = Place::order(static_cast<Word>(odd[i]));
    }
    if (width % 2 != 0)
        words[width - 1] = Place::order(static_cast<Word>(even[width / 2]));
}

template <class Place, class Word, class Sample>
[[gnu::always_inline]] inline void join(SplitRow<Sample> red, SplitRow<Sample> green, SplitRow<Sample> blue,
                                        Index width, Word *__restrict words) {
    Word r[TILE_COLUMNS], g[TILE_COLUMNS], b[TILE_COLUMNS];
    for (Index first = 0; first < width; first += TILE_COLUMNS) {
        const Index columns = std::min(TILE_COLUMNS, width - first);
        join<Place>(red, first, columns, r);
        join<Place>(green, first, columns, g);
        join<Place>(blue, first, columns, b);
        Word *const tile = words + 3 * first;
        for (Index x = 0; x < columns; ++x) {
            tile[3 * x] = r[x];
            tile[3 * x + 1] = g[x];
            tile[3 * x + 2] = b[x];
        }
    }
}

[[gnu::always_inline]] inline uint16_t union_of(const uint16_t *words, size_t count) {
    uint16_t any = 0;
    for (size_t i = 0; i < count; ++i)
        any = static_cast<uint16_t>(any | words[i]);
    return any;
}

} // namespace

CFA_KERNEL uint16_t union_of_words(const uint16_t *words, size_t count) {
    return file_order(union_of(words, count));
}
CFA_KERNEL uint16_t union_of_samples(const uint16_t *samples, size_t count) {
    return union_of(samples, count);
}

template <class Word, class Sample>
CFA_KERNEL void split_words(const Word *words, int width, Sample *even, Sample *odd) {
    split<InFile>(words, width, even, odd);
}
template <class Word, class Sample> CFA_KERNEL void join_words(SplitRow<Sample> row, int width, Word *words) {
    join<InFile>(row, 0, width, words);
}
template <class Word, class Sample> CFA_KERNEL void
join_words(SplitRow<Sample> red, SplitRow<Sample> green, SplitRow<Sample> blue, int width, Word *words) {
    join<InFile>(red, green, blue, width, words);
}

template <class Sample>
CFA_KERNEL void split_samples(const uint16_t *samples, int width, Sample *even, Sample *odd) {
    split<InMemory>(samples, width, even, odd);
}
template <class Sample> CFA_KERNEL void join_samples(SplitRow<Sample> row, int width, uint16_t *samples) {
    join<InMemory>(row, 0, width, samples);
}
template <class Sample> CFA_KERNEL void join_samples(SplitRow<Sample> red, SplitRow<Sample> green,
                                                     SplitRow<Sample> blue, int width, uint16_t *samples) {
    join<InMemory>(red, green, blue, width, samples);
}

// clang-format off
template void split_words(const uint8_t *, int, int16_t *, int16_t *);
template void split_words(const uint8_t *, int, int32_t *, int32_t *);
template void split_words(const uint16_t *, int, int16_t *, int16_t *);
template void split_words(const uint16_t *, int, int32_t *, int32_t *);
template void join_words(SplitRow<int16_t>, int, uint8_t *);
template void join_words(SplitRow<int32_t>, int, uint8_t *);
template void join_words(SplitRow<int16_t>, int, uint16_t *);
template void join_words(SplitRow<int32_t>, int, uint16_t *);
template void join_words(SplitRow<int16_t>, SplitRow<int16_t>, SplitRow<int16_t>, int, uint8_t *);
template void join_words(SplitRow<int32_t>, SplitRow<int32_t>, SplitRow<int32_t>, int, uint8_t *);
template void join_words(SplitRow<int16_t>, SplitRow<int16_t>, SplitRow<int16_t>, int, uint16_t *);
template void join_words(SplitRow<int32_t>, SplitRow<int32_t>, SplitRow<int32_t>, int, uint16_t *);

template void split_samples(const uint16_t *, int, int16_t *, int16_t *);
template void split_samples(const uint16_t *, int, int32_t *, int32_t *);
template void join_samples(SplitRow<int16_t>, int, uint16_t *);
template void join_samples(SplitRow<int32_t>, int, uint16_t *);
template void join_samples(SplitRow<int16_t>, SplitRow<int16_t>, SplitRow<int16_t>, int, uint16_t *);
template void join_samples(SplitRow<int32_t>, SplitRow<int32_t>, SplitRow<int32_t>, int, uint16_t *);
// clang-format on

} // namespace cfa
