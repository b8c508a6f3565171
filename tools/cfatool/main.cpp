// cfatool: what a verification engineer does before and after a run of the model.
#include <algorithm>
#include <csignal>
#include <exception>
#include <iostream>
#include <new>
#include <string>

#include "tools/cfatool/base/suggestion.h"
#include "tools/cfatool/command_line.h"
#include "tools/cfatool/subcommands.h"

namespace {

std::vector<std::string> subcommand_names(const CLI::App &app) {
    std::vector<std::string> names;
    for (const CLI::App *sub : app.get_subcommands(nullptr))
        names.push_back(sub->get_name());
    return names;
}

/// Appends the subcommand that the arguments choose to `name`: "cfatool chart". Throws for an unknown one.
void add_chosen(CLI::App *app, int argc, char **argv, std::string &name) {
    for (int i = 1; i < argc && argv[i][0] != '-'; ++i) {
        const auto names = subcommand_names(*app);
        if (names.empty())
            return;
        const std::string word = argv[i];
        if (std::find(names.begin(), names.end(), word) == names.end())
            throw cfatool::UsageTrouble("unknown subcommand '" + word + "'" +
                                        cfatool::suggestion(word, names));
        app = app->get_subcommand(word);
        name += " " + word;
    }
}

int trouble(std::string line) {
    for (char &c : line)
        c = c == '\n' ? ' ' : c; // one line, whatever the text
    std::cerr << line << "\n";
    return cfatool::STATUS_TROUBLE;
}

int usage_trouble(const std::string &name, const std::string &reason) {
    return trouble(name + ": " + reason + " (see '" + name + " --help')");
}

/// Parses the arguments, which runs the chosen subcommand, and gives the exit status.
int run(CLI::App &program, int argc, char **argv, const int &status) {
    std::string name = program.get_name();
    try {
        add_chosen(&program, argc, argv, name);
        program.parse(argc, argv);
        return status;
    } catch (const CLI::Success &help_or_version) {
        return program.exit(help_or_version);
    } catch (const CLI::ParseError &error) {
        return usage_trouble(name, error.what());
    } catch (const cfatool::UsageTrouble &error) {
        return usage_trouble(name, error.what());
    } catch (const cfatool::Trouble &error) {
        return trouble(error.what());
    } catch (const std::bad_alloc &) {
        return trouble(name + ": not enough memory");
    } catch (const std::exception &error) {
        return trouble(name + ": " + error.what());
    }
}

} // namespace

int main(int argc, char **argv) {
    std::signal(SIGXFSZ, SIG_IGN); // a size limit is a write error like others
    CLI::App program(
        "What surrounds a run of the colour-filter-array model: charts, registers, comparison, reports.",
        "cfatool");
    program.set_version_flag("--version", "cfatool " CFATOOL_VERSION);
    program.require_subcommand(1);
    program.footer("Exit status: 0 good, 1 found something, 2 trouble.\n"
                   "Example: cfatool chart scene --size 640x480 --bayer 0 -o scene.ppm");
    int status = cfatool::STATUS_GOOD;
    cfatool::add_chart(program, status);
    cfatool::add_mosaic(program, status);
    cfatool::add_preview(program, status);
    cfatool::add_compare(program, status);
    cfatool::add_probe(program, status);
    cfatool::add_hex(program, status);
    cfatool::add_regs(program, status);
    cfatool::add_report(program, status);
    cfatool::add_conformance(program, status);

    status = run(program, argc, argv, status);
    std::cout.flush();
    return std::cout ? status : trouble("cfatool: standard output cannot be written");
}
