// Worker processes that share a list of cases: what happens to one case happens to no other.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace cfatool {

struct PoolWork {
    uint64_t cases = 0;
    int jobs = 1;
    int64_t limit_ms = 0;                                                // a case
    std::function<void()> start;                                         // in a worker, before its first case
    std::function<void(uint64_t index)> work;                            // in a worker
    std::function<void(uint64_t index, const std::string &reason)> lost; // here: the worker died of this case
    std::function<void()> tick;                                          // here, some twenty times a second
};

/// Runs every case in one of `jobs` worker processes. A worker that dies or takes too long is ended with all
/// that it has started, and another goes on behind its case. Returns false when a signal asked to stop before
/// the end. Throws Trouble when no worker can go on.
bool run_pool(const PoolWork &work);

/// The time of the case starts anew. For a worker whose case is several runs.
void restart_case_time();

/// Does this in a process of its own and returns what it returns, or how it ended instead: "ended by signal
/// 11".
std::string done_apart(int64_t limit_ms, const std::function<std::string()> &work);

/// Memory that this process shares with those that it starts, at first zeros.
struct Unmap {
    size_t size;
    void operator()(void *memory) const;
};
using SharedMemory = std::unique_ptr<void, Unmap>;
SharedMemory shared_memory(size_t size);

} // namespace cfatool
