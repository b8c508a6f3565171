// The one error type of the companion program.
#pragma once

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>

namespace cfatool {

/// Something the user has to mend: bad usage, a missing or malformed file, a failed write.
/// The text is one line that names the file or option and the reason; the program prints it and
/// ends with STATUS_TROUBLE.
struct Trouble : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Trouble that no file is to blame for: the subcommand's name is put in front of it.
struct CommandTrouble : Trouble {
    using Trouble::Trouble;
};

/// Trouble with the command line: the line points to the subcommand's --help, too.
struct UsageTrouble : CommandTrouble {
    using CommandTrouble::CommandTrouble;
};

/// Trouble with a file: "path: reason".
inline Trouble file_trouble(const std::string &path, const std::string &reason) {
    return Trouble(path + ": " + reason);
}

/// Trouble that errno explains.
inline Trouble errno_trouble(const std::string &path) {
    return file_trouble(path, std::strerror(errno));
}

// Exit statuses of every subcommand.
constexpr int STATUS_GOOD = 0;
constexpr int STATUS_FOUND = 1; // a difference, a finding
constexpr int STATUS_TROUBLE = 2;

} // namespace cfatool
