// How far long work is, on a terminal.
#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>

namespace cfatool {

/// Writes "comparing 42 %, 3 s left" over itself on standard error while work goes on, if that is a terminal
/// and the work takes longer than half a second. May be told from several threads.
class Progress {
  public:
    Progress(uint64_t total, const char *work);
    ~Progress(); // takes the line away
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;

    void add(uint64_t done);

  private:
    using Clock = std::chrono::steady_clock;

    std::mutex mutex_;
    const uint64_t total_;
    const char *const work_;
    const bool terminal_;
    const Clock::time_point start_ = Clock::now();
    Clock::time_point shown_ = start_;
    uint64_t done_ = 0;
    bool written_ = false;
};

} // namespace cfatool
