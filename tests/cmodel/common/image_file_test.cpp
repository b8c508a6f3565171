#include "cmodel/common/image_file.h"

#include <doctest/doctest.h>

#include <filesystem>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/hooks.h"
#include "tests/support/support.h"

using namespace cfa;

namespace {

// Whether nobody else may read the file now.
bool is_locked(const std::string &path) {
    const int fd = open(path.c_str(), O_RDONLY);
    const bool locked = flock(fd, LOCK_SH | LOCK_NB) != 0;
    close(fd);
    return locked;
}

// Writes a picture of these bytes in a child whose system calls the hook sees.
Outcome write_picture(const std::string &path, const std::string &bytes, decltype(before_call) hook) {
    return run_child(
        [&] {
            before_call = hook;
            std::FILE *const stream = CM_Fopen(path.c_str(), "wb");
            image_write(stream, path.c_str(), bytes.data(), bytes.size());
            image_close_written(ImageFile(stream), path.c_str());
        },
        5000);
}

} // namespace

TEST_CASE("a new file appears locked, an old one keeps its bytes until it is; both stay so until they are "
          "complete") {
    const Hooked hooked;
    const TempFolder folder;
    const std::string path = folder / "a picture";
    for (const std::string before : {"(no file)", "what was here before"}) {
        int looks = 0;
        after_call = [&] {
            CHECK((read_file(path) == before || is_locked(path)));
            ++looks;
        };
        std::FILE *const stream = CM_Fopen(path.c_str(), "wb");
        CHECK(looks > 2);
        CHECK(is_locked(path));
        CHECK(read_file(path) == "");
        std::fputs("what was here before", stream); // still in the buffer of the stream
        before_call = [&](Call call, int, size_t &) {
            CHECK((call != Call::lock || read_file(path) == "what was here before"));
            return 0;
        };
        after_call = nullptr;
        CHECK(CM_Fclose(stream) == 0);
        before_call = nullptr;
        CHECK_FALSE(is_locked(path));
    }
    std::FILE *const stream = CM_Fopen(path.c_str(), "rb");
    CHECK(is_locked(path));
    CHECK(CM_Fclose(stream) == 0);
    CHECK(read_file(path) == "what was here before");
}

TEST_CASE("devices and FIFOs are not locked") {
    const TempFolder folder;
    const std::string fifo = folder / "fifo";
    REQUIRE(mkfifo(fifo.c_str(), 0600) == 0);
    const int other_end = open(fifo.c_str(), O_RDWR);
    for (const std::string &path : {fifo, std::string("/dev/null")}) {
        std::FILE *const stream = CM_Fopen(path.c_str(), "wb");
        CHECK_FALSE(is_locked(path));
        CM_Fclose(stream);
    }
    close(other_end);
}

TEST_CASE(
    "system calls that are interrupted, give less than asked for, or are not there: the picture is whole") {
    const TempFolder folder;
    const std::string bytes(1000, 'x');
    struct Case {
        const char *what;
        decltype(before_call) hook;
    };
    for (const Case &c : {
             Case{"interrupted",
                  [n = 0](Call call, int, size_t &) mutable {
                      const bool retried = call == Call::open || call == Call::lock || call == Call::write;
                      return retried && ++n % 2 != 0 ? EINTR : 0;
                  }},
             Case{"in pieces", [](Call, int, size_t &size) { return size = std::min<size_t>(size, 7), 0; }},
             Case{"no unnamed files",
                  [](Call call, int flags, size_t &) {
                      return call == Call::open && (flags & O_TMPFILE) == O_TMPFILE ? EOPNOTSUPP : 0;
                  }},
             Case{"somebody was first",
                  [](Call call, int, size_t &) { return call == Call::link ? EEXIST : 0; }},
         })
        for (const mode_t mask : {0000, 0027}) {
            INFO(c.what, ", ", mask);
            const std::string path = folder / c.what + std::to_string(mask);
            const Outcome outcome = (umask(mask), write_picture(path, bytes, c.hook));
            umask(0022);
            CHECK(outcome.status == 0);
            CHECK(outcome.out + outcome.err == "");
            CHECK(read_file(path) == bytes);
            CHECK(static_cast<mode_t>(std::filesystem::status(path).permissions()) == (0666 & ~mask));
        }
}

TEST_CASE("a write that fails empties the file and ends with one line") {
    const TempFolder folder;
    const std::string path = folder / "picture", line = "Unable to write file '" + path + "': ";
    struct Case {
        Call call;
        int error;
        std::string line;
    };
    for (const Case &c : {Case{Call::write, ENOSPC, line + "No space left on device\n"},
                          Case{Call::write, 0, line + "No space left on device\n"}, // nothing written
                          Case{Call::close, EIO, line + "Input/output error\n"},
                          Case{Call::truncate, EIO, line + "Input/output error\n"},
                          Case{Call::open, ENOMEM, "Unable to allocate memory\n"}}) {
        INFO(c.line);
        write_file(path, "before");
        int writes = 0;
        const Outcome outcome =
            write_picture(path, std::string(100, 'x'), [&](Call call, int fd, size_t &size) {
                if (call != c.call || fd == STDERR_FILENO)
                    return 0;
                if (call == Call::write && ++writes == 1)
                    return size = 50, 0; // the second one fails
                return size = 0, c.error;
            });
        CHECK(outcome.status == 1);
        CHECK(outcome.err == c.line);
        CHECK(read_file(path) == (c.call == Call::truncate || c.call == Call::open ? "before" : ""));
    }
}
