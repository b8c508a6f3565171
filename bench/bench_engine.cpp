// The line engine in memory: rows come from an array and go nowhere, or into other arrays; and the library,
// which does the latter for any form of memory.
#include <algorithm>
#include <cstring>

#include "bench/bench_data.h"
#include "block/cfa_block.h"
#include "cmodel/cfa/src/lines/engine.h"
#include "cmodel/cfa/src/reg_parse/cfa_reg.h"

using namespace cfa;
using namespace cfa::narrow;

namespace {

constexpr size_t SAMPLES = size_t{bench_width} * bench_height;

class ArraySource : public RowSource<Sample> {
  public:
    void read(int y, Sample *even, Sample *odd) override {
        const Sample *const row = bench_mosaic().data() + static_cast<size_t>(y) * bench_width;
        for (int i = 0; i < bench_width / 2; ++i) {
            even[i] = row[2 * i];
            odd[i] = row[2 * i + 1];
        }
    }
};

// Looks at one sample of each row.
class NullSink : public RowSink<Sample> {
  public:
    void rgb(int, SplitRow<Sample> red, SplitRow<Sample> green, SplitRow<Sample> blue) override {
        sum_ += red.half[0][0] + green.half[0][0] + blue.half[0][0];
    }
    void dc(int, SplitRow<Sample> row) override { sum_ += row.half[0][0]; }
    void gain(int, SplitRow<Sample> row) override { sum_ += row.half[0][0]; }
    long sum() const { return sum_; }

  private:
    long sum_ = 0;
};

void engine(benchmark::State &state, bool all_features) {
    set_bench_registers(all_features);
    bench_mosaic();
    for (auto _ : state) {
        ArraySource source;
        NullSink sink;
        run_line_engine(bench_width, bench_height, source, sink);
        benchmark::DoNotOptimize(sink.sum());
    }
    count_pixels(state, bench_pixels);
}

// Keeps the half-rows as they are, plane by plane.
class ArraySink : public RowSink<Sample> {
  public:
    void rgb(int y, SplitRow<Sample> red, SplitRow<Sample> green, SplitRow<Sample> blue) override {
        keep(0, y, red);
        keep(1, y, green);
        keep(2, y, blue);
    }
    void dc(int y, SplitRow<Sample> row) override { keep(3, y, row); }
    void gain(int y, SplitRow<Sample> row) override { keep(4, y, row); }

  private:
    void keep(int plane, int y, SplitRow<Sample> row) {
        const size_t first =
            (static_cast<size_t>(plane) * bench_height + static_cast<size_t>(y)) * bench_width;
        for (int parity = 0; parity < 2; ++parity)
            std::copy_n(row.half[parity], bench_width / 2,
                        samples_.data() + first + parity * bench_width / 2);
    }
    std::vector<int16_t> samples_ = std::vector<int16_t>(5 * SAMPLES, 1);
};

void engine_into_memory(benchmark::State &state, bool all_features) {
    set_bench_registers(all_features);
    bench_mosaic();
    ArraySink sink;
    for (auto _ : state) {
        ArraySource source;
        run_line_engine(bench_width, bench_height, source, sink);
    }
    count_pixels(state, bench_pixels);
}

void library(benchmark::State &state, bool all_features) {
    set_bench_registers(all_features);
    cfa_block *const block = cfa_block_new();
    for (const RegisterInfo &info : cfa_reg_hw_table().registers)
        cfa_block_set(block, info.key, info.read(cfa_reg.hw));
    const std::vector<uint16_t> raw(bench_mosaic().begin(), bench_mosaic().end());
    std::vector<uint16_t> samples(5 * SAMPLES, 1);
    const cfa_image rgb = {samples.data(), 0, 0, 0}, dc = {samples.data() + 3 * SAMPLES, 0, 0, 0},
                    gain = {samples.data() + 4 * SAMPLES, 0, 0, 0};
    for (auto _ : state)
        if (cfa_block_run(block, bench_width, bench_height, raw.data(), 0, &rgb, &dc, &gain) != CFA_OK)
            state.SkipWithError(cfa_block_error(block));
    cfa_block_delete(block);
    count_pixels(state, bench_pixels);
}

// What the memory of this machine copies; bytes_per_second counts what is copied once.
void memory_copy(benchmark::State &state) {
    const size_t bytes = size_t{128} << 20;
    const std::vector<char> from(bytes, 1);
    std::vector<char> to(bytes, 2);
    for (auto _ : state) {
        std::memcpy(to.data(), from.data(), bytes);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(bytes) * static_cast<int64_t>(state.iterations()));
}

} // namespace

void register_engine_benches() {
    benchmark::RegisterBenchmark("memory_copy", memory_copy);
    for (const bool all : {false, true}) {
        const std::string features = all ? "/all_features" : "/default";
        const std::pair<const char *, void (*)(benchmark::State &, bool)> kinds[] = {
            {"engine", engine}, {"engine_into_memory", engine_into_memory}, {"library", library}};
        for (const auto &[kind, function] : kinds)
            benchmark::RegisterBenchmark((kind + features).c_str(), function, all)
                ->Unit(benchmark::kMillisecond);
    }
}
