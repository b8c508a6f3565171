// Single kernels of the line engine on rows in cache. What is reported is a kernel's share of a pixel
// of the picture: the time of all its calls for one row, over the width. The engine adds what the
// rows' way through the cache costs.
#include <string>

#include "bench/bench_data.h"
#include "bench/bench_rows.h"
#include "cmodel/cfa/src/lines/kernels/kernels.h"
#include "cmodel/cfa/src/lines/settings.h"

using namespace cfa;
using namespace cfa::narrow;

namespace {

constexpr int n = padded_half(bench_width);

struct Kernel {
    const char *name;
    int calls; // for one row of the picture, all features on
    void (*run)(BenchRows &r, const EngineSettings &s);
};

// clang-format off
const Kernel kernels[] = {
    {"average_at_red_blue", 1, [](BenchRows &r, const EngineSettings &) {
         average_at_red_blue(r.sight<2>(), r.out(0), r.out(1), r.out(2), n); }},
    {"average_at_green", 1, [](BenchRows &r, const EngineSettings &) {
         average_at_green(r.sight<2>(), r.out(0), r.out(1), r.out(2), n); }},
    {"predict_green", 1, [](BenchRows &r, const EngineSettings &) {
         predict_green(r.sight<2>(), {r.out(0), r.out(1), r.out(2), r.out(3)}, n); }},
    {"predict_at_green", 2, [](BenchRows &r, const EngineSettings &) {
         predict_at_green(r.in(0), r.in(1), r.in(2), r.in(3), r.out(0), r.out(1), n); }},
    {"predict_at_red_blue", 2, [](BenchRows &r, const EngineSettings &) {
         predict_at_red_blue(r.in(0), r.in(1), r.in(2), r.out(0), n); }},
    {"largest_of_columns", 2, [](BenchRows &r, const EngineSettings &) {
         largest_of_columns(r.five(0), r.out(0), r.out(1), n); }},
    {"largest_of_window", 2, [](BenchRows &r, const EngineSettings &) {
         largest_of_window(r.five(0), r.five(5), r.out(0), n); }},
    {"green_extremes_at_red_blue", 1, [](BenchRows &r, const EngineSettings &) {
         green_extremes_at_red_blue(r.sight<2>(), {r.out(0), r.out(1)}, n); }},
    {"green_extremes_at_green", 1, [](BenchRows &r, const EngineSettings &) {
         green_extremes_at_green(r.sight<2>(), {r.out(0), r.out(1)}, n); }},
    {"activity_at_red_blue", 1, [](BenchRows &r, const EngineSettings &) {
         activity_at_red_blue(r.sight<2>(), r.out(0), r.out(1), n); }},
    {"activity_at_green", 1, [](BenchRows &r, const EngineSettings &) {
         activity_at_green(r.sight<2>(), r.out(0), r.out(1), n); }},
    {"sharpen_green", 1, [](BenchRows &r, const EngineSettings &s) {
         sharpen_green(r.sight<2>(), r.in(5), r.in(6), {r.out(2), r.out(3)}, s.sharpening, r.out(0), r.out(1), n); }},
    {"variance_at_green", 2, [](BenchRows &r, const EngineSettings &) {
         variance_at_green(r.five(0), r.five(1), r.five(2), r.five(3), r.wide_out(), n); }},
    {"distances", 8, [](BenchRows &r, const EngineSettings &) { distances(r.in(0), r.in(1), r.out(0), n); }},
    {"distances_from_mean", 2, [](BenchRows &r, const EngineSettings &) {
         distances_from_mean(r.in(0), r.in(1), r.in(2), r.out(0), n); }},
    {"outer_spread", 2, [](BenchRows &r, const EngineSettings &) {
         outer_spread(r.in(0), r.in(1), r.in(2), r.out(0), n); }},
    {"variance_at_red_blue", 2, [](BenchRows &r, const EngineSettings &) {
         variance_at_red_blue(r.five(0), r.in(5), r.in(6), r.wide_out(), n); }},
    {"direction_at_red_blue", 1, [](BenchRows &r, const EngineSettings &s) {
         direction_at_red_blue(r.evidence(), s.at_red_blue, {r.out(0), r.out(1), r.out(2)}, n); }},
    {"direction_at_green", 1, [](BenchRows &r, const EngineSettings &s) {
         direction_at_green(r.evidence(), s.at_green, {r.out(0), r.out(1), r.out(2)}, n); }},
    {"weighted_luma", 1, [](BenchRows &r, const EngineSettings &) {
         weighted_luma(r.in(0), r.in(1), r.in(2), r.out(0), n); }},
    {"votes_of_neighbours", 2, [](BenchRows &r, const EngineSettings &s) {
         votes_of_neighbours(r.in(0), r.in(1), s.strong, r.out(0), n); }},
    {"vote_of_right", 2, [](BenchRows &r, const EngineSettings &s) {
         vote_of_right(r.variance(0), r.variance(1), r.in(0), r.in(1), s.strong, r.out(0), n); }},
    {"compose_pairs", 1, [](BenchRows &r, const EngineSettings &) {
         compose_pairs(r.by_left(0), r.by_left(1), r.step_out(), n); }},
    {"scan_pairs", 1, [](BenchRows &r, const EngineSettings &) {
         scan_pairs(r.step(), r.out(0), bench_width / 2); }},
    {"resolve_pairs", 1, [](BenchRows &r, const EngineSettings &) {
         resolve_pairs(r.by_left(0), r.by_left(1), r.before(), r.out(0), r.out(1), n); }},
    {"blend_weights", 2, [](BenchRows &r, const EngineSettings &) {
         blend_weights(r.variance(0), r.variance(1), {r.out(0), r.out(1), r.wide_out()}, n); }},
    {"neighbourhood_range", 2, [](BenchRows &r, const EngineSettings &) {
         neighbourhood_range(r.sight<1>(), r.out(0), r.out(1), n); }},
    {"choose", 1, [](BenchRows &r, const EngineSettings &) {
         choose(r.in(0), r.in(1), r.direction(), r.weights(), r.out(0), n); }},
    {"choose_within", 3, [](BenchRows &r, const EngineSettings &) {
         choose_within(r.in(0), r.in(1), r.direction(), r.weights(), r.in(2), r.in(3), r.out(0), n); }},
    {"binomial_3x3", 4, [](BenchRows &r, const EngineSettings &) { binomial_3x3(r.sight<1>(), r.out(0), n); }},
    {"sum_of_steps", 4, [](BenchRows &r, const EngineSettings &) { sum_of_steps(r.five(0), r.out(0), n); }},
    {"gradient_sum", 2, [](BenchRows &r, const EngineSettings &) {
         gradient_sum(r.five(0), r.five(5), r.wide_out(), n); }},
    {"luma_moire_weight", 2, [](BenchRows &r, const EngineSettings &s) {
         luma_moire_weight({{{r.in(0), r.in(3)}, {r.in(1), r.in(4)}, {r.in(2), r.in(5)}}}, r.variance(0), s.luma,
                           r.out(0), n); }},
    {"average_luma", 2, [](BenchRows &r, const EngineSettings &) {
         average_luma(r.in(0), r.in(1), r.in(2), r.out(0), n); }},
    {"remove_luma_moire", 6, [](BenchRows &r, const EngineSettings &s) {
         remove_luma_moire(r.sight<0>(), r.in(1), r.in(2), r.in(3), s.luma, r.out(0), n); }},
    {"color_distance_weight", 2, [](BenchRows &r, const EngineSettings &s) {
         color_distance_weight(r.in(0), r.in(1), r.in(2), s.color_distance, r.out(0), n); }},
    {"sum_of_five", 4, [](BenchRows &r, const EngineSettings &) { sum_of_five(r.five(0), r.out(0), n); }},
    {"directional_spread_at_red_blue", 1, [](BenchRows &r, const EngineSettings &s) {
         directional_spread_at_red_blue(r.sight<2>(), r.sight<2>(5), r.five(3), r.five(4), s.directional, r.out(0), n); }},
    {"directional_spread_at_green", 1, [](BenchRows &r, const EngineSettings &s) {
         directional_spread_at_green(r.sight<2>(), r.sight<2>(5), r.five(3), r.five(4), s.directional, r.out(0), n); }},
    {"edge_spread_weight", 2, [](BenchRows &r, const EngineSettings &s) {
         edge_spread_weight(r.in(0), r.in(1), s.edge, r.out(0), n); }},
    {"first_difference_row", 2, [](BenchRows &r, const EngineSettings &) {
         first_difference_row(r.sight<0>(), r.out(0), n); }},
    {"first_difference_column", 2, [](BenchRows &r, const EngineSettings &) {
         first_difference_column(r.five(0), r.out(0), n); }},
    {"phase_difference_weight", 2, [](BenchRows &r, const EngineSettings &s) {
         phase_difference_weight(r.sight<0>(), r.five(1), s.phase, r.out(0), n); }},
    {"largest_of_three", 2, [](BenchRows &r, const EngineSettings &) {
         largest_of_three(r.in(0), r.in(1), r.in(2), r.out(0), n); }},
    {"largest_of_seven", 2, [](BenchRows &r, const EngineSettings &) {
         largest_of_seven(r.sight<0>(), r.out(0), n); }},
    {"mix_edges", 2, [](BenchRows &r, const EngineSettings &) {
         mix_edges(r.in(0), r.in(1), r.in(2), r.out(0), n); }},
    {"removal_weight", 2, [](BenchRows &r, const EngineSettings &) {
         removal_weight(r.sight<0>(), r.sight<1>(5), r.out(0), n); }},
    {"remove_color_moire", 4, [](BenchRows &r, const EngineSettings &s) {
         remove_color_moire(r.in(0), r.in(1), s.strength, r.out(0), n); }},
    {"sharpen_detail", 2, [](BenchRows &r, const EngineSettings &s) {
         sharpen_detail(r.sight<1>(), r.in(5), r.in(6), r.in(7), s.sharpen, r.out(0), r.out(1), n); }},
    {"sharpen_gain", 2, [](BenchRows &r, const EngineSettings &s) {
         sharpen_gain(r.in(0), r.in(1), s.sharpen, r.out(0), n); }},
    {"add_detail", 6, [](BenchRows &r, const EngineSettings &s) { add_detail(r.in(0), s.sharpen, r.out(0), n); }},
};
// clang-format on

void kernel_bench(benchmark::State &state, const Kernel &kernel) {
    set_bench_registers(true);
    const EngineSettings settings = read_engine_settings();
    BenchRows rows;
    for (auto _ : state) {
        rows.advance();
        kernel.run(rows, settings);
        benchmark::ClobberMemory();
    }
    count_pixels(state, double{bench_width} / kernel.calls);
}

} // namespace

void register_kernel_benches() {
    for (const Kernel &kernel : kernels)
        benchmark::RegisterBenchmark((std::string("kernel/") + kernel.name).c_str(), kernel_bench, kernel);
}
