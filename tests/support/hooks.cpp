// The linker sends the calls through here (--wrap); malloc and its like are defined in place of the C
// library's.
#include "tests/support/hooks.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <ctime>
#include <utility>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

std::function<int(Call, int, size_t &)> before_call;
std::function<void()> after_call;
std::time_t (*fake_time)();

Watch *const watched = static_cast<Watch *>(
    mmap(nullptr, sizeof(Watch), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));

void watch(long failing, bool and_later) {
    *watched = {getpid(), failing, and_later};
}

namespace {

bool inside = false; // a hook

bool is_watched() {
    return watched != nullptr && watched->process == getpid(); // null before main
}

template <class Real> auto hooked(Call call, int number, size_t size, Real real) -> decltype(real(size)) {
    if (inside)
        return real(size);
    inside = true;
    const int error = before_call ? before_call(call, number, size) : 0;
    const auto result = error != 0 ? -1 : real(size);
    const int kept = error != 0 ? error : errno;
    if (is_watched()) {
        ++watched->calls;
        watched->written += call == Call::write && result > 0 ? result : 0;
    }
    if (error == 0 && after_call)
        after_call();
    inside = false;
    errno = kept;
    return result;
}

} // namespace

extern "C" {

int __real_open(const char *path, int flags, ...);
int __real_flock(int fd, int how);
int __real_linkat(int from, const char *path, int to, const char *name, int flags);
int __real_ftruncate(int fd, off_t size);
ssize_t __real_write(int fd, const void *bytes, size_t size);
int __real_close(int fd);
std::time_t __real_time(std::time_t *out);

int __wrap_open(const char *path, int flags, ...) {
    va_list args;
    va_start(args, flags);
    const mode_t mode = va_arg(args, mode_t);
    va_end(args);
    return hooked(Call::open, flags, 0, [=](size_t) { return __real_open(path, flags, mode); });
}

int __wrap_flock(int fd, int how) {
    return hooked(Call::lock, fd, 0, [=](size_t) { return __real_flock(fd, how); });
}

int __wrap_linkat(int from, const char *path, int to, const char *name, int flags) {
    return hooked(Call::link, to, 0, [=](size_t) { return __real_linkat(from, path, to, name, flags); });
}

int __wrap_ftruncate(int fd, off_t length) {
    return hooked(Call::truncate, fd, 0, [=](size_t) { return __real_ftruncate(fd, length); });
}

ssize_t __wrap_write(int fd, const void *bytes, size_t count) {
    return hooked(Call::write, fd, count, [=](size_t size) { return __real_write(fd, bytes, size); });
}

int __wrap_close(int fd) {
    return hooked(Call::close, fd, 0, [=](size_t) { return __real_close(fd); });
}

std::time_t __wrap_time(std::time_t *out) {
    return fake_time != nullptr ? fake_time() : __real_time(out);
}
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
namespace {

bool fails(size_t size) {
    if (!is_watched())
        return false;
    Watch &w = *watched;
    ++w.allocations;
    w.bytes += size;
    w.most = std::max(w.most, size);
    if (w.allocations != w.failing && (!w.and_later || w.allocations < w.failing))
        return false;
    errno = ENOMEM;
    return true;
}

} // namespace

extern "C" {

void *__libc_malloc(size_t size);
void *__libc_calloc(size_t count, size_t size);
void *__libc_realloc(void *block, size_t size);
void *__libc_memalign(size_t alignment, size_t size);

void *malloc(size_t size) {
    return fails(size) ? nullptr : __libc_malloc(size);
}
void *calloc(size_t count, size_t size) {
    return fails(count * size) ? nullptr : __libc_calloc(count, size);
}
void *realloc(void *block, size_t size) {
    return fails(size) ? nullptr : __libc_realloc(block, size);
}
void *aligned_alloc(size_t alignment, size_t size) {
    return fails(size) ? nullptr : __libc_memalign(alignment, size);
}
}
#endif
