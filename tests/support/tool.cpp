#include "tests/support/tool.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include <unistd.h>

#include <doctest/doctest.h>

#include "cmodel/common/ppm_stream.h"
#include "tests/support/planes.h"

using namespace cfa;

/// The driver's main under another name.
int cfa_cmodel_main(int argc, char **argv);

const char *const ALL_STAGES =
    "[cfa]\nreg_cfa_ymoire_enable = 1\nreg_cfa_shpn_enable = 1\nreg_cfa_shpn_gain_value = 40\n";

namespace {

namespace fs = std::filesystem;

const char *const given_rounds = std::getenv("CFA_TEST_ROUNDS");

} // namespace

int rounds(int quick) {
    return given_rounds != nullptr ? std::atoi(given_rounds) : SANITIZED ? std::max(1, quick / 4) : quick;
}

int stride(int quick) {
    return given_rounds != nullptr ? 1 : SANITIZED ? 4 * quick + 1 : quick;
}

std::string mosaic(int width, int height, uint32_t seed, int32_t max_value, int32_t largest) {
    std::string bytes = "P5\n" + std::to_string(width) + " " + std::to_string(height) + "\n" +
                        std::to_string(max_value) + "\n";
    Noise noise(seed);
    const int top = max_value == 1 ? -8 : 8 * ppm_sample_bytes(ppm_bit_depth(max_value)) - 8;
    for (int i = 0; i < width * height; ++i) {
        const int32_t v = noise.in(0, largest);
        for (int shift = top; shift >= 0; shift -= 8)
            bytes += static_cast<char>(v >> shift);
    }
    return bytes;
}

Job::Job(const std::string &raw, const std::string &cfa_ini, const std::string &top_ini) {
    args = {tool_path(), "cfa.ini", "log", "0", "0", "dbg", "top.ini", "raw", "rgb", "dc", "gain"};
    for (const Argument file : {INI, LOG, DEBUG_FOLDER, TOP_INI, RAW, RGB, DC, GAIN})
        args[file] = folder / args[file];
    write_file(args[RAW], raw);
    write_file(args[INI], cfa_ini);
    write_file(args[TOP_INI], top_ini);
    fs::create_directory(args[DEBUG_FOLDER]);
}

void Job::become_tool(const std::function<void()> &prepare) const {
    std::vector<char *> argv = argv_of(args);
    if (prepare)
        prepare();
    const auto main = [&]() noexcept { return cfa_cmodel_main(static_cast<int>(args.size()), argv.data()); };
    if (!built)
        std::exit(main()); // what main lets through ends the process, as in the built program
    execv(argv[0], argv.data());
    _exit(127);
}

Pictures Job::expected() const {
    CHECK(run() == SILENT);
    const Pictures pictures = outputs();
    CHECK(pictures.rgb.starts_with("P6\n"));
    CHECK(pictures.dc.starts_with("P5\n"));
    CHECK(pictures.gain.size() == pictures.dc.size());
    clear();
    return pictures;
}

std::map<std::string, std::string> Job::pictures() const {
    std::map<std::string, std::string> found;
    for (const auto &entry : fs::recursive_directory_iterator(folder.path)) {
        const std::string name = entry.path().filename();
        if (entry.is_regular_file() && name != "raw" && name != "log" && !name.ends_with(".ini"))
            found[entry.path()] = read_file(entry.path());
    }
    return found;
}

void Job::clear() const {
    for (const auto &[path, bytes] : pictures())
        fs::remove(path);
    fs::remove(args[LOG]);
}

void check_waits(const Job &job, const std::string &path, const std::function<void()> &prepare) {
    Process process([&] { job.become_tool(prepare); });
    CHECK(process.said() == "wait pre frame ready " + path + "\n");
    CHECK(process.wait(25) ==
          Outcome{124, "wait pre frame ready " + path + "\n", ""}); // longer than the pause between two tries
}
