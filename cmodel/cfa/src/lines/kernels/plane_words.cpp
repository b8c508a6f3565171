#include "cmodel/cfa/src/lines/kernels/plane_words.h"

#include <algorithm>

namespace cfa {

namespace {

// Columns that are interleaved at a time; their three channels stay in the first-level cache.
constexpr Index TILE_COLUMNS = 512;

constexpr int32_t magnitude_of(int32_t v) {
    return v < 0 ? -v : v; // of the most negative number: itself, below 0
}

inline int32_t within(int32_t v, int32_t limit) {
    return least32(limit, largest32(0, v));
}

// The bodies, for both kinds of samples. Inlined always: each kernel below compiles them for its instruction
// sets.

template <class T>
[[gnu::always_inline]] inline void limit(const T *in, int16_t most, int16_t *__restrict out, int n) {
    for (Index i = 0; i < n; ++i)
        out[i] = static_cast<int16_t>(within(magnitude_of(in[i]), most));
}

template <class T> [[gnu::always_inline]] inline void cut(const T *in, int16_t *__restrict out, int n) {
    for (Index i = 0; i < n; ++i)
        out[i] = static_cast<int16_t>(in[i]);
}

template <class T> [[gnu::always_inline]] inline void split_signs(const T *in, int16_t *__restrict positive,
                                                                  int16_t *__restrict negative, int n) {
    for (Index i = 0; i < n; ++i) {
        const int32_t quarter = (int32_t{in[i]} * 4) >> 4;
        positive[i] = static_cast<int16_t>(within(quarter, 255));
        negative[i] = static_cast<int16_t>(within(-quarter, 255));
    }
}

template <class T> [[gnu::always_inline]] inline void join_one(const T *even, const T *odd, Index width,
                                                               int32_t *__restrict out) {
    for (Index i = 0; i < width / 2; ++i) {
        out[2 * i] = even[i];
        out[2 * i + 1] = odd[i];
    }
    if (width % 2 != 0)
        out[width - 1] = even[width / 2];
}

template <class T>
[[gnu::always_inline]] inline void join_three(const SplitRow<T> *rgb, Index width, int32_t *__restrict out) {
    int32_t channel[3][TILE_COLUMNS];
    for (Index first = 0; first < width; first += TILE_COLUMNS) {
        const Index columns = std::min(TILE_COLUMNS, width - first);
        for (int k = 0; k < 3; ++k)
            join_one(rgb[k].half[0] + first / 2, rgb[k].half[1] + first / 2, columns, channel[k]);
        int32_t *const tile = out + 3 * first;
        for (Index x = 0; x < columns; ++x) {
            tile[3 * x] = channel[0][x];
            tile[3 * x + 1] = channel[1][x];
            tile[3 * x + 2] = channel[2][x];
        }
    }
}

template <class T>
[[gnu::always_inline]] inline void join(const SplitRow<T> *channels, int count, int width, int32_t *out) {
    if (count == 1)
        join_one(channels->half[0], channels->half[1], width, out);
    else
        join_three(channels, width, out);
}

} // namespace

CFA_KERNEL void limited_magnitudes(const int16_t *in, int16_t most, int16_t *out, int n) {
    limit(in, most, out, n);
}
CFA_KERNEL void limited_magnitudes(const int32_t *in, int16_t most, int16_t *out, int n) {
    limit(in, most, out, n);
}

CFA_KERNEL void low_words(const int16_t *in, int16_t *out, int n) {
    cut(in, out, n);
}
CFA_KERNEL void low_words(const int32_t *in, int16_t *out, int n) {
    cut(in, out, n);
}

CFA_KERNEL void signed_parts(const int16_t *in, int16_t *positive, int16_t *negative, int n) {
    split_signs(in, positive, negative, n);
}
CFA_KERNEL void signed_parts(const int32_t *in, int16_t *positive, int16_t *negative, int n) {
    split_signs(in, positive, negative, n);
}

CFA_KERNEL void join_exact(const SplitRow<int16_t> *channels, int count, int width, int32_t *out) {
    join(channels, count, width, out);
}
CFA_KERNEL void join_exact(const SplitRow<int32_t> *channels, int count, int width, int32_t *out) {
    join(channels, count, width, out);
}

} // namespace cfa
