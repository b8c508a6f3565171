// cfatool conformance: does this build of the model give the recorded bytes?
#include <chrono>
#include <climits>
#include <fcntl.h>
#include <filesystem>
#include <fmt/core.h>
#include <iostream>
#include <map>
#include <memory>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

#include "tools/cfatool/base/files.h"
#include "tools/cfatool/base/scratch_folder.h"
#include "tools/cfatool/conformance/conformance_set.h"
#include "tools/cfatool/runs/run_images.h"
#include "tools/cfatool/subcommands.h"

namespace cfatool {
namespace {

constexpr unsigned SECONDS_PER_RUN = 30; // the tool waits for ever for what it cannot open

struct ConformanceOptions {
    std::string tool, sums, record, inputs, bench;
    bool list = false;
};

using Sums = std::map<std::string, std::string>; // "v1/case/file" -> sum

/// The folder that this program lies in.
std::string program_folder() {
    char path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
    if (length <= 0)
        throw CommandTrouble("the program does not find itself; give --tool and --sums");
    return std::filesystem::path(std::string(path, static_cast<size_t>(length))).parent_path().string();
}

/// Lines "sum  name", as sha256sum writes them.
Sums read_sums(const std::string &path) {
    Sums sums;
    std::istringstream lines(read_whole_file(path));
    const std::string version = fmt::format("v{}/", CONFORMANCE_VERSION);
    for (std::string line; std::getline(lines, line);) {
        if (line.size() < 67 || line.compare(64, 2, "  ") != 0)
            throw file_trouble(path, fmt::format("line {} is no sum and name", sums.size() + 1));
        if (line.compare(66, version.size(), version) != 0)
            throw file_trouble(path, fmt::format("is not of version {} of the set, which this program knows",
                                                 CONFORMANCE_VERSION));
        sums[line.substr(66)] = line.substr(0, 64);
    }
    if (sums.empty())
        throw file_trouble(path, "holds no sum");
    return sums;
}

/// Runs the tool inside a folder. Returns "" or what went wrong.
std::string run_tool(const std::string &tool, const std::string &folder,
                     const std::vector<std::string> &arguments) {
    std::vector<char *> argv = {const_cast<char *>(tool.c_str())};
    for (const std::string &argument : arguments)
        argv.push_back(const_cast<char *>(argument.c_str()));
    argv.push_back(nullptr);
    const pid_t child = fork();
    if (child < 0)
        throw errno_trouble(tool);
    if (child == 0) {
        const int null = open("/dev/null", O_RDWR);
        for (const int descriptor : {0, 1, 2})
            dup2(null, descriptor);
        alarm(SECONDS_PER_RUN);
        if (chdir(folder.c_str()) == 0)
            execv(argv[0], argv.data());
        _exit(127);
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0)
        if (errno != EINTR)
            throw errno_trouble(tool);
    if (WIFEXITED(status) && WEXITSTATUS(status) == 127)
        throw file_trouble(tool, "cannot be run");
    if (WIFSIGNALED(status))
        return WTERMSIG(status) == SIGALRM ? fmt::format("takes longer than {} s", SECONDS_PER_RUN)
                                           : fmt::format("ended by signal {}", WTERMSIG(status));
    return WEXITSTATUS(status) == 0 ? "" : fmt::format("ended with status {}", WEXITSTATUS(status));
}

/// Runs one case with debug images (the whole-plane reference) and without (what runs when nobody looks), and
/// adds the sums of all files. What goes wrong is added to `problems`.
void run_case(const ConformanceCase &c, const std::string &tool, Sums &sums,
              std::vector<std::string> &problems) {
    const ScratchFolder folder;
    for (const char *name : {"/dbg", "/plain"})
        std::filesystem::create_directory(folder.path + name);
    write_conformance_case(c, folder.path);
    const std::string prefix = fmt::format("v{}/{}/", CONFORMANCE_VERSION, c.name);
    for (const std::string &outputs : {std::string(""), std::string("plain/")}) {
        const std::string debug = outputs.empty() ? "1" : "0";
        const std::string wrong =
            run_tool(tool, folder.path,
                     {"cfa.ini", "run.log", "5", debug, "dbg", "cmodel_top.ini", "raw.ppm",
                      outputs + "out.ppm", outputs + "out_dc.ppm", outputs + "out_sg.ppm"});
        if (!wrong.empty()) {
            problems.push_back(prefix + ": " + tool + " " + wrong);
            return;
        }
    }
    for (const FoundImage &image : find_images(folder.path))
        sums[prefix + image.name] = sha256_of_file(image.path);
    for (const FoundImage &image : find_images(folder.path + "/plain"))
        if (sums[prefix + image.name] != sha256_of_file(image.path))
            problems.push_back(prefix + image.name + ": differs when no debug images are written");
}

/// Whether any file of this file's case was made; the failure of a whole case has been reported.
bool case_was_made(const std::string &name, const Sums &made) {
    const std::string prefix = name.substr(0, name.rfind('/') + 1);
    const auto first = made.lower_bound(prefix);
    return first != made.end() && first->first.compare(0, prefix.size(), prefix) == 0;
}

void compare_sums(const Sums &recorded, const Sums &made, std::vector<std::string> &problems) {
    for (const auto &[name, sum] : recorded) {
        const auto found = made.find(name);
        if (found == made.end() && case_was_made(name, made))
            problems.push_back(name + ": is missing");
        else if (found != made.end() && found->second != sum)
            problems.push_back(name + ": differs from the recorded sum");
    }
    for (const auto &[name, sum] : made)
        if (!recorded.contains(name))
            problems.push_back(name + ": was not recorded");
}

void write_sums(const std::string &path, const Sums &sums) {
    std::string text;
    for (const auto &[name, sum] : sums)
        text += sum + "  " + name + "\n";
    write_whole_file(path, text);
}

std::string registers_name(RegisterSet set) {
    static const char *const NAMES[] = {"defaults", "everything", "some", "all", "drawn", "bypass"};
    return NAMES[static_cast<int>(set)];
}

/// The recipe of every case, and what it is there for.
void list_cases() {
    for (const ConformanceCase &c : conformance_cases())
        std::cout << c.name << ": " << c.adds << "\n    " << c.chart << " " << c.width << " x " << c.height
                  << ", id " << c.bayer << ", " << c.bits << " bits, registers "
                  << registers_name(c.registers) << ", seed " << c.seed
                  << (c.settings.empty() ? "" : ", " + c.settings) << "\n";
}

/// The inputs of every case, a folder each.
void write_inputs(const std::string &folder) {
    for (const ConformanceCase &c : conformance_cases()) {
        std::filesystem::create_directories(folder + "/" + c.name);
        write_conformance_case(c, folder + "/" + c.name);
    }
}

std::string absolute(const std::string &path) {
    return path.find('/') == 0 ? path : std::filesystem::absolute(path).string();
}

int run(const ConformanceOptions &options) {
    if (options.list)
        list_cases();
    if (!options.inputs.empty())
        write_inputs(options.inputs);
    if (!options.bench.empty())
        export_conformance_set(options.bench);
    if (options.list || !options.inputs.empty() || !options.bench.empty())
        return STATUS_GOOD;
    const auto start = std::chrono::steady_clock::now();
    const std::string tool = absolute(options.tool.empty() ? program_folder() + "/cfa_cmodel" : options.tool);
    const std::string installed = program_folder() + "/" CFATOOL_DATA "/conformance.sha256",
                      built = program_folder() + "/conformance.sha256", // a build has them beside the program
        recorded_path = !options.sums.empty() ? options.sums
                        : readable(built)     ? built
                                              : installed;
    const bool record = !options.record.empty();
    if (record && !options.sums.empty())
        throw CommandTrouble("--record makes new sums and takes no --sums");
    const Sums recorded = record ? Sums() : read_sums(recorded_path);
    if (access(tool.c_str(), X_OK) != 0)
        throw errno_trouble(tool);

    Sums made;
    std::vector<std::string> problems;
    const std::vector<ConformanceCase> &cases = conformance_cases();
    for (const ConformanceCase &c : cases)
        run_case(c, tool, made, problems);
    if (!record)
        compare_sums(recorded, made, problems);
    for (const std::string &problem : problems)
        std::cout << problem << "\n";
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    if (record && problems.empty())
        write_sums(options.record, made);
    std::cout << fmt::format("conformance set {}: {} cases, {} files, {} problems, {:.1f} s{}\n",
                             CONFORMANCE_VERSION, cases.size(), made.size(), problems.size(), seconds.count(),
                             record && problems.empty() ? ", recorded in " + options.record : "");
    return problems.empty() ? STATUS_GOOD : STATUS_FOUND;
}

} // namespace

void conformance_command(Command &command) {
    const auto options = std::make_shared<ConformanceOptions>();
    command.text("--tool", options->tool, "PATH", "The cfa_cmodel to check (the one beside this program)");
    command.text("--sums", options->sums, "FILE",
                 "The recorded sums (those beside this program, or installed with it)");
    command.text("--record", options->record, "FILE",
                 "Record the sums of this tool instead of checking them");
    command.flag("--list", options->list, "Say what each case is made of and there for, and run nothing");
    command.text("--inputs", options->inputs, "FOLDER",
                 "Write the inputs of every case into FOLDER/CASE, and run nothing");
    command.text("--export", options->bench, "FOLDER",
                 "Write the whole set for another bench: inputs, outputs, planes, $readmemh text, a plan");
    command.footer("Example: cfatool conformance --tool ./cfa_cmodel\n"
                   "Every case runs with and without debug images. Needs neither network nor other files.\n"
                   "Exit status: 0 all bytes as recorded, 1 some are not, 2 trouble.");
    command.run(options, run);
}

} // namespace cfatool
