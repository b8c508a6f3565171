// Helpers of the tests: scratch folders, files as text, the log, functions and programs in a process of their
// own.
#pragma once

#include <functional>
#include <string>
#include <vector>

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

/// Records logged since the last call, as "LEVEL label:line: message".
std::vector<std::string> take_log();

/// How a process ended and what it printed.
struct Outcome {
    int status; // exit status; 128 + n after signal n; 124 when the time was over
    std::string out;
    std::string err;
};

/// Runs a function in a child process, which then ends with status 0. Standard input is empty.
Outcome run_child(const std::function<void()> &function, int timeout_ms = 30000);

/// Runs a program. args[0] is its path. prepare runs in the child before.
Outcome run_program(const std::vector<std::string> &args, int timeout_ms = 30000,
                    const std::function<void()> &prepare = {});

/// The built cfa_cmodel: $CFA_CMODEL, or the one in the folder above this program.
std::string tool_path();
