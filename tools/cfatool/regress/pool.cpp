#include "tools/cfatool/regress/pool.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <fmt/core.h>
#include <new>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "tools/cfatool/base/trouble.h"

namespace cfatool {
namespace {

constexpr int64_t NO_CASE = -1;
constexpr int NO_MORE = 3; // status of a worker that cannot go on
constexpr size_t LONGEST_TEXT = 1024;
constexpr long TICK_NS = 50'000'000;

int64_t clock_ms() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

/// What a worker and its supervisor share.
struct Slot {
    std::atomic<int64_t> index;    // of the case at work
    std::atomic<int64_t> since_ms; // when it was begun
};

Slot *own_slot = nullptr; // in a worker

struct Worker {
    Slot *slot;
    pid_t process = 0;
};

[[noreturn]] void be_worker(const PoolWork &work, std::atomic<uint64_t> &next, Slot &slot) {
    own_slot = &slot;
    setpgid(0, 0); // is ended as a group
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    try {
        work.start();
        for (uint64_t i = 0; (i = next++) < work.cases;) {
            slot.since_ms = clock_ms();
            slot.index = static_cast<int64_t>(i);
            work.work(i);
            slot.index = NO_CASE;
        }
    } catch (const std::exception &error) {
        std::fprintf(stderr, "%s\n", error.what());
        _exit(NO_MORE);
    }
    _exit(0);
}

class Supervisor {
  public:
    explicit Supervisor(const PoolWork &work)
        : work_(work), memory_(shared_memory(sizeof *next_ + static_cast<size_t>(work.jobs) * sizeof(Slot))) {
        char *const memory = static_cast<char *>(memory_.get());
        next_ = new (memory) std::atomic<uint64_t>(0);
        for (int i = 0; i < work.jobs; ++i)
            workers_.push_back({new (memory + sizeof *next_ + static_cast<size_t>(i) * sizeof(Slot)) Slot});
        sigemptyset(&signals_);
        for (const int signal : {SIGCHLD, SIGINT, SIGTERM})
            sigaddset(&signals_, signal);
        sigprocmask(SIG_BLOCK, &signals_, &before_);
    }
    ~Supervisor() {
        for (Worker &worker : workers_)
            end(worker);
        sigprocmask(SIG_SETMASK, &before_, nullptr);
    }
    Supervisor(const Supervisor &) = delete;
    Supervisor &operator=(const Supervisor &) = delete;

    bool run() {
        for (Worker &worker : workers_)
            start(worker);
        while (alive_ > 0) {
            const timespec pause = {0, TICK_NS};
            const int signal = sigtimedwait(&signals_, nullptr, &pause);
            if (signal == SIGINT || signal == SIGTERM)
                return false;
            for (Worker &worker : workers_)
                look_after(worker);
            work_.tick();
        }
        return true;
    }

  private:
    void start(Worker &worker) {
        worker.slot->index = NO_CASE;
        std::fflush(nullptr);
        worker.process = fork();
        if (worker.process < 0)
            throw CommandTrouble("no process can be started");
        if (worker.process == 0)
            be_worker(work_, *next_, *worker.slot);
        setpgid(worker.process, worker.process);
        ++alive_;
    }

    /// Ends a worker with all that it has started; one that supervises a process of its own ends that first.
    void end(Worker &worker) {
        if (worker.process == 0)
            return;
        kill(-worker.process, SIGTERM);
        waitpid(worker.process, nullptr, 0);
        kill(-worker.process, SIGKILL);
        worker.process = 0;
        --alive_;
    }

    void look_after(Worker &worker) {
        if (worker.process == 0)
            return;
        int status = 0;
        const int64_t index = worker.slot->index;
        if (waitpid(worker.process, &status, WNOHANG) == worker.process) {
            kill(-worker.process, SIGKILL); // what it has left
            worker.process = 0;
            --alive_;
            const bool ended = WIFEXITED(status);
            if (ended && WEXITSTATUS(status) == 0)
                return;
            if (worker.slot->index == NO_CASE || (ended && WEXITSTATUS(status) == NO_MORE))
                throw CommandTrouble("a process of this run could not go on");
            lose(worker, ended ? fmt::format("ended with status {}", WEXITSTATUS(status))
                               : fmt::format("ended by signal {}", WTERMSIG(status)));
        } else if (index != NO_CASE && clock_ms() - worker.slot->since_ms > work_.limit_ms &&
                   worker.slot->index == index) {
            end(worker);
            lose(worker, fmt::format("takes longer than {} s", static_cast<double>(work_.limit_ms) / 1000));
        }
    }

    void lose(Worker &worker, const std::string &reason) {
        work_.lost(static_cast<uint64_t>(worker.slot->index.load()), reason);
        start(worker);
    }

    const PoolWork &work_;
    const SharedMemory memory_;
    std::atomic<uint64_t> *next_ = nullptr; // case to be given out
    std::vector<Worker> workers_;
    int alive_ = 0;
    sigset_t signals_, before_;
};

} // namespace

bool run_pool(const PoolWork &work) {
    return Supervisor(work).run();
}

void restart_case_time() {
    if (own_slot != nullptr)
        own_slot->since_ms = clock_ms();
}

std::string done_apart(int64_t limit_ms, const std::function<std::string()> &work) {
    const SharedMemory memory = shared_memory(LONGEST_TEXT);
    char *const text = static_cast<char *>(memory.get());
    const auto say = [text](const std::string &what) { what.copy(text, LONGEST_TEXT - 1); };
    PoolWork apart;
    apart.cases = 1;
    apart.limit_ms = limit_ms;
    apart.start = apart.tick = [] {};
    apart.work = [&](uint64_t) { say(work()); };
    apart.lost = [&](uint64_t, const std::string &reason) { say(reason); };
    if (!run_pool(apart))
        raise(SIGTERM);
    return text;
}

SharedMemory shared_memory(size_t size) {
    void *const memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        throw std::bad_alloc();
    return {memory, {size}};
}

void Unmap::operator()(void *memory) const {
    munmap(memory, size);
}

} // namespace cfatool
