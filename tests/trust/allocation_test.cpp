// Every allocation of a run fails once, and every one with all that follow: the allocation error, or a run
// that did without and is whole.
#include <doctest/doctest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "tests/trust/job.h"

namespace {

struct Tally {
    int refused = 0;
    int survived = 0;
};

class FailingJob {
  public:
    FailingJob(const std::string &raw, const std::string &ini, bool debug) : job_(raw, ini) {
        job_.args[DEBUG] = debug ? "1" : "0";
        plain_ = job_.run();
        want_ = job_.outputs();
        CHECK(plain_.status == 0);
    }

    int allocations() {
        job_.run(60000, [this] {
            preload();
            setenv("FAIL_COUNT", (job_.folder / "count").c_str(), 1);
        });
        return std::atoi(read_file(job_.folder / "count").c_str());
    }

    void check(int number, bool on, Tally &tally) {
        INFO("allocation ", number, std::string(on ? " and all later ones" : ""));
        job_.remove_outputs();
        const Outcome outcome = job_.run(60000, [&] {
            preload();
            setenv("FAIL_AT", std::to_string(number).c_str(), 1);
            if (on)
                setenv("FAIL_ON", "1", 1);
        });
        CHECK(outcome.out == "");
        const Pictures got = job_.outputs();
        if (outcome.status == 0) { // what the C library can do without
            CHECK(outcome.err == plain_.err);
            CHECK(got == want_);
            tally.survived++;
            return;
        }
        CHECK(outcome.status == 1);
        const std::string line = "Unable to allocate memory\n";
        CHECK((outcome.err == line || outcome.err == plain_.err + line));
        CHECK((got.rgb == "(no file)" || got.rgb == "" || got.rgb == want_.rgb));
        CHECK((got.dc == "(no file)" || got.dc == "" || got.dc == want_.dc));
        CHECK(got.gain == "(no file)");
        tally.refused++;
    }

  private:
    static void preload() {
        // By its bare name: the list of preloaded libraries is split at blanks, the search path is not.
        const std::string shim = std::getenv("CFA_FAIL_ALLOCATION");
        const size_t slash = shim.rfind('/');
        setenv("LD_LIBRARY_PATH", shim.substr(0, slash).c_str(), 1);
        setenv("LD_PRELOAD", shim.substr(slash + 1).c_str(), 1);
        setenv("TZ", "UTC0", 1); // otherwise the zone is looked up, and memory taken, for every log record
    }

    Job job_;
    Outcome plain_;
    Pictures want_;
};

void check_all(const std::string &raw, const std::string &ini, bool debug, int stride) {
    if (SANITIZED || std::getenv("CFA_FAIL_ALLOCATION") == nullptr)
        return; // a sanitizer's allocator cannot be replaced
    FailingJob job(raw, ini, debug);
    const int total = job.allocations();
    CHECK(total > 20);
    Tally once, from_there_on;
    Thin thin(stride);
    for (int number = 1; number <= total; number++) {
        if (!thin.take())
            continue;
        job.check(number, false, once);
        job.check(number, true, from_there_on);
    }
    CHECK(from_there_on.refused > 0);
    CHECK(once.survived <= 12); // buffers of streams, the exception handler's reserve
    MESSAGE(total, " allocations; failing once: ", once.refused, " errors, ", once.survived,
            " whole runs; failing from there on: ", from_there_on.refused, " errors, ",
            from_there_on.survived, " whole runs");
}

} // namespace

TEST_CASE("a picture in rows") {
    check_all(mosaic(24, 16, 4095, 1), all_stages_ini(), false, 3);
}

TEST_CASE("a picture in whole frames, cut short") {
    check_all(mosaic(24, 16, 4095, 1).substr(0, 500), all_stages_ini(), false, 5);
}

TEST_CASE("a bypassed picture") {
    check_all(mosaic(24, 16, 4095, 1), "[cfa]\nreg_cfa_enable = 0\n", false, 1);
}

TEST_CASE("all debug images") {
    check_all(mosaic(24, 16, 4095, 1), all_stages_ini(), true, 13);
}
