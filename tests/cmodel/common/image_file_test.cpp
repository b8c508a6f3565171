#include "cmodel/common/image_file.h"

#include <doctest/doctest.h>

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <string>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/support.h"

namespace {

// Whether somebody else holds the lock on the file.
bool is_locked(const std::string &path) {
    const int fd = open(path.c_str(), O_RDONLY);
    const bool locked = flock(fd, LOCK_EX | LOCK_NB) != 0;
    close(fd);
    return locked;
}

void write_picture(const std::string &path, const std::string &bytes) {
    std::FILE *const stream = CM_Fopen(path.c_str(), "wb");
    image_write(stream, path.c_str(), bytes.data(), bytes.size());
    image_close_written(stream, path.c_str());
}

std::string read_picture(const std::string &path) {
    std::FILE *const stream = CM_Fopen(path.c_str(), "rb");
    std::string bytes;
    for (int c = std::getc(stream); c != EOF; c = std::getc(stream))
        bytes += static_cast<char>(c);
    CM_Fclose(stream);
    return bytes;
}

} // namespace

TEST_CASE("an open file is locked, a closed one is not, reading and writing") {
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
}

TEST_CASE("a missing input is waited for: one line at once, one when it is there") {
    const TempFolder folder;
    const std::string path = folder / "late";
    const Outcome waiting = run_child([&] { CM_Fopen(path.c_str(), "rb"); }, 200);
    CHECK(waiting.status == 124);
    CHECK(waiting.out == "wait pre frame ready " + path + "\n");

    const Outcome served = run_child([&] {
        if (fork() == 0) {
            usleep(50000);
            write_picture(path, "text");
            _exit(0);
        }
        if (read_picture(path) != "text")
            _exit(10);
    });
    CHECK(served.status == 0);
    CHECK(served.out == "wait pre frame ready " + path + "\n" + path + " ready\n");
}

TEST_CASE("an output that cannot be opened is waited for") {
    const TempFolder folder;
    for (const std::string &path :
         {folder / "no/such/folder", folder.path, folder / std::string(5000, 'x')}) {
        const Outcome outcome = run_child([&] { CM_Fopen(path.c_str(), "wb"); }, 100);
        CHECK(outcome.status == 124);
        CHECK(outcome.out == "wait pre frame ready " + path + "\n");
    }
}

TEST_CASE("new files: mode under the umask, through a dangling link, in the working directory") {
    const TempFolder folder;
    const Outcome outcome = run_child([&] {
        umask(027);
        if (chdir(folder.path.c_str()) != 0)
            _exit(10);
        write_picture("plain", "1");
        std::filesystem::create_symlink("target", "link");
        write_picture("link", "2");
    });
    CHECK(outcome.status == 0);
    CHECK(outcome.out == "");
    CHECK(read_file(folder / "plain") == "1");
    CHECK(read_file(folder / "target") == "2");
    CHECK(std::filesystem::is_symlink(folder / "link"));
    struct stat status;
    CHECK(stat((folder / "plain").c_str(), &status) == 0);
    CHECK((status.st_mode & 0777) == 0640);
}

TEST_CASE("a file does not shrink while a reader holds its lock") {
    const TempFolder folder;
    const std::string path = folder / "shared";
    write_file(path, "a complete picture");
    const Outcome outcome = run_child([&] {
        std::FILE *const reader = CM_Fopen(path.c_str(), "rb");
        if (fork() == 0) {
            write_picture(path, "new");
            _exit(0);
        }
        usleep(50000);
        const bool whole = std::filesystem::file_size(path) == 18;
        CM_Fclose(reader);
        while (std::filesystem::file_size(path) != 3)
            usleep(1000);
        _exit(whole ? 0 : 10);
    });
    CHECK(outcome.status == 0);
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
                image_close_written(stream, path(round).c_str());
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

TEST_CASE("character devices and FIFOs are not locked") {
    std::FILE *const first = CM_Fopen("/dev/null", "wb");
    std::FILE *const second = CM_Fopen("/dev/null", "wb"); // would wait for itself
    CM_Fclose(first);
    CM_Fclose(second);

    const TempFolder folder;
    const std::string path = folder / "fifo";
    const std::string more_than_a_pipe_holds(200000, 'x'); // so both ends must be at work at once
    REQUIRE(mkfifo(path.c_str(), 0600) == 0);
    const Outcome outcome = run_child(
        [&] {
            if (fork() == 0) {
                write_picture(path, more_than_a_pipe_holds);
                _exit(0);
            }
            std::printf("%zu", read_picture(path).size());
        },
        5000);
    CHECK(outcome.status == 0);
    CHECK(outcome.out == "200000");
}

TEST_CASE("a write that fails ends the process and leaves an empty file") {
    const Outcome full = run_child([] { write_picture("/dev/full", "text"); });
    CHECK(full.status == 1);
    CHECK(full.err == "Unable to write file '/dev/full': No space left on device\n");

    const TempFolder folder;
    const std::string path = folder / "large";
    const Outcome limited = run_child([&] {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit = {1000, 1000};
        setrlimit(RLIMIT_FSIZE, &limit);
        write_picture(path, std::string(3000, 'x'));
    });
    CHECK(limited.status == 1);
    CHECK(limited.err == "Unable to write file '" + path + "': File too large\n");
    CHECK(read_file(path) == "");
}
