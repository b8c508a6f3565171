// Preloaded into the tool: the allocation of number $FAIL_AT fails, and with $FAIL_ON every later one too. At
// the end the number of allocations goes to the file $FAIL_COUNT.
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

extern "C" {
void *__libc_malloc(size_t size);
void *__libc_calloc(size_t count, size_t size);
void *__libc_realloc(void *block, size_t size);
void *__libc_memalign(size_t alignment, size_t size);
}

namespace {

long calls = 0;

bool fails() {
    calls++;
    const char *const at = std::getenv("FAIL_AT");
    if (at == nullptr)
        return false;
    const long number = std::atol(at);
    const bool failing = calls == number || (calls > number && std::getenv("FAIL_ON") != nullptr);
    if (failing)
        errno = ENOMEM;
    return failing;
}

struct AtEnd {
    ~AtEnd() {
        const char *const path = std::getenv("FAIL_COUNT");
        const int fd = path == nullptr ? -1 : open(path, O_WRONLY | O_CREAT | O_TRUNC, 0600);
        if (fd < 0)
            return;
        char digits[24];
        char *first = digits + sizeof digits;
        for (long left = calls; left > 0; left /= 10)
            *--first = static_cast<char>('0' + left % 10);
        [[maybe_unused]] const ssize_t written =
            write(fd, first, static_cast<size_t>(digits + sizeof digits - first));
        close(fd);
    }
} at_end;

} // namespace

extern "C" {

void *malloc(size_t size) {
    return fails() ? nullptr : __libc_malloc(size);
}

void *calloc(size_t count, size_t size) {
    return fails() ? nullptr : __libc_calloc(count, size);
}

void *realloc(void *block, size_t size) {
    return fails() ? nullptr : __libc_realloc(block, size);
}

void *aligned_alloc(size_t alignment, size_t size) {
    return fails() ? nullptr : __libc_memalign(alignment, size);
}

int posix_memalign(void **block, size_t alignment, size_t size) {
    *block = fails() ? nullptr : __libc_memalign(alignment, size);
    return *block == nullptr ? ENOMEM : 0;
}
}
