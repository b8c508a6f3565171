// What the benchmarks share: the picture, the registers and the counter.
#pragma once

#include <vector>

#include <benchmark/benchmark.h>

#include "cmodel/cfa/src/lines/kernels/basics.h"

constexpr int bench_width = 2000;
constexpr int bench_height = 1500;
constexpr double bench_pixels = double{bench_width} * bench_height;

/// A random u12 mosaic of that size, the same in every run.
const std::vector<cfa::narrow::Sample> &bench_mosaic();

/// Sets all registers to their reset values; `all_features` adds luma moire,
/// sharpening and the third protected hue.
void set_bench_registers(bool all_features);

/// Gives the benchmark its counter "per_pixel": seconds of processor time; the console shows nanoseconds.
/// `pixels` are those of one iteration.
void count_pixels(benchmark::State &state, double pixels);

void register_model_benches();
void register_engine_benches();
void register_kernel_benches();
