// Runs of the tool in a folder of their own: what the tests of files and of the driver start, disturb and
// judge.
#pragma once

#include <cstdint>
#include <map>

#include "tests/support/support.h"

/// Whether the programs under test carry a sanitizer: no allocator but its own, and slow to start.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool SANITIZED = true;
#elif defined(__has_feature)
constexpr bool SANITIZED = __has_feature(address_sanitizer);
#else
constexpr bool SANITIZED = false;
#endif

/// How often a random test runs: `quick` times, a quarter of it under sanitizers, or as $CFA_TEST_ROUNDS
/// says.
int rounds(int quick);

/// The distance between two tried cases of a long list: `quick`, four times as far under sanitizers, or 1
/// with $CFA_TEST_ROUNDS.
int stride(int quick);

/// A P5 picture of random samples of 0..largest, in the bytes that the maximum value asks for.
std::string mosaic(int width, int height, uint32_t seed = 1, int32_t max_value = 4095,
                   int32_t largest = 4095);

/// Positions of the arguments, argv[0] being the tool.
enum Argument { INI = 1, LOG, LEVEL, DEBUG, DEBUG_FOLDER, TOP_INI, RAW, RGB, DC, GAIN };
constexpr Argument OUTPUTS[] = {RGB, DC, GAIN};

/// Bytes of the three outputs.
struct Pictures {
    std::string rgb, dc, gain;
    bool operator==(const Pictures &) const = default;
};

/// A folder with the files raw, cfa.ini and top.ini, and the command line that makes rgb, dc and gain of
/// them. The log goes to the file log; debug images are off and would go to the folder dbg.
class Job {
  public:
    explicit Job(const std::string &raw, const std::string &cfa_ini = "", const std::string &top_ini = "");

    /// Runs the tool: its main function in a child of the test or, if `built`, the built program. prepare
    /// runs in that process before.
    Outcome run(const std::function<void()> &prepare = {}, int timeout_ms = 60000) const {
        return Process([&] { become_tool(prepare); }).wait(timeout_ms);
    }

    /// For a process of its own: becomes the tool.
    [[noreturn]] void become_tool(const std::function<void()> &prepare = {}) const;

    /// The outputs where the command line has them.
    Pictures outputs() const { return {read_file(args[RGB]), read_file(args[DC]), read_file(args[GAIN])}; }

    /// The outputs of a run that nothing disturbs.
    Pictures expected() const;

    /// Outputs and debug images that are there, by name.
    std::map<std::string, std::string> pictures() const;

    /// Records of the log, without their time stamps.
    std::vector<std::string> log() const { return lines_of(read_file(args[LOG]), 20); }

    /// Removes outputs, debug images and log.
    void clear() const;

    TempFolder folder;
    std::vector<std::string> args;
    bool built = false;
};

/// Registers that put every stage to work.
extern const char *const ALL_STAGES;

/// Fails the test unless the tool waits for this path: its line is there at once, and no end.
void check_waits(const Job &job, const std::string &path, const std::function<void()> &prepare = {});
