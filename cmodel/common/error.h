// How errors travel: as one type of exception, from where they are found to who asked for the work.
#pragma once

#include <exception>
#include <string>

namespace cfa {

/// An error that ends a run. what() is one line for standard error, without its line feed.
class Error : public std::exception {
  public:
    enum class Kind { picture_size, file };

    Error(Kind kind, std::string line) : kind_(kind), line_(std::move(line)) {}
    const char *what() const noexcept override { return line_.c_str(); }
    Kind kind() const { return kind_; }

  private:
    Kind kind_;
    std::string line_;
};

/// No memory: throws std::bad_alloc, which stands beside Error because it needs none.
[[noreturn]] void allocation_error();

/// The status of a process that an error ends.
constexpr int ERROR_STATUS = 1;

/// Prints the line of an error, "Unable to allocate memory" for std::bad_alloc, on standard error.
void print_error(const std::exception &error);

[[noreturn]] void end_process(const std::exception &error); // prints it; ERROR_STATUS

/// Runs the body of a function that has no way to return an error: an error ends the process. Only functions
/// with a prescribed name are made this way, and nothing in the block calls them; each is a shell around one
/// that throws. Prescribed functions that only can run out of memory (stages, INIT_, LOAD_, DUMP_) have none:
/// std::bad_alloc passes them.
template <class Body> auto or_end_process(const Body &body) {
    try {
        return body();
    } catch (const std::exception &error) {
        end_process(error);
    }
}

} // namespace cfa
