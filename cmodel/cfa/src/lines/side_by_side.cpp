#include "cmodel/cfa/src/lines/side_by_side.h"

#include <condition_variable>
#include <csignal>
#include <cstdio>
#include <exception>
#include <mutex>
#include <optional>
#include <thread>

#include <sched.h>

namespace cfa {

namespace {

// Steps between two messages to the other side: each costs a lock. REQUIRES at most FRONT_LEAD.
constexpr int BATCH = 8;

// How far the two have come, and whether one has failed.
class Progress {
  public:
    explicit Progress(int steps) : steps_(steps) {}

    // Waits until the side has done `steps` of its steps; false where one has failed.
    bool wait(const int &side, int steps) {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return side >= steps || error_ != nullptr; });
        return error_ == nullptr;
    }
    void done(int &side, int steps) {
        if (steps % BATCH != 0 && steps != steps_)
            return;
        const std::lock_guard lock(mutex_);
        side = steps;
        changed_.notify_all();
    }
    void failed() {
        const std::lock_guard lock(mutex_);
        if (error_ == nullptr)
            error_ = std::current_exception();
        changed_.notify_all();
    }
    void rethrow() const {
        if (error_ != nullptr)
            std::rethrow_exception(error_);
    }

    int front = 0, back = 0; // steps done, as far as told

  private:
    const int steps_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::exception_ptr error_;
};

// Signals are the business of the threads that were there before.
std::optional<std::thread> start(const std::function<void()> &body) {
    sigset_t all, before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    std::optional<std::thread> thread;
    try {
        thread.emplace(body);
    } catch (const std::exception &) { // no thread left, or no memory for one: the caller does both
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return thread;
}

} // namespace

void run_side_by_side(int steps, const std::function<void(int)> &front,
                      const std::function<void(int)> &back) {
    Progress progress(steps);
    const auto run_front = [&] {
        try {
            for (int t = 0; t < steps && progress.wait(progress.back, t - FRONT_LEAD); ++t) {
                front(t);
                progress.done(progress.front, t + 1);
            }
        } catch (...) {
            progress.failed();
        }
    };
    std::optional<std::thread> thread = start(run_front);
    try {
        for (int t = 0; t < steps; ++t) {
            if (!thread)
                front(t);
            else if (!progress.wait(progress.front, t + 1))
                break;
            back(t);
            progress.done(progress.back, t + 1);
        }
    } catch (...) {
        progress.failed();
    }
    if (thread)
        thread->join();
    progress.rethrow();
}

int free_processors() {
    cpu_set_t set;
    const int usable = sched_getaffinity(0, sizeof set, &set) == 0 ? CPU_COUNT(&set) : 1;
    int running = 1; // this thread among them
    if (std::FILE *const load = std::fopen("/proc/loadavg", "re")) {
        if (std::fscanf(load, "%*s %*s %*s %d", &running) != 1)
            running = 1;
        std::fclose(load);
    }
    return running > usable ? 1 : usable;
}

} // namespace cfa
