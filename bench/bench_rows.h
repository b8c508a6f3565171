// Half-rows for kernels: inputs with random contents within their ranges, and outputs.
#pragma once

#include "bench/bench_data.h"
#include "cmodel/cfa/src/lines/kernels/kernels.h"
#include "cmodel/cfa/src/lines/line_buffer.h"

namespace cfa::narrow {

class BenchRows {
  public:
    BenchRows();

    /// Moves to other rows, so that a kernel does not see the same ones again at once.
    void advance() { y_ = y_ % 8 + 3; }

    /// u12 rows with margins: the k-th, five of them from the k-th on, a neighbourhood k rows further down.
    const Sample *in(int k) const { return samples_.half(y_ + k / 2, k % 2); }
    FiveSamples five(int k) const { return {{in(k), in(k + 1), in(k + 2), in(k + 3), in(k + 4)}}; }
    template <int R> Sight<R> sight(int k = 0) const { return narrow::sight<R>(samples_, y_ + k, 0); }

    const int32_t *variance(int k) const { return variance_.half(0, k); } // 0..131071; k is 0 or 1
    const Sample *direction() const { return by_left_[0].half(0, 0); }    // +1, 0, -1
    DirectionEvidence evidence() const;
    DirectionByLeft by_left(int parity);
    const uint32_t *step() const { return step_.half(0, 0); } // what compose_pairs makes of by_left
    const Sample *before() const { return before_.half(0, 0); }
    BlendWeights weights() { return {weights_.write(0, 0), weights_.write(0, 1), inverse_.write(0, 0)}; }

    Sample *out(int k) { return out_.write(k, 0); }
    int32_t *wide_out() { return wide_out_.write(0, 0); }
    uint32_t *step_out() { return step_.write(0, 1); }

  private:
    static constexpr int rows = 24;
    static Lines lines(int count) { return Lines(bench_width, rows, count); }
    void fill_samples();

    int y_ = 3;
    Lines samples_ = lines(rows), out_ = lines(8), before_ = lines(1), weights_ = lines(1);
    Lines by_left_[3] = {lines(1), lines(1), lines(1)};
    LineBuffer<int32_t> variance_{bench_width, rows, 1}, inverse_ = {bench_width, rows, 1};
    LineBuffer<int32_t> wide_out_{bench_width, rows, 1};
    LineBuffer<uint32_t> step_{bench_width, rows, 1};
};

} // namespace cfa::narrow
