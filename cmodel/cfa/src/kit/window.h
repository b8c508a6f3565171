// The neighbourhood of a pixel: a few mirrored rows of one channel, as the hardware's line buffers hold them.
#pragma once

#include <algorithm>
#include <array>
#include <cassert>
#include <utility>
#include <vector>

#include "cmodel/common/frame.h"

/// The mirrored-border rule: a single reflection about the edge sample, which is not repeated.
/// -1 -> 1, -2 -> 2, n -> n-2, n+1 -> n-3.
constexpr int mirror_index(int i, int n) {
    if (i < 0)
        return -i;
    if (i > n - 1)
        return 2 * (n - 1) - i;
    return i;
}

namespace cfa {

/// A window of 2*RY+1 rows and 2*RX+1 columns over one channel of a frame, read with mirrored borders.
///
///     Window<2> P(raw);
///     for each y: P.move_to(y);
///         for each x: P.centre_on(x);  ... P(0, -1) + P(0, 1) ...
///
/// REQUIRES width > RX and height > RY (a single reflection must stay inside the frame).
template <int RY, int RX = RY> class Window {
  public:
    explicit Window(const FRAME *frame, int channel = 0)
        : frame_(frame), channel_(channel), width_(width_of(frame)), height_(height_of(frame)) {
        assert(width_ > RX && height_ > RY);
        for (auto &line : lines_)
            line.resize(static_cast<size_t>(width_) + 2 * RX);
    }

    /// Centres the window on row y. Moving on by one row loads one row.
    void move_to(int y) {
        if (loaded_ && y == y_ + 1) {
            std::rotate(lines_.begin(), lines_.begin() + 1, lines_.end());
            load(RY, y + RY);
        } else {
            for (int dy = -RY; dy <= RY; ++dy)
                load(dy, y + dy);
        }
        for (int i = 0; i <= 2 * RY; ++i)
            row_[i] = lines_[i].data() + RX;
        y_ = y;
        loaded_ = true;
    }

    /// Centres the window on column x of its row.
    void centre_on(int x) {
        assert(0 <= x && x < width_);
        x_ = x;
    }

    /// The sample dy rows below and dx columns right of the centre. REQUIRES |dy| <= RY, |dx| <= RX.
    int32_t operator()(int dy, int dx) const {
        assert(-RY <= dy && dy <= RY && -RX <= dx && dx <= RX);
        return row_[dy + RY][x_ + dx];
    }

  private:
    void load(int dy, int row) {
        int32_t *const line = lines_[dy + RY].data() + RX;
        const int y = mirror_index(row, height_);
        for (int x = 0; x < width_; ++x)
            line[x] = value(frame_, y, x, channel_);
        for (int k = 1; k <= RX; ++k) {
            line[-k] = line[mirror_index(-k, width_)];
            line[width_ - 1 + k] = line[mirror_index(width_ - 1 + k, width_)];
        }
    }

    const FRAME *frame_;
    int channel_;
    int width_;
    int height_;
    int x_ = 0;
    int y_ = 0;
    bool loaded_ = false;
    std::array<std::vector<int32_t>, 2 * RY + 1> lines_;
    std::array<const int32_t *, 2 * RY + 1> row_{};
};

} // namespace cfa
