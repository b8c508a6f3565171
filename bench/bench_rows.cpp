#include "bench/bench_rows.h"

#include <random>

using namespace cfa;
using namespace cfa::narrow;

namespace {

constexpr int n = padded_half(bench_width);

} // namespace

BenchRows::BenchRows() {
    fill_samples();
    std::mt19937 random(2);
    for (int parity = 0; parity < 2; ++parity) {
        const DirectionByLeft left = by_left(parity);
        int32_t *const variance = variance_.write(0, parity);
        for (int i = 0; i < n; ++i) {
            variance[i] = static_cast<int32_t>(random() % 131072);
            for (Sample *const row : {left.if_blend, left.if_horizontal, left.if_vertical})
                row[i] = static_cast<Sample>(static_cast<int>(random() % 3) - 1);
        }
    }
    compose_pairs(by_left(0), by_left(1), step_.write(0, 0), n);
    scan_pairs(step(), before_.write(0, 0), bench_width / 2);
    blend_weights(variance(0), variance(1), weights(), n);
}

void BenchRows::fill_samples() {
    for (int y = 0; y < rows; ++y) {
        for (int parity = 0; parity < 2; ++parity) {
            Sample *const half = samples_.write(y, parity);
            for (int i = 0; i < bench_width / 2; ++i)
                half[i] = bench_mosaic()[static_cast<size_t>(y) * bench_width + 2 * i + parity];
        }
        samples_.mirror(y);
    }
}

DirectionByLeft BenchRows::by_left(int parity) {
    return {by_left_[0].write(0, parity), by_left_[1].write(0, parity), by_left_[2].write(0, parity)};
}

DirectionEvidence BenchRows::evidence() const {
    const Sample *const directions = by_left_[0].half(0, 1); // votes and directions have the same range
    return {in(0),      in(1),       variance(0), variance(1), in(2),
            directions, direction(), directions,  direction(), directions};
}
