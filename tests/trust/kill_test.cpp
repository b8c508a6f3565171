// A run killed at a random moment leaves no picture that looks finished and is not, and nothing else behind;
// the next run is whole.
#include <doctest/doctest.h>

#include <chrono>
#include <filesystem>
#include <random>

#include <csignal>
#include <unistd.h>

#include "tests/trust/job.h"

namespace {

// Kills this process, which is about to become the tool, after a while.
void kill_after(useconds_t microseconds) {
    const pid_t victim = getpid();
    if (fork() != 0)
        return;
    usleep(microseconds);
    if (getppid() == victim)
        kill(victim, SIGKILL);
    _exit(0);
}

bool absent_or_start_of(const std::string &bytes, const std::string &whole) {
    return bytes == "(no file)" || whole.starts_with(bytes);
}

int64_t microseconds_of(const std::function<void()> &action) {
    const auto start = std::chrono::steady_clock::now();
    action();
    return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - start)
        .count();
}

// Rounds on a picture of this size, over the remains of the round before or over nothing.
void check_rounds(int count, int width, int height, bool debug) {
    Job job(mosaic(width, height, 4095, 1), all_stages_ini());
    const Pictures want = job.expected();
    const std::string debug_folder = job.folder / "debug";
    std::filesystem::create_directory(debug_folder);
    job.args[DEBUG] = debug ? "1" : "0";
    job.args[DEBUG_FOLDER] = debug_folder;
    const int64_t duration = microseconds_of([&] { check_silent(job.run()); });
    std::mt19937 random(1);
    int killed = 0, started = 0;
    for (int round = 0; round < count; round++) {
        if (random() % 2 == 0)
            job.remove_outputs();
        const auto moment = static_cast<useconds_t>(random() % static_cast<uint64_t>(duration));
        INFO("round ", round, ", killed after ", moment, " of ", duration, " microseconds");
        const Outcome outcome = job.run(60000, [&] { kill_after(moment); });
        CHECK((outcome.status == 0 || outcome.status == 128 + SIGKILL));
        killed += outcome.status != 0;
        const Pictures left = job.outputs();
        started += outcome.status != 0 && left.rgb != "(no file)" && left != want;
        CHECK(absent_or_start_of(left.rgb, want.rgb));
        CHECK(absent_or_start_of(left.dc, want.dc));
        CHECK(absent_or_start_of(left.gain, want.gain));
        for (const auto &file : std::filesystem::directory_iterator(job.folder.path)) {
            const std::string name = file.path().filename();
            INFO(name);
            CHECK(std::string(" raw cfa.ini top.ini log rgb dc gain debug ").find(" " + name + " ") !=
                  std::string::npos);
        }
        check_silent(job.run());
        CHECK(job.outputs() == want);
    }
    CHECK(killed > 0);
    MESSAGE(count, " runs, ", killed, " killed, ", started, " of them with outputs begun");
}

} // namespace

TEST_CASE("killed in rows, with long outputs") {
    check_rounds(rounds(25), 512, 384, false);
}

TEST_CASE("killed in whole frames, with debug images") {
    check_rounds(rounds(15), 128, 96, true);
}
