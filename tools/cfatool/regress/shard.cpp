#include "tools/cfatool/regress/shard.h"

#include <cstdlib>
#include <fmt/core.h>
#include <sched.h>

#include "tools/cfatool/base/numbers.h"
#include "tools/cfatool/base/trouble.h"

namespace cfatool {
namespace {

uint64_t environment(const char *name, uint64_t otherwise) {
    const char *const text = std::getenv(name);
    return text == nullptr ? otherwise : static_cast<uint64_t>(parse_decimal(text, name, 0, INT64_MAX));
}

} // namespace

Shard shard_of(const std::string &text) {
    if (!text.empty()) {
        const std::vector<int64_t> numbers = parse_list(text, "--shard", '/', 2, 1, INT32_MAX);
        if (numbers[0] > numbers[1])
            throw UsageTrouble(fmt::format("--shard: there is no part {}", text));
        return {static_cast<uint64_t>(numbers[0]), static_cast<uint64_t>(numbers[1])};
    }
    if (std::getenv("SLURM_ARRAY_TASK_ID") == nullptr)
        return {};
    const uint64_t id = environment("SLURM_ARRAY_TASK_ID", 0), first = environment("SLURM_ARRAY_TASK_MIN", 0);
    const uint64_t count = environment("SLURM_ARRAY_TASK_COUNT", 0);
    if (environment("SLURM_ARRAY_TASK_MAX", 0) - first + 1 != count)
        throw CommandTrouble("the elements of the Slurm array are not all of a range: say --shard I/N");
    return {id - first + 1, count};
}

int processors_given() {
    cpu_set_t given;
    CPU_ZERO(&given);
    const int available = sched_getaffinity(0, sizeof given, &given) == 0 ? CPU_COUNT(&given) : 1;
    return static_cast<int>(environment("SLURM_CPUS_PER_TASK", static_cast<uint64_t>(available)));
}

} // namespace cfatool
