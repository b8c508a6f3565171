#include "tests/trust/job.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <bit>
#include <filesystem>
#include <random>

namespace {

int given_rounds = 0;

} // namespace

int rounds(int quick) {
    return given_rounds > 0 ? given_rounds : SANITIZED ? std::max(1, quick / 4) : quick;
}

void set_rounds(int count) {
    given_rounds = count;
}

Thin::Thin(int stride) : stride_(given_rounds > 0 ? 1 : SANITIZED ? 4 * stride + 1 : stride) {}

std::string mosaic(int width, int height, int64_t max_value, uint32_t seed) {
    std::string bytes = "P5\n" + std::to_string(width) + " " + std::to_string(height) + "\n" +
                        std::to_string(max_value) + "\n";
    std::mt19937 random(seed);
    const int bits = static_cast<int>(std::bit_width(static_cast<uint64_t>(max_value) - 1));
    for (int i = 0; i < width * height; i++) {
        const uint64_t sample = random() % static_cast<uint64_t>(max_value);
        for (int shift = (bits - 1) / 8 * 8; shift >= 0; shift -= 8)
            bytes += static_cast<char>(sample >> shift);
    }
    return bytes;
}

Job::Job(const std::string &raw, const std::string &cfa_ini) {
    write_file(folder / "raw", raw);
    write_file(folder / "cfa.ini", cfa_ini);
    write_file(folder / "top.ini", "");
    args = {tool_path(),
            folder / "cfa.ini",
            folder / "log",
            "2",
            "0",
            folder.path,
            folder / "top.ini",
            folder / "raw",
            folder / "rgb",
            folder / "dc",
            folder / "gain"};
}

Outcome Job::run(int timeout_ms, const std::function<void()> &prepare) const {
    return run_program(args, timeout_ms, prepare);
}

Pictures Job::outputs() const {
    return {read_file(args[RGB]), read_file(args[DC]), read_file(args[GAIN])};
}

Pictures Job::expected() {
    check_silent(run());
    const Pictures pictures = outputs();
    CHECK(pictures.rgb.starts_with("P6\n"));
    CHECK(pictures.dc.starts_with("P5\n"));
    CHECK(pictures.gain.size() == pictures.dc.size());
    remove_outputs();
    return pictures;
}

void Job::remove_outputs() const {
    for (const Argument output : {RGB, DC, GAIN})
        std::filesystem::remove(args[output]);
}

std::string all_stages_ini() {
    return "[cfa]\nreg_cfa_ymoire_enable = 1\nreg_cfa_shpn_enable = 1\nreg_cfa_shpn_gain_value = 40\n";
}

void check_error(const Outcome &outcome, const std::string &line) {
    CHECK(outcome.status == 1);
    CHECK(outcome.err == line + "\n");
    CHECK(outcome.out == "");
}

void check_waits(const Job &job, const std::string &path, const std::function<void()> &prepare) {
    Outcome outcome;
    for (const int milliseconds : {150, 1500, 10000}) { // longer where a start takes its time
        outcome = job.run(milliseconds, prepare);
        if (outcome.out != "")
            break;
    }
    CHECK(outcome.status == 124);
    CHECK(outcome.out == "wait pre frame ready " + path + "\n");
    CHECK(outcome.err == "");
}

void check_silent(const Outcome &outcome) {
    CHECK(outcome.status == 0);
    CHECK(outcome.err == "");
    CHECK(outcome.out == "");
}
