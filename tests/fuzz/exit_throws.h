// Included ahead of every file of a fuzz build: the end of the process becomes an exception, so that a fuzz
// target can go on after an input that is refused, with everything on the stack released.
#pragma once

#include <cstdlib>

struct FuzzExit {
    int status;
};

[[noreturn]] inline void fuzz_exit(int status) {
    throw FuzzExit{status};
}

namespace std {
using ::fuzz_exit;
}

#define exit fuzz_exit
