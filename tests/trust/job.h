// A run of the tool in a folder of its own: what the trust tests start, disturb and judge.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "tests/support/support.h"

/// Whether the programs under test carry the address sanitizer: no preloading, no limit on addresses, and
/// slow to start.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool SANITIZED = true;
#elif defined(__has_feature)
constexpr bool SANITIZED = __has_feature(address_sanitizer);
#else
constexpr bool SANITIZED = false;
#endif

/// How often a random test runs: `quick` times, a quarter of it under sanitizers, or as --rounds=N says.
int rounds(int quick);
void set_rounds(int count);

/// Takes one of `stride` cases of a long list, one of four times as many under sanitizers, or with --rounds
/// every one.
class Thin {
  public:
    explicit Thin(int stride);
    bool take() { return at_++ % stride_ == 0; }

  private:
    int stride_;
    int at_ = 0;
};

/// A P5 picture of random samples below the maximum value.
std::string mosaic(int width, int height, int64_t max_value, uint32_t seed);

/// Positions of the arguments, argv[0] being the tool.
enum Argument { INI = 1, LOG, LEVEL, DEBUG, DEBUG_FOLDER, TOP_INI, RAW, RGB, DC, GAIN };

/// Bytes of the three outputs.
struct Pictures {
    std::string rgb, dc, gain;
    bool operator==(const Pictures &) const = default;
};

/// A folder with the files raw, cfa.ini and top.ini, and the command line that makes rgb, dc and gain of
/// them. The log goes to the file log, from INFO on; debug images are off and would go to the folder itself.
class Job {
  public:
    explicit Job(const std::string &raw, const std::string &cfa_ini = "");

    /// Runs the tool. prepare runs in its process before it starts.
    Outcome run(int timeout_ms = 60000, const std::function<void()> &prepare = {}) const;

    /// The outputs where the command line has them.
    Pictures outputs() const;

    /// The outputs of a run that nothing disturbs. REQUIRES nothing but default places.
    Pictures expected();

    void remove_outputs() const;

    TempFolder folder;
    std::vector<std::string> args;
};

/// Registers that put every stage to work.
std::string all_stages_ini();

/// Fails the test unless the run ended with status 1, one line on standard error and nothing on standard
/// output.
void check_error(const Outcome &outcome, const std::string &line);

/// Fails the test unless the tool waits for this path: its line is there at once, and no end.
void check_waits(const Job &job, const std::string &path, const std::function<void()> &prepare = {});

/// Fails the test unless the run ended with status 0 and without a word.
void check_silent(const Outcome &outcome);
