// Results of cases: one JSON object a line, one file a process.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "tools/cfatool/base/files.h"
#include "tools/cfatool/regress/sums.h"

namespace cfatool {

/// The text of an error in a result.
std::string text_of(const std::exception &error);

/// The kind of a failure that came out otherwise when it was run again.
inline constexpr const char *NOT_REPEATABLE = "not repeatable";

struct Result {
    enum class Status { pass, fail, error };

    std::string name; // of the case
    Status status = Status::pass;
    Sum key;                        // of everything that it depends on
    int64_t at = 0;                 // milliseconds since 1970
    double ms = 0;                  // that it took
    std::optional<OutputSums> sums; // of a failure, and where there was nothing to hold the case against
    std::string stage, kind;        // of a failure: the first stage that differs, and how
    std::string text;               // the first difference, or the error
    std::string kept;               // folder below the results, empty if nothing was kept
};

/// The file of one process. It appears with its first line, and every line is in it when add() returns.
class ResultFile {
  public:
    /// A new name below the folder: host, process and time.
    explicit ResultFile(const std::string &folder);
    /// Throws Trouble.
    void add(const Result &result);

  private:
    std::string path_;
    Stream stream_;
};

/// Hands on every whole line of every result file of a folder, in no order. Lines of cases that are not
/// wanted are passed over unread, which takes a twentieth of the time. Throws Trouble for a folder that
/// cannot be read.
void read_results(const std::string &folder, const std::function<bool(std::string_view name)> &wanted,
                  const std::function<void(Result &&)> &take);

int64_t milliseconds_now();

} // namespace cfatool
