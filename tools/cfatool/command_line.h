// The command line: what a subcommand takes and does. The parser behind it is compiled once, in
// command_line.cpp.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <type_traits>
#include <vector>

#include "tools/cfatool/base/trouble.h"

namespace CLI {
class App;
}

namespace cfatool {

struct Subcommand;

/// Whether an option must be given.
enum class Need { optional, required };

/// A subcommand while it is set up. Every target must outlive the parsing.
class Command {
  public:
    Command(CLI::App &app, int &status) : app_(app), status_(status) {}

    /// A word without a dash; several of them, at least one or, if `count` is not 0, exactly so many.
    void word(const std::string &name, std::string &target, const std::string &help,
              Need need = Need::required);
    void words(const std::string &name, std::vector<std::string> &target, const std::string &help,
               int count = 0);

    /// An option with a text; `type` stands for it in the help.
    void text(const std::string &name, std::string &target, const std::string &type, const std::string &help,
              Need need = Need::optional);

    /// An option with a text that may be given several times.
    void texts(const std::string &name, std::vector<std::string> &target, const std::string &type,
               const std::string &help);

    /// An option with one whole decimal number of min..max.
    template <class Integer> void number(const std::string &name, Integer &target, int64_t min, int64_t max,
                                         const std::string &help, Need need = Need::optional) {
        const auto store = [&target](int64_t value) { target = static_cast<Integer>(value); };
        number_option(name, store, min, max, help, need);
    }

    /// An option with a number of up to three decimals, stored as thousandths.
    void thousandths(const std::string &name, int64_t &target, int64_t min, int64_t max,
                     const std::string &help);

    void flag(const std::string &name, bool &target, const std::string &help);

    /// The lines behind the options in the help.
    void footer(const std::string &text);

    /// What the subcommand does with its options.
    template <class Options> void run(const std::shared_ptr<Options> &options,
                                      std::type_identity_t<void (*)(const Options &)> action) {
        act([options, action] {
            action(*options);
            return STATUS_GOOD;
        });
    }
    /// The same where `action` gives the exit status.
    template <class Options>
    void run(const std::shared_ptr<Options> &options, std::type_identity_t<int (*)(const Options &)> action) {
        act([options, action] { return action(*options); });
    }

    /// Subcommands of its own, one of which must be chosen.
    void choice(std::span<const Subcommand> subcommands);

  private:
    void number_option(const std::string &name, const std::function<void(int64_t)> &store, int64_t min,
                       int64_t max, const std::string &help, Need need);
    void act(const std::function<int()> &action);

    CLI::App &app_;
    int &status_;
};

/// A row of a table of subcommands.
struct Subcommand {
    const char *name;
    const char *help; // one line
    void (*set_up)(Command &command);
};

/// Parses the arguments, runs the subcommand that they choose, and gives the exit status. Trouble is one line
/// on standard error.
int run_command_line(int argc, char **argv, const std::string &version,
                     std::span<const Subcommand> subcommands);

} // namespace cfatool
