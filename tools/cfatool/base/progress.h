// How far long work is, on a terminal.
#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>

namespace cfatool {

/// The last line of a terminal on standard error, written over and over; taken away with the object.
class StatusLine {
  public:
    StatusLine() = default;
    ~StatusLine();
    StatusLine(const StatusLine &) = delete;
    StatusLine &operator=(const StatusLine &) = delete;

    /// Characters that a line may have; 0 where standard error is no terminal. Changes with the window.
    static size_t room();
    /// Shows the text, or as many of its parts set apart by ", " as there is room for.
    void show(const std::string &text);

  private:
    bool written_ = false;
};

/// Writes "comparing 42 %, 3 s left" over itself while work goes on that takes longer than half a second. May
/// be told from several threads.
class Progress {
  public:
    Progress(uint64_t total, const char *work);

    void add(uint64_t done);

  private:
    using Clock = std::chrono::steady_clock;

    std::mutex mutex_;
    const uint64_t total_;
    const char *const work_;
    const Clock::time_point start_ = Clock::now();
    Clock::time_point shown_ = start_;
    uint64_t done_ = 0;
    StatusLine line_;
};

} // namespace cfatool
