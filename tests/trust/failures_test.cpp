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

const std::string no_memory = "Unable to allocate memory\n", no_space = "': No space left on device";

// Ways through the tool.
struct Kind {
    const char *name, *ini, *debug;
    size_t raw_bytes; // the rest is missing
};
const Kind kinds[] = {{"rows", ALL_STAGES, "0", 5000},
                      {"whole frames, cut short", ALL_STAGES, "0", 500},
                      {"bypass", "[cfa]\nreg_cfa_enable = 0\n", "0", 5000},
                      {"debug images", ALL_STAGES, "1", 5000}};

// What fails: the nth allocation, that and all later ones, the disk after n - 1 bytes, the process at the nth
// call.
enum Failure { ALLOCATION, MEMORY, DISK, PROCESS };

void let_fail(Failure failure, long number) {
    setenv("TZ", "UTC0", 1); // otherwise the zone is looked up for every log record
    watch(failure <= MEMORY ? number : 0, failure == MEMORY);
    if (number == 0 || failure <= MEMORY)
        return;
    before_call = [=, left = number](Call call, int fd, size_t &size) mutable {
        if (failure == PROCESS && --left == 0)
            raise(SIGKILL);
        if (failure == PROCESS || call != Call::write || fd == STDERR_FILENO)
            return 0;
        size = std::min(size, static_cast<size_t>(left - 1));
        left -= static_cast<long>(size);
        return size == 0 ? ENOSPC : 0;
    };
}

} // namespace

TEST_CASE(
    "a failure at any point: one line and status 1; pictures are whole, absent or, the last one, empty") {
    for (const Kind &kind : kinds) {
        Job job(mosaic(24, 16).substr(0, kind.raw_bytes), kind.ini);
        job.args[DEBUG] = kind.debug;
        const Outcome plain = job.run([] { let_fail(DISK, 0); });
        const Watch total = *watched;
        const auto want = job.pictures();
        for (const Failure failure : {ALLOCATION, MEMORY, DISK, PROCESS}) {
            const long last = failure == PROCESS ? total.calls
                              : failure == DISK  ? total.written
                                                 : total.allocations;
            CHECK((last > 20 || (SANITIZED && failure <= MEMORY)));
            int whole = 0;
            for (long number = 1; number <= last;
                 number += number < 30 ? 1 : stride(1 + static_cast<int>(last / 16))) {
                INFO(kind.name, ", failure ", failure, " at ", number, " of ", last);
                job.clear();
                const Outcome outcome = job.run([=] { let_fail(failure, number); });
                const auto got = job.pictures();
                std::string short_one; // the one that the error names
                int short_ones = 0;
                for (const auto &[path, bytes] : got) {
                    REQUIRE(want.contains(path));
                    if (bytes == want.at(path))
                        continue;
                    ++short_ones;
                    if (short_one.empty() || outcome.err.find(path) != std::string::npos)
                        short_one = path;
                    CHECK((bytes == "" || (failure == PROCESS && want.at(path).starts_with(bytes))));
                }
                CHECK((short_ones <= 1 || kind.debug[0] == '1')); // debug images are open side by side
                whole += outcome.status == 0;
                const std::string unwritten =
                    plain.err + "Unable to write file '" + short_one + no_space + "\n";
                if (outcome.status == 0)
                    CHECK((outcome == plain && got == want));
                else if (failure == PROCESS)
                    CHECK(outcome.status == 128 + SIGKILL);
                else if (outcome.err != plain.err + no_memory) // the input's notice may be still to come
                    CHECK(outcome == Outcome{1, "", failure == DISK ? unwritten : no_memory});
            }
            // Without the buffer of a stream the C library goes on.
            CHECK(whole <= (failure <= MEMORY ? 12 : 0));
        }
        job.clear();
        CHECK(job.run().status == plain.status);
        CHECK(job.pictures() == want);
    }
}

TEST_CASE("the built program: a limit on file sizes, a full device behind every output and behind the log") {
    Job job(mosaic(16, 12), ALL_STAGES);
    job.built = true;
    const Pictures want = job.expected();
    for (const size_t limit : {size_t{0}, size_t{1}, want.dc.size(), want.rgb.size() - 1, want.rgb.size()}) {
        INFO("limit of ", limit, " bytes");
        const rlimit bound = {limit, limit};
        const Outcome outcome = job.run([&] { setrlimit(RLIMIT_FSIZE, &bound); });
        // Error lines go to a file here too; the limit holds for them as well, but stops no run.
        const bool fits = limit >= want.rgb.size();
        CHECK(outcome.status == (fits ? 0 : 1));
        CHECK(job.outputs() == (fits ? want : Pictures{"", "(no file)", "(no file)"}));
        job.clear();
    }
    for (const Argument full : {RGB, DC, GAIN, LOG}) {
        std::filesystem::create_symlink("/dev/full", job.args[full]);
        const Outcome outcome = job.run();
        const std::string line = "Unable to write file '" + job.args[full] + no_space;
        CHECK(outcome == (full == LOG ? SILENT : error_line(line)));
        std::filesystem::remove(job.args[full]);
        CHECK((full == RGB || job.outputs().rgb == want.rgb));
        CHECK((full != LOG || job.outputs() == want));
        job.clear();
    }
    Job large(mosaic(1001, 1000), ALL_STAGES); // two threads
    large.built = true;
    large.args[DEBUG] = "1";
    CHECK(large.run() == SILENT);
    const auto whole = large.pictures();
    large.clear();
    for (const std::string &full : {large.args[RGB], large.args[DEBUG_FOLDER] + "/dbg_img_AvgRGB.ppm",
                                    large.args[DEBUG_FOLDER] + "/dbg_sg_rgb_luma.ppm"}) {
        std::filesystem::create_symlink("/dev/full", full);
        CHECK(large.run() == error_line("Unable to write file '" + full + no_space));
        std::filesystem::remove(full);
        for (const auto &picture : large.pictures())
            CHECK_MESSAGE((picture.second.empty() || picture.second == whole.at(picture.first)),
                          picture.first);
        large.clear();
    }
}
