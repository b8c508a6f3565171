// Line buffers: the few rows of a plane that are alive, each split by column parity, with mirrored margins.
//
//     columns   0 1 2 3 4 5 6         half 0:  0 2 4 6      half 1:  1 3 5
//
// Element i of half p is column 2*i + p. Margins continue a half-row to both sides with the mirrored samples,
// whose column parity is that of the place they stand in for.
#pragma once

#include <cassert>
#include <cstddef>
#include <new>
#include <vector>

#include "cmodel/cfa/src/kit/window.h"
#include "cmodel/cfa/src/lines/kernels/basics.h"

namespace cfa {

/// Elements before and behind a half-row: two are mirrored, the rest keep half-rows apart and aligned.
constexpr int HALF_MARGIN = 32;

/// Elements of a half-row rounded up to whole vectors. Kernels compute all of them; what lies
/// beyond the row is never looked at.
constexpr int padded_half(int width) {
    return ((width + 1) / 2 + 31) / 32 * 32;
}

/// Memory that starts at a whole vector, so that reads and writes of a site itself
/// never straddle two cache lines.
template <class T> struct VectorAligned {
    using value_type = T;
    static constexpr std::align_val_t ALIGNMENT{64};

    VectorAligned() = default;
    template <class U> VectorAligned(const VectorAligned<U> &) {}
    T *allocate(size_t count) { return static_cast<T *>(::operator new(count * sizeof(T), ALIGNMENT)); }
    void deallocate(T *p, size_t) { ::operator delete(p, ALIGNMENT); }
    bool operator==(const VectorAligned &) const = default;
};

/// A ring of rows of T. Rows are named by their y; a row beyond the top or bottom border is its mirror image.
template <class T> class LineBuffer {
  public:
    LineBuffer(int width, int height, int rows)
        : width_(width), height_(height), rows_(rows),
          stride_(static_cast<size_t>(padded_half(width) + 2 * HALF_MARGIN)),
          store_(static_cast<size_t>(rows) * 2 * stride_), half_(static_cast<size_t>(rows) * 2),
          row_of_(static_cast<size_t>(rows) * 2, -1) {
        for (size_t k = 0; k < half_.size(); ++k)
            half_[k] = store_.data() + k * stride_ + HALF_MARGIN;
    }

    /// Element 0 of the half-row. REQUIRES row y, or its mirror image, to be among the last `rows` written.
    const T *half(int y, int parity) const {
        assert(row_of_[slot(y, parity)] == mirror_index(y, height_));
        return half_[slot(y, parity)];
    }

    /// Element 0 of the half-row, to be written. REQUIRES 0 <= y < height.
    T *write(int y, int parity) {
        assert(0 <= y && y < height_);
        T *const own = stored(y, parity);
        half_[slot(y, parity)] = own;
        row_of_[slot(y, parity)] = y;
        return own;
    }

    /// Lets a half-row be read from another plane's, which must stay alive as
    /// long, until it is written again.
    void alias(int y, int parity, const T *other) {
        half_[slot(y, parity)] = other;
        row_of_[slot(y, parity)] = y;
    }

    /// Continues a finished half-row by its mirrored samples, two on each side.
    void mirror(int y, int parity) {
        T *const own = stored(y, parity);
        const int n = (width_ + 1 - parity) / 2;
        const auto element = [&](int i) { return mirror_index(2 * i + parity, width_) / 2; };
        own[-1] = own[element(-1)];
        own[-2] = own[element(-2)];
        own[n] = own[element(n)];
        own[n + 1] = own[element(n + 1)];
    }
    void mirror(int y) {
        mirror(y, 0);
        mirror(y, 1);
    }

    /// The half-row of the other parity, placed so that element i is the left
    /// neighbour of element i of `parity`.
    const T *left(int y, int parity) const { return parity == 0 ? half(y, 1) - 1 : half(y, 0); }

  private:
    size_t slot(int y, int parity) const {
        return static_cast<size_t>(mirror_index(y, height_) % rows_) * 2 + static_cast<size_t>(parity);
    }
    T *stored(int y, int parity) { return store_.data() + slot(y, parity) * stride_ + HALF_MARGIN; }

    int width_;
    int height_;
    int rows_;
    size_t stride_;
    std::vector<T, VectorAligned<T>> store_;
    std::vector<const T *> half_;
    std::vector<int> row_of_; // the row that a slot holds, -1 for none yet: what asserts look at
};

} // namespace cfa

namespace cfa::CFA_ROWS {

using Lines = LineBuffer<Sample>;

/// Rows y-R to y+R of a plane, seen from one column parity.
template <int R> Sight<R> sight(const Lines &plane, int y, int parity) {
    Sight<R> s;
    for (int dy = -R; dy <= R; ++dy) {
        s.own[dy + R] = plane.half(y + dy, parity);
        s.left[dy + R] = plane.left(y + dy, parity);
    }
    return s;
}

} // namespace cfa::CFA_ROWS
