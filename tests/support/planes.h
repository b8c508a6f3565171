// What the stage tests share: small planes, mirrored access sample by sample, comparison.
#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>

#include "cmodel/common/frame.h"
#include "tools/cfatool/random/noise.h"

/// A small owned plane; passes as FRAME *.
class Plane {
  public:
    Plane() = default; // no plane: assigned later
    Plane(const Plane &other);
    Plane(Plane &&) = default;
    Plane &operator=(Plane &&) = default;
    Plane(int width, int height, int channels = 1, int32_t fill = 0);
    /// Rows top to bottom, channels interleaved.
    Plane(int width, int height, int channels, std::initializer_list<int32_t> samples);
    /// A plane of zeros of the same width and height.
    explicit Plane(const Plane &size_of, int channels) : Plane(size_of.width(), size_of.height(), channels) {}
    explicit Plane(cfa::FramePtr frame) : frame_(std::move(frame)) {}

    operator FRAME *() const { return frame_.get(); }
    int width() const { return static_cast<int>(frame_->width); }
    int height() const { return static_cast<int>(frame_->height); }

    /// The sample at (y, x), any position within one reflection of the plane.
    int32_t operator()(int y, int x, int c = 0) const;
    void set(int y, int x, int c, int32_t v) {
        cfa::sample(frame_.get(), y, x, c) = static_cast<uint32_t>(v);
    }

  private:
    cfa::FramePtr frame_;
};

/// Repeatable noise.
struct Noise : cfatool::Noise {
    using cfatool::Noise::Noise;
    Plane plane(int width, int height, int channels, int32_t low, int32_t high);
};

/// Compares every sample; a plane that differs prints its first difference: y, x, channel, got, want.
void expect_plane(const char *name, const Plane &got,
                  const std::function<int32_t(int y, int x, int c)> &want);
