// Helpers of the tests: scratch folders, files as text, the log, functions and programs in a process of their
// own.
#pragma once

#include <cstdio>
#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

#include <sys/types.h>

/// A new folder that disappears with the object.
class TempFolder {
  public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder &) = delete;
    TempFolder &operator=(const TempFolder &) = delete;

    std::string operator/(const std::string &name) const { return path + "/" + name; }

    std::string path;
};

/// Whole files; a missing file reads as "(no file)".
std::string read_file(const std::string &path);
void write_file(const std::string &path, const std::string &bytes);

/// Whether the whole text matches an extended regular expression.
bool matches(const std::string &text, const std::string &pattern);

/// The lines of a text, each without its first `cut` characters (20 for the time stamp of a log record).
std::vector<std::string> lines_of(const std::string &text, size_t cut = 0);

/// Records logged since the last call, as "LEVEL label:line: message".
std::vector<std::string> take_log();

/// How a process ended and what it printed.
struct Outcome {
    int status; // exit status; 128 + n after signal n; 124 when the time was over
    std::string out;
    std::string err;
    bool operator==(const Outcome &) const = default;
};
std::ostream &operator<<(std::ostream &out, const Outcome &outcome);

/// A run without a word, and one that an error ended.
inline const Outcome SILENT = {0, "", ""};
inline Outcome error_line(const std::string &line) {
    return {1, "", line + "\n"};
}

/// A function at work in a child process, which then ends with status 0. Standard input is empty.
class Process {
  public:
    explicit Process(const std::function<void()> &function);
    Process(const Process &) = delete;
    Process &operator=(const Process &) = delete;
    ~Process();

    /// Waits for the end, and kills the process when the time is over.
    Outcome wait(int timeout_ms = 30000);

    /// What it has printed up to now, waiting a while for a whole line.
    std::string said() const;

  private:
    std::FILE *out_, *err_;
    pid_t pid_;
};

/// Runs a function in a child process to its end.
Outcome run_child(const std::function<void()> &function, int timeout_ms = 30000);

/// Runs a program. args[0] is its path. prepare runs in the child before.
Outcome run_program(const std::vector<std::string> &args, int timeout_ms = 30000,
                    const std::function<void()> &prepare = {});

/// The pointers that a main function takes. The texts must live as long.
std::vector<char *> argv_of(const std::vector<std::string> &args);

/// The built cfa_cmodel: $CFA_CMODEL, or the one in the folder above this program.
std::string tool_path();
