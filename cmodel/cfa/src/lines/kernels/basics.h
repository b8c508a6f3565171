// What every kernel of the line engine is written in.
//
// A kernel is a plain loop over one half-row: the pixels of one column parity of one row. There all sites
// have the same colour, so no kernel asks for a colour code. Loops run over a padded count (line_buffer.h),
// one operation a line; intermediates are Samples wherever the comment's range says that they fit, which is
// what lets the compiler work on 16-bit lanes.
//
// Engine and kernels are compiled twice: in namespace cfa::narrow on rows of 16 bits, for samples of 12 bits
// and curves that stay between their levels; in cfa::wide, with CFA_WIDE_ROWS defined, on rows of 32 bits,
// for the rest (conditions.h). Ranges in comments are those of narrow rows, wide ones wrap as the model does.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#ifdef CFA_WIDE_ROWS
#define CFA_ROWS wide
#else
#define CFA_ROWS narrow
#endif

namespace cfa {

/// Position in a half-row, as wide as a pointer: with wrapping arithmetic a narrower
/// index would not be seen to run on.
using Index = std::ptrdiff_t;

// One binary holds each kernel for several instruction sets and picks at start.
// Only g++ on x86-64 does this well.
#if defined(CFA_KERNELS_DISPATCH) && defined(__GNUC__) && !defined(__clang__) && defined(__x86_64__) &&      \
    defined(__ELF__)
#define CFA_KERNEL __attribute__((target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")))
#else
#define CFA_KERNEL
#endif

/// Long kernels take several loops over blocks of sites, with what is between them in small arrays: each loop
/// then keeps its intermediates in registers, and those of 32 bits stay apart from those of 16.
constexpr Index BLOCK = 256;
template <class Loops> void for_each_block(Index n, const Loops &loops) {
    for (Index first = 0; first < n; first += BLOCK)
        loops(first, static_cast<int>(n - first < BLOCK ? n - first : BLOCK));
}

// Rows never overlap the row that a loop writes.
#if defined(__clang__)
#define CFA_LOOP _Pragma("clang loop vectorize(assume_safety)")
#else
#define CFA_LOOP _Pragma("GCC ivdep")
#endif

constexpr int32_t least32(int32_t a, int32_t b) {
    return a < b ? a : b;
}
constexpr int32_t largest32(int32_t a, int32_t b) {
    return a > b ? a : b;
}
/// a where the condition holds, b elsewhere, without a branch.
constexpr int32_t select32(bool condition, int32_t a, int32_t b) {
    const int32_t mask = -int32_t{condition};
    return (a & mask) | (b & ~mask);
}
} // namespace cfa

namespace cfa::CFA_ROWS {

/// A sample. Pictures are u12; signed intermediates state their range.
#ifdef CFA_WIDE_ROWS
constexpr bool WIDE = true;
using Sample = int32_t;
#else
constexpr bool WIDE = false;
using Sample = int16_t;
#endif

/// Samples u12 with weights that come to 16: they fill 16 unsigned bits.
using Sum = std::conditional_t<WIDE, int32_t, uint16_t>;

constexpr Sample least(Sample a, Sample b) {
    return a < b ? a : b;
}
constexpr Sample largest(Sample a, Sample b) {
    return a > b ? a : b;
}

constexpr int32_t limited12(int32_t v) {
    return least32(4095, largest32(0, v));
}
#ifndef CFA_WIDE_ROWS
constexpr Sample limited12(Sample v) {
    return least(4095, largest(0, v));
}
#endif
constexpr int32_t magnitude(int32_t v) {
    return v < 0 ? -v : v;
}

/// Limits that only wide rows can meet: samples beyond 12 bits, weights of a curve outside its levels.
constexpr Sample limited12_wide(Sample v) {
    return WIDE ? limited12(v) : v;
}
constexpr Sample least_wide(Sample limit, Sample v) {
    return WIDE ? least(limit, v) : v;
}
constexpr Sample largest_wide(Sample limit, Sample v) {
    return WIDE ? largest(limit, v) : v;
}

/// |a - b|. REQUIRES that the difference fits a Sample.
constexpr Sample distance(Sample a, Sample b) {
    const int32_t d = static_cast<Sample>(a - b);
    return static_cast<Sample>(d < 0 ? -d : d); // of an int: one instruction
}

/// a where the mask is all ones, b where it is 0.
constexpr Sample select_by(Sample mask, Sample a, Sample b) {
    return static_cast<Sample>((a & mask) | (b & ~mask));
}

/// norm2 of the kit, (123 m + 51 k + 64) >> 7 of the larger m and the smaller k of two samples u12, in 16
/// bits: 123 m is 128 m - 5 m, and of 51 k the part 48 k is shifted in two steps.
constexpr Sample norm2_u12(Sample a, Sample b) {
    const Sample m = largest(a, b);
    const Sample k3 = static_cast<Sample>(3 * least(a, b));
    const Sample rest = static_cast<Sample>(k3 - 5 * m + 64); // -20411..64
    const Sample eighths = static_cast<Sample>(k3 + (rest >> 4));
    return static_cast<Sample>(m + (eighths >> 3));
}

/// +1 where a < b (horizontal), -1 where a > b (vertical), 0 on a tie.
constexpr Sample toward(int32_t a, int32_t b) {
    return static_cast<Sample>((a < b) - (a > b));
}

/// 2*R+1 mirrored rows seen from the sites of one column parity. P = rows.at(i) reads P(dy, dx) around site
/// i: own[i] is column x, own[i +- 1] columns x +- 2; left[i] is column x - 1, left[i + 1] column x + 1.
template <int R> struct Sight {
    const Sample *own[2 * R + 1];
    const Sample *left[2 * R + 1];

    struct Site {
        const Sight &rows;
        Index i;
        constexpr Sample operator()(int dy, int dx) const {
            return dx % 2 == 0 ? rows.own[dy + R][i + dx / 2] : rows.left[dy + R][i + (dx + 1) / 2];
        }
    };
    constexpr Site at(Index i) const { return {*this, i}; }

    /// The same from site `first` on.
    constexpr Sight from(Index first) const {
        Sight there = *this;
        for (int k = 0; k < 2 * R + 1; ++k) {
            there.own[k] += first;
            there.left[k] += first;
        }
        return there;
    }
};

/// Five samples in a line through a site, along its row or its column: at[2][i] is the site's own.
struct FiveSamples {
    const Sample *at[5];
};

} // namespace cfa::CFA_ROWS
