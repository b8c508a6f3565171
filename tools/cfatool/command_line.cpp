// The one file that knows the parser.
#include "tools/cfatool/command_line.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <exception>
#include <filesystem>
#include <iostream>
#include <new>

#include "tools/cfatool/base/numbers.h"
#include "tools/cfatool/base/suggestion.h"

namespace cfatool {
namespace {

std::vector<std::string> subcommand_names(const CLI::App &app) {
    std::vector<std::string> names;
    for (const CLI::App *sub : app.get_subcommands(nullptr))
        names.push_back(sub->get_name());
    return names;
}

/// Appends the subcommand that the arguments choose to `name`: "cfatool chart". Throws for an unknown one.
void add_chosen(const CLI::App *app, int argc, char **argv, std::string &name) {
    for (int i = 1; i < argc && argv[i][0] != '-'; ++i) {
        const auto names = subcommand_names(*app);
        if (names.empty())
            return;
        const std::string word = argv[i];
        if (std::find(names.begin(), names.end(), word) == names.end())
            throw UsageTrouble("unknown subcommand '" + word + "'" + suggestion(word, names));
        app = app->get_subcommand(word);
        name += " " + word;
    }
}

int trouble(std::string line) {
    std::replace(line.begin(), line.end(), '\n', ' '); // one line, whatever the text
    std::cerr << line << "\n";
    return STATUS_TROUBLE;
}

int usage_trouble(const std::string &name, const std::string &reason) {
    return trouble(name + ": " + reason + " (see '" + name + " --help')");
}

/// Parses the arguments, which runs the chosen subcommand, and gives the exit status.
int parse(CLI::App &program, int argc, char **argv, const int &status) {
    std::string name = program.get_name();
    try {
        add_chosen(&program, argc, argv, name);
        program.parse(argc, argv);
        return status;
    } catch (const CLI::Success &help_or_version) {
        return program.exit(help_or_version);
    } catch (const CLI::ParseError &error) {
        return usage_trouble(name, error.what());
    } catch (const UsageTrouble &error) {
        return usage_trouble(name, error.what());
    } catch (const CommandTrouble &error) {
        return trouble(name + ": " + error.what());
    } catch (const Trouble &error) {
        return trouble(error.what());
    } catch (const std::filesystem::filesystem_error &error) {
        return trouble((error.path1().empty() ? name : error.path1().string()) + ": " +
                       error.code().message());
    } catch (const std::bad_alloc &) {
        return trouble(name + ": not enough memory");
    } catch (const std::exception &error) {
        return trouble(name + ": " + error.what());
    }
}

} // namespace

void Command::word(const std::string &name, std::string &target, const std::string &help, Need need) {
    app_.add_option(name, target, help)->type_name("")->required(need == Need::required);
}

void Command::words(const std::string &name, std::vector<std::string> &target, const std::string &help,
                    int count) {
    CLI::Option *option = app_.add_option(name, target, help)->type_name("")->required();
    if (count > 0)
        option->expected(count);
}

void Command::text(const std::string &name, std::string &target, const std::string &type,
                   const std::string &help, Need need) {
    app_.add_option(name, target, help)->type_name(type)->required(need == Need::required);
}

void Command::texts(const std::string &name, std::vector<std::string> &target, const std::string &type,
                    const std::string &help) {
    app_.add_option(name, target, help)->type_name(type)->allow_extra_args(false);
}

void Command::number_option(const std::string &name, const std::function<void(int64_t)> &store, int64_t min,
                            int64_t max, const std::string &help, Need need) {
    const auto read = [=](const std::string &text) { store(parse_decimal(text, name, min, max)); };
    app_.add_option_function<std::string>(name, read, help)->type_name("N")->required(need == Need::required);
}

void Command::thousandths(const std::string &name, int64_t &target, int64_t min, int64_t max,
                          const std::string &help) {
    const auto read = [=, &target](const std::string &text) {
        target = parse_thousandths(text, name, min, max);
    };
    app_.add_option_function<std::string>(name, read, help)->type_name("X.XXX");
}

void Command::flag(const std::string &name, bool &target, const std::string &help) {
    app_.add_flag(name, target, help);
}

void Command::footer(const std::string &text) {
    app_.footer(text);
}

void Command::act(const std::function<int()> &action) {
    app_.callback([action, &status = status_] { status = action(); });
}

void Command::choice(std::span<const Subcommand> subcommands) {
    app_.require_subcommand(1);
    for (const Subcommand &sub : subcommands) {
        Command command(*app_.add_subcommand(sub.name, sub.help), status_);
        sub.set_up(command);
    }
}

int run_command_line(int argc, char **argv, const std::string &version,
                     std::span<const Subcommand> subcommands) {
    CLI::App program(
        "What surrounds a run of the colour-filter-array model: charts, registers, comparison, reports.",
        "cfatool");
    program.set_version_flag("--version", "cfatool " + version);
    program.footer("Exit status: 0 good, 1 found something, 2 trouble.\n"
                   "Example: cfatool chart scene --size 640x480 --bayer 0 -o scene.ppm");
    int status = STATUS_GOOD;
    Command(program, status).choice(subcommands);
    status = parse(program, argc, argv, status);
    std::cout.flush();
    return std::cout ? status : trouble("cfatool: standard output cannot be written");
}

} // namespace cfatool
