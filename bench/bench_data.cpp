#include "bench/bench_data.h"

#include <random>

#include "cmodel/cfa/src/reg_parse/cfa_reg.h"
#include "cmodel/cmodel_top/src/reg_parse/cmodel_top_reg.h"

using namespace cfa;
using namespace cfa::narrow;

const std::vector<Sample> &bench_mosaic() {
    static const std::vector<Sample> mosaic = [] {
        std::vector<Sample> samples(static_cast<size_t>(bench_pixels));
        std::mt19937 random(1);
        for (Sample &sample : samples)
            sample = static_cast<Sample>(random() % 4096);
        return samples;
    }();
    return mosaic;
}

void set_bench_registers(bool all_features) {
    INIT_CFA_REG("NULL");
    INIT_CMODEL_TOP_REG("NULL");
    if (!all_features)
        return;
    cfa_reg.hw.reg_cfa_ymoire_enable = 1;
    cfa_reg.hw.reg_cfa_shpn_enable = 1;
    cfa_reg.hw.reg_cfa_shpn_gain_value = 40;
    cfa_reg.hw.reg_cfa_cmoire_protclr3_enable = 1;
}

void count_pixels(benchmark::State &state, double pixels) {
    using benchmark::Counter;
    const auto per_pixel = static_cast<Counter::Flags>(Counter::kIsIterationInvariantRate | Counter::kInvert);
    state.counters["per_pixel"] = Counter(pixels, per_pixel);
}
