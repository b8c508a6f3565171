// golden_test TOOL FOLDER...: runs the tool on every case of the folders, with debug images, and compares all
// it writes with what is recorded, byte for byte. One line per file that differs, is missing or is too many.
//
// A case is a folder with cfa.ini, cmodel_top.ini, raw.ppm, the outputs out.ppm, out_dc.ppm, out_sg.ppm, and
// dbg/ with its debug images, if it has any.

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

std::vector<char> bytes_of(const fs::path &path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

int run(const std::vector<std::string> &args) {
    std::vector<char *> argv;
    for (const std::string &arg : args)
        argv.push_back(const_cast<char *>(arg.c_str()));
    argv.push_back(nullptr);
    const pid_t pid = fork();
    if (pid == 0) {
        alarm(60); // the tool waits without end for what it cannot open
        execv(argv[0], argv.data());
        _exit(127);
    }
    int status = 0;
    if (pid < 0 || waitpid(pid, &status, 0) != pid)
        return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

std::set<std::string> names_in(const fs::path &folder) {
    std::set<std::string> names;
    if (fs::exists(folder))
        for (const auto &entry : fs::directory_iterator(folder))
            names.insert(entry.path().filename());
    return names;
}

// Compares one file; returns 1 and prints a line when it differs.
int compare(const std::string &name, const fs::path &got_path, const fs::path &want_path) {
    const char *const verdict = !fs::exists(want_path)                      ? "not recorded"
                                : !fs::exists(got_path)                     ? "not written"
                                : bytes_of(got_path) != bytes_of(want_path) ? "differs"
                                                                            : nullptr;
    if (verdict == nullptr)
        return 0;
    std::printf("%s: %s\n", name.c_str(), verdict);
    return 1;
}

int check_case(const std::string &tool, const fs::path &folder, const fs::path &scratch) {
    const std::string name = folder.filename();
    const fs::path dbg = scratch / "dbg";
    fs::create_directories(dbg);
    const int status =
        run({tool, folder / "cfa.ini", scratch / "log", "0", "1", dbg, folder / "cmodel_top.ini",
             folder / "raw.ppm", scratch / "out.ppm", scratch / "out_dc.ppm", scratch / "out_sg.ppm"});
    int faults = status != 0;
    if (status != 0)
        std::printf("%s: status %d\n", name.c_str(), status);
    for (const char *const file : {"out.ppm", "out_dc.ppm", "out_sg.ppm"})
        faults += compare(name + "/" + file, scratch / file, folder / file);
    std::set<std::string> images = names_in(dbg);
    images.merge(names_in(folder / "dbg"));
    for (const std::string &file : images)
        faults += compare(name + "/dbg/" + file, dbg / file, folder / "dbg" / file);
    return faults;
}

} // namespace

int main(int argc, char **argv) {
    if (argc < 3) {
        std::fprintf(stderr, "Usage: golden_test TOOL FOLDER...\n");
        return 2;
    }
    std::string pattern = fs::temp_directory_path() / "cfa_golden.XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr)
        return 2;
    int cases = 0;
    int faults = 0;
    for (int i = 2; i < argc; i++) {
        for (const auto &entry : fs::directory_iterator(argv[i])) {
            faults += check_case(argv[1], entry.path(), fs::path(pattern) / entry.path().filename());
            cases++;
        }
    }
    fs::remove_all(pattern);
    std::printf("%d cases, %d faults\n", cases, faults);
    return cases > 0 && faults == 0 ? 0 : 1;
}
