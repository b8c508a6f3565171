// Every place of the arithmetic that may be wrong asks here which fault is on. A place has one or several
// faults, numbered from `id` on; fault 0 is none. A binary operator becomes two of the same precedence around
// a switch: in `a + Op{7} + b` the first takes hold of a, the second computes.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <limits>

#include "cmodel/common/register_block.h"

namespace fault {

// The tables of constants are computed at start; their files include this first.
inline const int active = std::getenv("FAULT") != nullptr ? std::atoi(std::getenv("FAULT")) : 0;

/// The good value, or the bad one whose fault is on.
template <class T> T pick(int id, T good, std::initializer_list<T> bad) {
    const size_t which = static_cast<size_t>(active - id);
    return which < bad.size() ? bad.begin()[which] : good;
}

/// A product limited to its type instead of wrapping.
template <class T, class U> auto limited_product(T a, U b) {
    using Limits = std::numeric_limits<decltype(a * b)>;
    return static_cast<decltype(a * b)>(
        std::clamp<int64_t>(int64_t{a} * int64_t{b}, Limits::min(), Limits::max()));
}

template <class T> struct Held;

/// + for - and the reverse, a limit for a wrapping product, < or <= (other: > or >=), == for != (other).
struct Op {
    int id;
    bool other = false, or_equal = false;
    bool on() const { return active == id; }
    /// Behind += and -=: a summand with the other sign.
    template <class T> T operator%=(T summand) const { return on() ? -summand : summand; }

    template <class T> friend Held<T> operator+(T left, Op op) { return {left, op}; }
    template <class T> friend Held<T> operator-(T left, Op op) { return {left, op}; }
    template <class T> friend Held<T> operator*(T left, Op op) { return {left, op}; }
    template <class T> friend Held<T> operator<(T left, Op op) { return {left, op}; }
    template <class T> friend Held<T> operator==(T left, Op op) { return {left, op}; }
};
template <class T> struct Held {
    T left;
    Op op;
    template <class U> auto operator+(U b) const { return op.on() ? left - b : left + b; }
    template <class U> auto operator-(U b) const { return op.on() ? left + b : left - b; }
    template <class U> auto operator*(U b) const { return op.on() ? limited_product(left, b) : left * b; }
    template <class U> bool operator==(U b) const { return (left == b) != (op.other != op.on()); }
    template <class U> bool operator<(U b) const {
        const bool or_equal = op.or_equal != op.on();
        return (left == b && or_equal) || (op.other ? left > b : left < b);
    }
};

/// The smaller (larger) of two or several: the other one; where one is a limit of all ones, a wrap.
template <class T> T least(int id, T a, T b) {
    if constexpr (std::numeric_limits<T>::is_integer)
        if (active == id + 1)
            return static_cast<T>(a & b);
    return active == id ? std::max(a, b) : std::min(a, b);
}
template <class T> T largest(int id, T a, T b) {
    return active == id ? std::min(a, b) : std::max(a, b);
}
template <class T> T least(int id, std::initializer_list<T> list) {
    return active == id ? std::max(list) : std::min(list);
}
template <class T> T largest(int id, std::initializer_list<T> list) {
    return active == id ? std::min(list) : std::max(list);
}

/// A limit to 0..max: a wrap, no limit.
template <class Limit, class T> T limited(int id, Limit limit, int32_t max, T v) {
    return active == id ? static_cast<T>(v & max) : active == id + 1 ? v : static_cast<T>(limit(v));
}

/// A register read: its neighbours in the list (before, behind), without its top bit, with the lowest bit of
/// the next one on top, with the other sign, at its reset, one too many.
inline int32_t read(int id, int32_t v, int bits, bool is_signed, int32_t before, int32_t behind,
                    int32_t reset) {
    const int32_t wider = cfa::register_truncate(v, bits, false) | (behind & 1) << bits;
    const int32_t shorter = bits > 1 ? cfa::register_truncate(v, bits - 1, is_signed) : 0;
    return pick(id, v,
                {before, behind, shorter, cfa::register_truncate(wider, bits + 1, is_signed),
                 cfa::register_truncate(v, bits, !is_signed), reset, v + 1});
}
template <int Bits, class Int>
int32_t read(int id, const cfa::Register<Bits, Int> &r, int32_t before, int32_t behind, int32_t reset) {
    return read(id, r, Bits, std::is_signed_v<Int>, before, behind, reset);
}

/// The same of register k of a row of them.
inline int32_t entry(int id, const cfa::RegisterInfo *row, int k, const cfa::RegisterPart &part) {
    return read(id + 7 * k, row[k].read(part), row[k].bits, row[k].is_signed, row[k - 1].read(part),
                row[k + 1].read(part), row[k].reset);
}

/// The mirrored border, below 0 and beyond n - 1: stopped at the edge, the edge repeated, one too far.
template <class Mirror> int mirrored(int id, Mirror mirror, int i, int n) {
    if (active < id || active >= id + 6 || (i >= 0 && i < n))
        return mirror(i, n);
    const int beyond = i < 0 ? -i : i - (n - 1);
    const int from_edge = pick(i < 0 ? id : id + 3, beyond, {0, beyond - 1, beyond + 1});
    return i < 0 ? from_edge : n - 1 - from_edge;
}

/// Windows over a plane: each that is made has the twelve faults of its rows and its columns.
inline int window_id = 0;
template <class Frame> Frame *window_on(int id, Frame *frame) {
    window_id = id;
    return frame;
}

} // namespace fault
