#include "tests/fuzz/fuzz_support.h"

#include <cstdio>
#include <fstream>
#include <iterator>
#include <set>

#include <sys/mman.h>
#include <unistd.h>

#include "log/log.h"
#include "tests/fuzz/exit_throws.h"

using namespace cfa;

namespace {

constexpr int SLOTS = 4;

// Streams opened by the function that runs; the linker sends fopen, fdopen and fclose through here.
std::set<std::FILE *> open_streams;
bool running = false;

std::FILE *opened(std::FILE *stream) {
    if (running && stream != nullptr)
        open_streams.insert(stream);
    return stream;
}

} // namespace

extern "C" {
std::FILE *__real_fopen(const char *path, const char *mode);
std::FILE *__real_fdopen(int fd, const char *mode);
int __real_fclose(std::FILE *stream);

std::FILE *__wrap_fopen(const char *path, const char *mode) {
    return opened(__real_fopen(path, mode));
}
std::FILE *__wrap_fdopen(int fd, const char *mode) {
    return opened(__real_fdopen(fd, mode));
}
int __wrap_fclose(std::FILE *stream) {
    open_streams.erase(stream);
    return __real_fclose(stream);
}

int LLVMFuzzerInitialize(int *, char ***) {
    log_set_quiet(1);
    return 0;
}
}

std::string memory_file(int slot, const void *bytes, size_t size) {
    static int fds[SLOTS] = {-1, -1, -1, -1};
    int &fd = fds[slot];
    if (fd < 0)
        fd = memfd_create("fuzz", 0);
    if (ftruncate(fd, 0) != 0 || pwrite(fd, bytes, size, 0) != static_cast<ssize_t>(size))
        fuzz_failure("no file in memory");
    return "/proc/self/fd/" + std::to_string(fd);
}

std::string file_bytes(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

int run_refusable(const std::function<void()> &function) {
    int status = 0;
    running = true;
    try {
        function();
    } catch (const FuzzExit &end) {
        status = end.status;
        if (status != 1)
            fuzz_failure("status " + std::to_string(status));
        while (!open_streams.empty())
            __wrap_fclose(*open_streams.begin());
    }
    running = false;
    if (!open_streams.empty())
        fuzz_failure("a file is still open");
    return status;
}

void fuzz_failure(const std::string &message) {
    std::fprintf(stderr, "fuzz target: %s\n", message.c_str());
    std::abort();
}
