#include "cmodel/common/allocation_error.h"

#include <cstdlib>

#include <unistd.h>

void cfa::allocation_error() {
    // Not through a stream: there is no memory to count on.
    static const char MESSAGE[] = "Unable to allocate memory\n";
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, MESSAGE, sizeof MESSAGE - 1);
    std::exit(1);
}
