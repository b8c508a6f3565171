// Which cases of a plan this process takes, and how many at a time.
#pragma once

#include <cstdint>
#include <string>

namespace cfatool {

/// Every n-th case from the i-th on.
struct Shard {
    uint64_t i = 1, n = 1;
    uint64_t cases_of(uint64_t all) const { return all < i ? 0 : (all - i) / n + 1; }
    size_t plan_index(uint64_t own) const { return i - 1 + own * n; }
    bool has(size_t plan_index) const { return plan_index % n == i - 1; }
};

/// "2/8"; without a text the element of a Slurm array, outside of one the whole plan. Throws Trouble for
/// elements that are not all of a range, because their numbers would say nothing.
Shard shard_of(const std::string &text);

/// The processors given to this process.
int processors_given();

} // namespace cfatool
