#include "tests/support/support.h"

#include "cmodel/common/error.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include <csignal>
#include <fcntl.h>
#include <regex.h>
#include <sys/wait.h>
#include <unistd.h>

#include "log/log.h"

namespace {

std::vector<std::string> records;

void record_sink(LogEvent &event) {
    char message[5000];
    std::vsnprintf(message, sizeof message, event.format, event.args);
    records.push_back(std::string(log_level_string(event.level)) + " " + event.file + ":" +
                      std::to_string(event.line) + ": " + message);
}

std::string read_stream(std::FILE *stream) {
    std::string text;
    std::rewind(stream);
    for (int c = std::getc(stream); c != EOF; c = std::getc(stream))
        text += static_cast<char>(c);
    return text;
}

// The status of a child as a shell would give it; kills it when the time is over.
int wait_for(pid_t pid, int timeout_ms) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeout_ms);
    int status = 0;
    while (waitpid(pid, &status, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() > end) {
            kill(pid, SIGKILL);
            waitpid(pid, &status, 0);
            return 124;
        }
        usleep(500);
    }
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
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

std::vector<std::string> take_log() {
    [[maybe_unused]] static const int added = log_add_callback(record_sink, nullptr, LOG_TRACE);
    std::vector<std::string> taken;
    taken.swap(records);
    return taken;
}

Outcome run_child(const std::function<void()> &function, int timeout_ms) {
    std::FILE *const out = std::tmpfile();
    std::FILE *const err = std::tmpfile();
    if (out == nullptr || err == nullptr)
        throw std::runtime_error("no scratch file");
    std::fflush(nullptr);
    const pid_t pid = fork();
    if (pid == 0) {
        dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
        dup2(fileno(out), STDOUT_FILENO);
        dup2(fileno(err), STDERR_FILENO);
        try {
            function();
        } catch (const std::exception &error) { // as the tool's main
            cfa::end_process(error);
        }
        std::fflush(nullptr);
        _exit(0);
    }
    if (pid < 0)
        throw std::runtime_error("no process");
    Outcome outcome;
    outcome.status = wait_for(pid, timeout_ms);
    outcome.out = read_stream(out);
    outcome.err = read_stream(err);
    std::fclose(out);
    std::fclose(err);
    return outcome;
}

Outcome run_program(const std::vector<std::string> &args, int timeout_ms,
                    const std::function<void()> &prepare) {
    std::vector<char *> argv;
    for (const std::string &arg : args)
        argv.push_back(const_cast<char *>(arg.c_str()));
    argv.push_back(nullptr);
    return run_child(
        [&] {
            if (prepare)
                prepare();
            execv(argv[0], argv.data());
            _exit(127);
        },
        timeout_ms);
}

std::string tool_path() {
    const char *const path = std::getenv("CFA_CMODEL");
    if (path != nullptr)
        return path;
    return std::filesystem::read_symlink("/proc/self/exe").parent_path().parent_path() / "cfa_cmodel";
}
