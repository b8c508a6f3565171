#include "tests/fuzz/fuzz_support.h"

#include <cstdio>
#include <cstdlib>

#include <sys/mman.h>
#include <unistd.h>

#include "cmodel/common/error.h"
#include "log/log.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    log_set_quiet(1);
    const std::string bytes(reinterpret_cast<const char *>(data), size);
    try_input(memory_file(0, bytes), bytes);
    return 0;
}

std::string memory_file(int slot, const std::string &bytes) {
    static const int fds[] = {memfd_create("fuzz", 0), memfd_create("fuzz", 0)};
    const auto written = ftruncate(fds[slot], 0) == 0 ? pwrite(fds[slot], bytes.data(), bytes.size(), 0) : -1;
    expect(written == static_cast<ssize_t>(bytes.size()), "no file in memory");
    return "/proc/self/fd/" + std::to_string(fds[slot]);
}

bool refused(const std::function<void()> &function) {
    try {
        function();
        return false;
    } catch (const cfa::Error &) {
        return true;
    }
}

void expect(bool holds, const std::string &message) {
    if (holds)
        return;
    std::fprintf(stderr, "fuzz target: %s\n", message.c_str());
    std::abort();
}
