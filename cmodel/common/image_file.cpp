#include "cmodel/common/image_file.h"

#include <cassert>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "cmodel/common/error.h"

using namespace cfa;

namespace {

constexpr useconds_t RETRY_MICROSECONDS = 10000;

struct OpenFile {
    int fd;
    bool locked;
};

bool is_type(int fd, mode_t type) {
    struct stat status;
    return fstat(fd, &status) == 0 && (status.st_mode & S_IFMT) == type;
}

int open_retrying(const char *path, int flags) {
    int fd;
    do
        fd = open(path, flags | O_CLOEXEC, 0666);
    while (fd < 0 && errno == EINTR);
    if (fd < 0 && errno == ENOMEM)
        allocation_error();
    return fd;
}

// Parallel runs that write to /dev/null must not queue, and one run may name it twice. The two ends of a FIFO
// are one file: a producer and a consumer would wait for each other for ever.
void lock(int fd) {
    if (is_type(fd, S_IFCHR) || is_type(fd, S_IFIFO))
        return;
    while (flock(fd, LOCK_EX) != 0 && errno == EINTR) {
    }
}

// A new file that has a name only once it is locked: nobody can come in between creation and lock.
// Fails (-1) without O_TMPFILE in this file system, on a dangling symbolic link, or when somebody was first.
int create_locked(const char *path) {
    const std::string name = path;
    const size_t slash = name.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : name.substr(0, slash + 1);
    const int fd = open_retrying(folder.c_str(), O_TMPFILE | O_WRONLY);
    if (fd < 0)
        return -1;
    lock(fd);
    const std::string unnamed = "/proc/self/fd/" + std::to_string(fd);
    if (linkat(AT_FDCWD, unnamed.c_str(), AT_FDCWD, path, AT_SYMLINK_FOLLOW) != 0) {
        close(fd);
        return -1;
    }
    return fd;
}

OpenFile try_open(const char *path, bool writing) {
    if (!writing)
        return {open_retrying(path, O_RDONLY), false};
    const int existing = open_retrying(path, O_WRONLY);
    if (existing >= 0 || errno != ENOENT)
        return {existing, false};
    const int created = create_locked(path);
    if (created >= 0)
        return {created, true};
    return {open_retrying(path, O_WRONLY | O_CREAT), false};
}

std::string write_line(const char *path, int error) {
    return std::string("Unable to write file '") + path + "': " + std::strerror(error);
}

void empty(int fd) {
    if (is_type(fd, S_IFREG)) {
        [[maybe_unused]] const int ignored = ftruncate(fd, 0);
    }
}

[[noreturn]] void write_error(int fd, const char *path, int error) {
    empty(fd);
    throw Error(Error::Kind::file, write_line(path, error));
}

} // namespace

std::FILE *cfa::open_image(const char *path, const char *mode) {
    const bool writing = mode[0] == 'w';
    assert(std::strcmp(mode, writing ? "wb" : "rb") == 0);
    OpenFile file = try_open(path, writing);
    if (file.fd < 0) {
        std::printf("wait pre frame ready %s\n", path);
        std::fflush(stdout); // to be seen while the wait lasts
        while (file.fd < 0) {
            usleep(RETRY_MICROSECONDS);
            file = try_open(path, writing);
        }
        std::printf("%s ready\n", path);
    }
    ImageFile stream(fdopen(file.fd, mode));
    if (stream == nullptr) {
        close(file.fd);
        allocation_error();
    }
    if (!file.locked)
        lock(file.fd);
    if (writing && is_type(file.fd, S_IFREG) && ftruncate(file.fd, 0) != 0)
        write_error(file.fd, path, errno);
    return stream.release();
}

std::FILE *CM_Fopen(const char *path, const char *mode) {
    return or_end_process([=] { return open_image(path, mode); });
}

int CM_Fclose(std::FILE *stream) {
    std::fflush(stream); // what a caller left in the buffer belongs under the lock
    flock(fileno(stream), LOCK_UN);
    return std::fclose(stream);
}

void cfa::image_write(std::FILE *stream, const char *path, const void *data, size_t size) {
    const int fd = fileno(stream);
    const char *next = static_cast<const char *>(data);
    while (size > 0) {
        const ssize_t written = write(fd, next, size);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            write_error(fd, path, written < 0 ? errno : ENOSPC);
        next += written;
        size -= static_cast<size_t>(written);
    }
}

void cfa::image_discard(ImageFile file) {
    empty(fileno(file.get()));
}

void cfa::image_close_written(ImageFile file, const char *path) {
    // Closing a duplicate makes a network file system report what it could not write
    // while the file can still be cut.
    const int fd = fileno(file.get());
    const int twin = dup(fd);
    if (twin >= 0 && close(twin) != 0 && errno != EINTR)
        write_error(fd, path, errno);
    if (CM_Fclose(file.release()) != 0)
        throw Error(Error::Kind::file, write_line(path, errno));
}
