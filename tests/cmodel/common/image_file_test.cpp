#include "cmodel/common/image_file.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <filesystem>
#include <numeric>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/hooks.h"
#include "tests/support/support.h"

using namespace cfa;

namespace {

const std::string text = "what was here before";

// Whether nobody else may read the file now.
bool is_locked(const std::string &path) {
    const int fd = open(path.c_str(), O_RDONLY);
    const bool locked = flock(fd, LOCK_SH | LOCK_NB) != 0;
    close(fd);
    return locked;
}

// Writes a picture in a child whose system calls the hook sees.
Outcome write_picture(const std::string &path, const std::string &bytes, decltype(before_call) hook) {
    const auto write = [&] {
        before_call = hook;
        std::FILE *const stream = CM_Fopen(path.c_str(), "wb");
        image_write(stream, path.c_str(), bytes.data(), bytes.size());
        image_close_written(ImageFile(stream), path.c_str());
    };
    return run_child(write, 5000);
}

} // namespace

TEST_CASE(
    "a new file appears locked, an old one keeps its bytes until it is; both stay so until they are whole") {
    const Hooked hooked;
    const TempFolder folder;
    const std::string path = folder / "a picture";
    for (const std::string &before : {std::string("(no file)"), text}) {
        after_call = [&] { CHECK((read_file(path) == before || is_locked(path))); };
        watch();
        std::FILE *const stream = CM_Fopen(path.c_str(), "wb");
        CHECK(watched->calls > 2);
        CHECK(is_locked(path));
        CHECK(read_file(path) == "");
        std::fputs(text.c_str(), stream); // still in the buffer of the stream
        before_call = [&](Call call, int, size_t &) {
            CHECK((call != Call::lock || read_file(path) == text));
            return 0;
        };
        after_call = nullptr;
        CHECK(CM_Fclose(stream) == 0);
        before_call = nullptr;
        CHECK_FALSE(is_locked(path));
    }
    std::FILE *const stream = CM_Fopen(path.c_str(), "rb");
    CHECK(is_locked(path));
    CM_Fclose(stream);
    CHECK(read_file(path) == text);
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
    "calls that are interrupted, do less than asked for, are not there, fail a while: the picture is whole") {
    const TempFolder folder;
    std::string bytes(1000, '\0');
    std::iota(bytes.begin(), bytes.end(), '\0');
    // What happens at call `number` of a kind.
    const auto odd = [](const std::string &what, Call call, int flags, size_t &size, int number) {
        if (what == "interrupted" && number % 2 != 0)
            return call == Call::open || call == Call::lock || call == Call::write ? EINTR : 0;
        if (what == "in pieces")
            size = std::min<size_t>(size, 7);
        if (what == "no unnamed files" && call == Call::open && (flags & O_TMPFILE) == O_TMPFILE)
            return EOPNOTSUPP;
        if (what == "somebody was first" && call == Call::link)
            return EEXIST;
        if (what == "denied" && number > 1) // what is said is there to be read by now
            CHECK(read_file("/proc/self/fd/1").starts_with("wait pre frame ready "));
        return what == "denied" && call == Call::open && number <= 4 ? EACCES : 0;
    };
    for (const std::string what :
         {"interrupted", "in pieces", "no unnamed files", "somebody was first", "denied"})
        for (const mode_t mask : {0000, 0027}) {
            INFO(what, ", ", mask);
            const std::string path = folder / what + std::to_string(mask);
            umask(mask);
            const auto hook = [&, n = 0](Call call, int flags, size_t &size) mutable {
                CHECK((call != Call::write || is_locked(path)));
                return odd(what, call, flags, size, ++n);
            };
            const Outcome outcome = write_picture(path, bytes, hook);
            umask(0022);
            CHECK(outcome ==
                  Outcome{0,
                          (what == "denied" ? "wait pre frame ready " + path + "\n" + path + " ready\n" : ""),
                          ""});
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
        std::string line, left;
    };
    for (const Case &c : {Case{Call::write, ENOSPC, line + "No space left on device\n", ""},
                          Case{Call::write, 0, line + "No space left on device\n", ""}, // nothing written
                          Case{Call::close, EIO, line + "Input/output error\n", ""},
                          Case{Call::truncate, EIO, line + "Input/output error\n", text},
                          Case{Call::open, ENOMEM, "Unable to allocate memory\n", text}}) {
        INFO(c.line);
        write_file(path, text);
        const auto hook = [&, writes = 0](Call call, int fd, size_t &size) mutable {
            if (call != c.call || fd == STDERR_FILENO)
                return 0;
            size = call == Call::write && ++writes == 1 ? 50 : 0; // the second one fails
            return size == 0 ? c.error : 0;
        };
        const Outcome outcome = write_picture(path, std::string(100, 'x'), hook);
        CHECK(outcome == Outcome{1, "", c.line});
        CHECK(read_file(path) == c.left);
    }
}
