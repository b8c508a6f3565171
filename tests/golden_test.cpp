// golden_test TOOL FOLDER...: runs the tool on every case of the folders, with debug images, and compares all
// it writes with what is recorded, byte for byte. One line per file that differs, is missing or is too many.
//
// A case is a folder with cfa.ini, cmodel_top.ini, raw.ppm, the outputs out.ppm, out_dc.ppm, out_sg.ppm, and
// dbg/ with its debug images, if it has any.

#include <cstdio>
#include <filesystem>
#include <set>

#include "tests/support/support.h"

namespace fs = std::filesystem;

namespace {

const std::set<std::string> inputs = {"cfa.ini", "cmodel_top.ini", "raw.ppm"};

// Files of a folder and its folders, by their path in it.
std::set<std::string> files_in(const fs::path &folder) {
    std::set<std::string> files;
    for (const auto &entry : fs::recursive_directory_iterator(folder))
        if (entry.is_regular_file())
            files.insert(fs::relative(entry.path(), folder));
    return files;
}

// Returns how many files differ.
int check_case(const std::string &tool, const fs::path &want) {
    const TempFolder got;
    fs::create_directory(got / "dbg");
    const Outcome run =
        run_program({tool, want / "cfa.ini", "/dev/null", "0", "1", got / "dbg", want / "cmodel_top.ini",
                     want / "raw.ppm", got / "out.ppm", got / "out_dc.ppm", got / "out_sg.ppm"},
                    60000); // the tool waits without end for what it cannot open
    if (run.status != 0)
        std::printf("%s: status %d\n%s", want.c_str(), run.status, run.err.c_str());
    std::set<std::string> files = files_in(got.path);
    files.merge(files_in(want));
    int faults = run.status != 0;
    for (const std::string &file : files) {
        if (inputs.contains(file) || read_file(got / file) == read_file(want / file))
            continue;
        std::printf("%s/%s: %s\n", want.c_str(), file.c_str(),
                    !fs::exists(want / file)  ? "not recorded"
                    : !fs::exists(got / file) ? "not written"
                                              : "differs");
        ++faults;
    }
    return faults;
}

} // namespace

int main(int argc, char **argv) {
    int cases = 0, faults = 0;
    for (int i = 2; i < argc; ++i)
        for (const auto &entry : fs::directory_iterator(argv[i])) {
            faults += check_case(argv[1], entry.path());
            ++cases;
        }
    std::printf("%d cases, %d faults\n", cases, faults);
    return cases > 0 && faults == 0 ? 0 : 1; // no case: golden_test TOOL FOLDER...
}
