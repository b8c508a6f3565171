#include "cmodel/cfa/src/lines/kernels/kernels.h"

namespace cfa::CFA_ROWS {

namespace {

// The terms of the activity, each at most 16380: own colour, diagonals, the
// nearest two, and the two outer lines.
struct Terms {
    Sample own, diagonal, near, outer;
};

constexpr Terms along_row(const Sight<2>::Site &P) {
    return {static_cast<Sample>(distance(P(0, 0), P(0, -2)) + distance(P(0, 0), P(0, 2))),
            static_cast<Sample>(distance(P(-1, -1), P(-1, 1)) + distance(P(1, -1), P(1, 1))),
            distance(P(0, -1), P(0, 1)),
            static_cast<Sample>(distance(P(-1, -2), P(-1, 0)) + distance(P(-1, 0), P(-1, 2)) +
                                distance(P(1, -2), P(1, 0)) + distance(P(1, 0), P(1, 2)))};
}

constexpr Terms along_column(const Sight<2>::Site &P) {
    return {static_cast<Sample>(distance(P(0, 0), P(-2, 0)) + distance(P(0, 0), P(2, 0))),
            static_cast<Sample>(distance(P(-1, -1), P(1, -1)) + distance(P(-1, 1), P(1, 1))),
            distance(P(-1, 0), P(1, 0)),
            static_cast<Sample>(distance(P(-2, -1), P(0, -1)) + distance(P(0, -1), P(2, -1)) +
                                distance(P(-2, 1), P(0, 1)) + distance(P(0, 1), P(2, 1)))};
}

constexpr Sample at_red_blue(const Terms &t) {
    return (t.own >> 1) + (t.diagonal >> 1) + t.near + (t.outer >> 1);
}
constexpr Sample at_green(const Terms &t) {
    return t.own + (t.diagonal >> 1) + t.near + (t.outer >> 2);
}

} // namespace

CFA_KERNEL void activity_at_red_blue(Sight<2> raw, Sample *lh, Sample *lv, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const auto P = raw.at(i);
        lh[i] = at_red_blue(along_row(P));
        lv[i] = at_red_blue(along_column(P));
    }
}

CFA_KERNEL void activity_at_green(Sight<2> raw, Sample *lh, Sample *lv, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i) {
        const auto P = raw.at(i);
        lh[i] = at_green(along_row(P));
        lv[i] = at_green(along_column(P));
    }
}

CFA_KERNEL void limited_activity(const Sample *activity, Sample *out, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i)
        out[i] = least(32767, activity[i]);
}

CFA_KERNEL void larger(const Sample *a, const Sample *b, Sample *out, int n) {
    CFA_LOOP
    for (Index i = 0; i < n; ++i)
        out[i] = largest(a[i], b[i]);
}

} // namespace cfa::CFA_ROWS
