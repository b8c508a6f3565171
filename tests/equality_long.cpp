// cfa_equality SMALL LARGE [SEED]: the line engine against the model on that many small and large random
// pictures with random registers, and its reciprocal against the table over every int32.

#define DOCTEST_CONFIG_IMPLEMENT
#include <doctest/doctest.h>

#include <cstdio>
#include <cstdlib>

#include "log/log.h"
#include "tests/support/equality.h"
#include "tests/support/reciprocals.h"

using namespace cfa;

namespace {

constexpr int ENOUGH_FAILURES = 10;

// Returns the number of pictures that differ.
int compare_pictures(const char *kind, uint32_t first_seed, int count, PictureSize (*size)(uint32_t)) {
    int served = 0;
    int failures = 0;
    int done = 0;
    for (; done < count && failures < ENOUGH_FAILURES; done++) {
        const uint32_t seed = first_seed + static_cast<uint32_t>(done);
        const Equality result = compare_engine_with_model(seed, size(seed));
        served += result.served;
        failures += !result.difference.empty();
        std::fputs(result.difference.c_str(), stdout);
    }
    std::printf("%d %s pictures, %d on the engine, %d differ\n", done, kind, served, failures);
    std::fflush(stdout);
    return failures;
}

} // namespace

int main(int argc, char **argv) {
    if (argc < 3 || argc > 4) {
        std::fprintf(stderr, "Usage: cfa_equality SMALL LARGE [SEED]   (for example 100000 200)\n");
        return 2;
    }
    log_set_quiet(1);
    const uint32_t seed = argc > 3 ? static_cast<uint32_t>(std::strtoul(argv[3], nullptr, 10)) : 1;
    int64_t failures = compare_pictures("small", seed, std::atoi(argv[1]), small_size);
    failures += compare_pictures("large", seed, std::atoi(argv[2]), large_size);
    const int64_t wrong = count_reciprocal_differences(-(int64_t{1} << 31), int64_t{1} << 32);
    std::printf("2^32 reciprocals, %lld differ\n", static_cast<long long>(wrong));
    return failures + wrong == 0 ? 0 : 1;
}
