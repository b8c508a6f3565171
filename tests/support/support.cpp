#include "tests/support/support.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <utility>

#include <csignal>
#include <fcntl.h>
#include <regex.h>
#include <sys/wait.h>
#include <unistd.h>

#include "cmodel/common/error.h"
#include "log/log.h"

namespace {

std::vector<std::string> records;
pid_t records_owner; // a child's records are nobody's

void record_sink(LogEvent &event) {
    if (getpid() != records_owner)
        return;
    char message[5000];
    std::vsnprintf(message, sizeof message, event.format, event.args);
    records.push_back(std::string(log_level_string(event.level)) + " " + event.file + ":" +
                      std::to_string(event.line) + ": " + message);
}

std::string read_stream(std::FILE *stream) {
    return read_file("/proc/self/fd/" + std::to_string(fileno(stream)));
}

} // namespace

TempFolder::TempFolder() {
    std::string pattern = std::filesystem::temp_directory_path() / "cfa_test.XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr)
        throw std::runtime_error("no scratch folder");
    path = pattern;
}

TempFolder::~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
}

std::string read_file(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    if (!in)
        return "(no file)";
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

void write_file(const std::string &path, const std::string &bytes) {
    std::ofstream out(path, std::ios::binary);
    out << bytes;
    if (!out.flush())
        throw std::runtime_error("cannot write " + path);
}

// The expressions of the platform: those of the C++ library raise false warnings under the sanitizers.
bool matches(const std::string &text, const std::string &pattern) {
    regex_t regex;
    if (regcomp(&regex, ("^(" + pattern + ")$").c_str(), REG_EXTENDED | REG_NOSUB) != 0)
        throw std::runtime_error("bad expression " + pattern);
    const bool matching = regexec(&regex, text.c_str(), 0, nullptr, 0) == 0;
    regfree(&regex);
    return matching;
}

std::vector<std::string> lines_of(const std::string &text, size_t cut) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line.substr(std::min(cut, line.size())));
    return lines;
}

std::vector<std::string> take_log() {
    [[maybe_unused]] static const int added =
        (records_owner = getpid(), log_add_callback(record_sink, nullptr, LOG_TRACE));
    return std::exchange(records, {});
}

Process::Process(const std::function<void()> &function) : out_(std::tmpfile()), err_(std::tmpfile()) {
    if (out_ == nullptr || err_ == nullptr)
        throw std::runtime_error("no scratch file");
    std::fflush(nullptr);
    pid_ = fork();
    if (pid_ == 0) {
        dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
        dup2(fileno(out_), STDOUT_FILENO);
        dup2(fileno(err_), STDERR_FILENO);
        try {
            function();
        } catch (const std::exception &error) { // as the tool's main
            cfa::end_process(error);
        }
        std::fflush(nullptr);
        _exit(0);
    }
    if (pid_ < 0)
        throw std::runtime_error("no process");
}

Process::~Process() {
    wait(0);
    std::fclose(out_);
    std::fclose(err_);
}

Outcome Process::wait(int timeout_ms) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeout_ms);
    int status = 0;
    bool late = false;
    while (pid_ > 0 && waitpid(pid_, &status, late ? 0 : WNOHANG) == 0) {
        late = std::chrono::steady_clock::now() > end;
        if (late)
            kill(pid_, SIGKILL);
        else
            usleep(200);
    }
    pid_ = 0;
    return {late                  ? 124
            : WIFSIGNALED(status) ? 128 + WTERMSIG(status)
                                  : WEXITSTATUS(status),
            read_stream(out_), read_stream(err_)};
}

std::string Process::said() const {
    for (int i = 0; i < 10000 && !read_stream(out_).ends_with('\n'); ++i)
        usleep(1000);
    return read_stream(out_);
}

std::ostream &operator<<(std::ostream &out, const Outcome &outcome) {
    return out << "status " << outcome.status << ", out '" << outcome.out << "', err '" << outcome.err << "'";
}

Outcome run_child(const std::function<void()> &function, int timeout_ms) {
    return Process(function).wait(timeout_ms);
}

Outcome run_program(const std::vector<std::string> &args, int timeout_ms,
                    const std::function<void()> &prepare) {
    std::vector<char *> argv = argv_of(args);
    return run_child(
        [&] {
            if (prepare)
                prepare();
            execv(argv[0], argv.data());
            _exit(127);
        },
        timeout_ms);
}

std::vector<char *> argv_of(const std::vector<std::string> &args) {
    std::vector<char *> argv;
    for (const std::string &arg : args)
        argv.push_back(const_cast<char *>(arg.c_str()));
    argv.push_back(nullptr);
    return argv;
}

std::string tool_path() {
    const char *const path = std::getenv("CFA_CMODEL");
    if (path != nullptr)
        return path;
    return std::filesystem::read_symlink("/proc/self/exe").parent_path().parent_path() / "cfa_cmodel";
}
