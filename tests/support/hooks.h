// System calls and allocations of the test program that fail on request, and who watches them.
#pragma once

#include <cstddef>
#include <ctime>
#include <functional>

#include <sys/types.h>

/// The system calls that image files make.
enum class Call { open, lock, link, truncate, write, close };

/// Called before each of them, with the flags of an open or else the descriptor: 0 lets the call go on,
/// anything else is the error that it ends with. A write can be given fewer bytes.
extern std::function<int(Call call, int number, size_t &size)> before_call;

/// Called after each of them that went on.
extern std::function<void()> after_call;

/// Neither is in force for the calls that they make themselves. Both end with this object.
struct Hooked {
    ~Hooked() { before_call = nullptr, after_call = nullptr; }
};

/// What one process did; in memory that the test and its children share.
struct Watch {
    pid_t process;
    long failing;         // the number of the allocation that fails, 0 for none,
    bool and_later;       // with all that follow
    long allocations = 0; // so far: none are counted or fail under sanitizers, which take no other allocator
    size_t bytes = 0;     // requested
    size_t most = 0;      // bytes of the largest request
    long calls = 0;       // system calls as above
    long written = 0;     // bytes
};

/// Watches the process that calls this from now on.
void watch(long failing = 0, bool and_later = false);
extern Watch *const watched;

/// What std::time gives instead of the time.
extern std::time_t (*fake_time)();
