// cfa_bench: nanoseconds a pixel in memory: the line engine, its kernels, the model and its stages.
// Takes Google Benchmark's options, such as --benchmark_filter=engine or --benchmark_repetitions=5.
#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "bench/bench_data.h"
#include "log/log.h"

using namespace cfa;

namespace {

// Prints what the console reporter prints, with nanoseconds a pixel, and keeps those for the summary.
class RatioReporter : public benchmark::ConsoleReporter {
  public:
    RatioReporter() : ConsoleReporter(OO_None) {}
    void ReportRuns(const std::vector<Run> &runs) override {
        std::vector<Run> shown = runs;
        for (Run &run : shown)
            if (const auto counter = run.counters.find("per_pixel");
                counter != run.counters.end() && run.aggregate_unit == benchmark::kTime) // not a percentage
                label(run, counter->second.value * 1e9);
        ConsoleReporter::ReportRuns(shown);
    }

    void print_summary() {
        print_ratio("model/default", "engine/default");
        print_ratio("model/all_features", "engine/all_features");
        print_ratio("engine/all_features", "engine/default");
        double kernels = 0;
        for (const auto &[name, unused] : nanoseconds_)
            kernels += name.rfind("kernel/", 0) == 0 ? median(name) : 0;
        if (kernels > 0)
            std::printf("sum of the kernels run: %.2f ns a pixel\n", kernels);
    }

  private:
    // The console reporter would print small counters as thousandths.
    void label(Run &run, double nanoseconds) {
        char text[40];
        std::snprintf(text, sizeof text, "%9.3f ns a pixel", nanoseconds);
        run.report_label = text;
        run.counters.clear();
        if (run.run_type == Run::RT_Iteration)
            nanoseconds_[run.run_name.function_name].push_back(nanoseconds);
    }

    double median(const std::string &name) {
        std::vector<double> &all = nanoseconds_[name];
        std::sort(all.begin(), all.end());
        return all.empty() ? 0 : all[all.size() / 2];
    }
    void print_ratio(const char *above, const char *below) {
        if (median(above) > 0 && median(below) > 0)
            std::printf("%s / %s: %.2f / %.2f ns a pixel = %.2f\n", above, below, median(above),
                        median(below), median(above) / median(below));
    }

    std::map<std::string, std::vector<double>> nanoseconds_; // a pixel, of all repetitions
};

} // namespace

int main(int argc, char **argv) {
    log_set_quiet(1);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    register_engine_benches();
    register_model_benches();
    register_kernel_benches();
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.print_summary();
    return 0;
}
