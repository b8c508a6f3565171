// Memory that runs out, disks that fill up, a run that is killed: a picture never looks finished when it is
// not.
#include <doctest/doctest.h>

#include <csignal>
#include <filesystem>

#include <sys/resource.h>
#include <unistd.h>

#include "tests/support/hooks.h"
#include "tests/support/tool.h"

namespace {

const std::string no_memory = "Unable to allocate memory\n";

// Kinds of run that take different ways through the tool.
struct Kind {
    const char *name, *ini, *debug;
    size_t raw_bytes; // the rest is missing
};
const Kind kinds[] = {{"rows", ALL_STAGES, "0", 5000},
                      {"whole frames, cut short", ALL_STAGES, "0", 500},
                      {"bypass", "[cfa]\nreg_cfa_enable = 0\n", "0", 5000},
                      {"debug images", ALL_STAGES, "1", 5000}};

struct KindOfJob : Job {
    explicit KindOfJob(const Kind &kind) : Job(mosaic(24, 16).substr(0, kind.raw_bytes), kind.ini) {
        args[DEBUG] = kind.debug;
        plain = run();
        CHECK(plain.status == 0);
        want = pictures();
        clear();
    }

    // Runs under a hook. Every picture is whole, absent or, if allowed, short: empty and named by the
    // message, or only begun.
    Outcome disturbed(const std::function<void()> &prepare, const std::string &message,
                      bool begun = false) const {
        const Outcome outcome = run(prepare);
        const auto got = pictures();
        int incomplete = 0;
        for (const auto &[path, bytes] : got) {
            INFO(path);
            REQUIRE(want.contains(path));
            if (bytes == want.at(path))
                continue;
            ++incomplete;
            CHECK(want.at(path).starts_with(bytes));
            if (!begun) {
                CHECK(bytes == "");
                CHECK((message == no_memory ||
                       outcome.err.ends_with("Unable to write file '" + path + message)));
            }
        }
        CHECK(incomplete <= 1);
        CHECK(outcome.out == "");
        if (outcome.status == 0) {
            CHECK(outcome.err == plain.err);
            CHECK(got.size() == want.size());
            CHECK(incomplete == 0);
        } else if (!begun) {
            CHECK((got.size() < want.size() || incomplete == 1));
        }
        clear();
        return outcome;
    }

    Outcome plain;
    std::map<std::string, std::string> want;
};

} // namespace

TEST_CASE("every allocation fails once, and with all that follow: one line and status 1, or a whole run") {
    if (SANITIZED)
        return;
    for (const Kind &kind : kinds) {
        const KindOfJob job(kind);
        const auto armed = [&](long failing, bool and_later) {
            return [=] {
                setenv("TZ", "UTC0", 1); // otherwise the zone is looked up for every log record
                watch_allocations(failing, and_later);
            };
        };
        job.run(armed(0, false));
        const long total = allocations->calls;
        CHECK(total > 20);
        job.clear();
        int whole = 0;
        for (long number = 1; number <= total; number += stride(static_cast<int>(total / 30)))
            for (const bool and_later : {false, true}) {
                INFO(kind.name, ": allocation ", number, " of ", total,
                     and_later ? " and all later ones" : "");
                const Outcome outcome = job.disturbed(armed(number, and_later), no_memory);
                whole += outcome.status == 0;
                if (outcome.status != 0) {
                    CHECK(outcome.status == 1);
                    CHECK((outcome.err == no_memory || outcome.err == job.plain.err + no_memory));
                }
            }
        CHECK(whole <= 24); // buffers of streams, the exception handler's reserve: the C library does without
    }
}

TEST_CASE("a disk that is full after any number of bytes") {
    for (const Kind &kind : kinds) {
        const KindOfJob job(kind);
        size_t total = 0;
        for (const auto &[path, bytes] : job.want)
            total += bytes.size();
        for (size_t room = 0; room <= total;
             room +=
             room == total ? 1 : std::min(total - room, total / static_cast<size_t>(rounds(30)) + 1)) {
            INFO(kind.name, ": ", room, " of ", total, " bytes");
            const auto fill = [room] {
                before_call = [left = room](Call call, int fd, size_t &size) mutable {
                    if (call != Call::write || fd == STDERR_FILENO)
                        return 0;
                    size = std::min(size, left);
                    left -= size;
                    return size == 0 ? ENOSPC : 0;
                };
            };
            CHECK(job.disturbed(fill, "': No space left on device\n").status == (room < total ? 1 : 0));
        }
    }
}

TEST_CASE("killed at any system call: nothing but whole pictures and the start of one is left, the next run "
          "is whole") {
    for (const Kind &kind : kinds) {
        const KindOfJob job(kind);
        bool killed = true;
        for (int number = 1; killed; number += stride(1 + number / 12)) {
            INFO(kind.name, ": call ", number);
            const auto kill_later = [number] {
                before_call = [left = number](Call, int, size_t &size) mutable {
                    if (--left == 0)
                        raise(SIGKILL);
                    size = (size + 1) / 2; // pieces
                    return 0;
                };
            };
            const int status = job.disturbed(kill_later, "", true).status;
            killed = status == 128 + SIGKILL;
            CHECK((killed || status == 0));
        }
        CHECK(job.run().status == 0);
        CHECK(job.pictures() == job.want);
    }
}

TEST_CASE("the built program: a limit on file sizes, a full device behind every output and behind the log") {
    Job job(mosaic(16, 12), ALL_STAGES);
    job.built = true;
    const Pictures want = job.expected();
    for (const size_t limit : {size_t{0}, size_t{1}, want.dc.size(), want.rgb.size() - 1, want.rgb.size()}) {
        INFO("limit of ", limit, " bytes");
        const Outcome outcome = job.run([limit] {
            const rlimit bound = {limit, limit};
            setrlimit(RLIMIT_FSIZE, &bound);
        });
        // Error lines go to a file here too; the limit holds for them as well, but stops no run.
        CHECK(outcome.status == (limit < want.rgb.size() ? 1 : 0));
        CHECK(job.outputs().rgb == (limit < want.rgb.size() ? "" : want.rgb));
        CHECK(job.outputs().gain == (limit < want.rgb.size() ? "(no file)" : want.gain));
        job.clear();
    }
    for (const Argument full : {RGB, DC, GAIN, LOG}) {
        const std::string link = job.args[full];
        std::filesystem::create_symlink("/dev/full", link);
        if (full == LOG)
            check_silent(job.run());
        else
            check_error(job.run(), "Unable to write file '" + link + "': No space left on device");
        std::filesystem::remove(link);
        CHECK((full == RGB || job.outputs().rgb == want.rgb));
        CHECK((full != LOG || job.outputs() == want));
        job.clear();
    }
}
