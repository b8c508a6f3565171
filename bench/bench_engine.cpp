// The line engine in memory: rows come from an array and go nowhere.
#include <cstring>

#include "bench/bench_data.h"
#include "cmodel/cfa/src/lines/engine.h"

using namespace cfa;
using namespace cfa::narrow;

namespace {

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
        const char *const name = all ? "engine/all_features" : "engine/default";
        benchmark::RegisterBenchmark(name, engine, all)->Unit(benchmark::kMillisecond);
    }
}
