#include "cmodel/common/image_file.h"

#include <doctest/doctest.h>

#include <cstdio>
#include <string>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/support.h"

using namespace cfa;

// Waiting, FIFOs, links, file modes, full disks: tests/trust, through the tool.

namespace {

// Whether somebody else holds the lock on the file.
bool is_locked(const std::string &path) {
    const int fd = open(path.c_str(), O_RDONLY);
    const bool locked = flock(fd, LOCK_EX | LOCK_NB) != 0;
    close(fd);
    return locked;
}

} // namespace

TEST_CASE("an open file is locked, a closed one is not, reading and writing; a device never is") {
    const TempFolder folder;
    const std::string path = folder / "file with blank";
    write_file(path, "old text");
    for (const char *mode : {"rb", "wb"}) {
        std::FILE *const stream = CM_Fopen(path.c_str(), mode);
        CHECK(is_locked(path));
        CHECK(CM_Fclose(stream) == 0);
        CHECK_FALSE(is_locked(path));
    }
    CHECK(read_file(path) == "");
    std::FILE *const device = CM_Fopen("/dev/null", "wb");
    CM_Fclose(CM_Fopen("/dev/null", "wb")); // would wait for ever
    CM_Fclose(device);
}

TEST_CASE("a consumer that waits for a new file never sees a part of it") {
    const TempFolder folder;
    const std::string whole(100000, 'x');
    constexpr int ROUNDS = 100;
    const auto path = [&](int round) { return folder / std::to_string(round); };
    const Outcome outcome = run_child([&] {
        if (fork() == 0) {
            for (int round = 0; round < ROUNDS; round++) {
                std::FILE *const stream = CM_Fopen(path(round).c_str(), "wb");
                usleep(200); // a producer that takes its time
                image_write(stream, path(round).c_str(), whole.data(), whole.size());
                image_close_written(ImageFile(stream), path(round).c_str());
            }
            _exit(0);
        }
        for (int round = 0; round < ROUNDS; round++) {
            // Not CM_Fopen, whose pause between two tries is longer than the gap in question.
            int fd;
            while ((fd = open(path(round).c_str(), O_RDONLY)) < 0) {
            }
            flock(fd, LOCK_EX);
            struct stat status;
            if (fstat(fd, &status) != 0 || static_cast<size_t>(status.st_size) != whole.size())
                _exit(10);
            close(fd);
        }
    });
    CHECK(outcome.status == 0);
}
