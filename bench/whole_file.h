// Files as one run of bytes, in bulk: what the programs beside the product read and write with.
#pragma once

#include <cstddef>
#include <cstdio>
#include <cstdlib>

#include <fcntl.h>
#include <unistd.h>

constexpr size_t file_block = size_t{256} << 10; // bytes a call; larger ones are no faster

[[noreturn]] inline void give_up(const char *path) {
    std::perror(path);
    std::exit(1);
}

inline int open_input(const char *path) {
    const int fd = open(path, O_RDONLY);
    if (fd < 0)
        give_up(path);
    return fd;
}

inline int open_output(const char *path) {
    const int fd = open(path, O_WRONLY | O_CREAT | O_TRUNC, 0666);
    if (fd < 0)
        give_up(path);
    return fd;
}

/// Reads up to `size` bytes, fewer only at the end of the file; returns how many.
inline size_t read_bytes(int fd, char *data, size_t size) {
    size_t done = 0;
    while (done < size) {
        const ssize_t n = read(fd, data + done, size - done < file_block ? size - done : file_block);
        if (n < 0)
            give_up("read");
        if (n == 0)
            break;
        done += static_cast<size_t>(n);
    }
    return done;
}

inline void write_bytes(int fd, const char *data, size_t size) {
    size_t done = 0;
    while (done < size) {
        const ssize_t n = write(fd, data + done, size - done < file_block ? size - done : file_block);
        if (n < 0)
            give_up("write");
        done += static_cast<size_t>(n);
    }
}
