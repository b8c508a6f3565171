#include <algorithm>
#include <doctest/doctest.h>
#include <regex>
#include <set>

#include "tests/tools/cfatool/tool_support.h"

namespace {

/// Words of a text that match, without --help and --version, which every program has.
std::set<std::string> words(const std::string &text, const std::string &pattern) {
    std::set<std::string> found;
    const std::regex word(pattern);
    for (std::sregex_iterator match(text.begin(), text.end(), word), end; match != end; ++match)
        found.insert((*match)[1]);
    for (const char *everywhere : {"--help", "-h", "--version"})
        found.erase(everywhere);
    return found;
}

/// Subcommands as the program's help lists them, those of regs by both words.
std::set<std::string> subcommands() {
    const auto listed = [](const std::vector<std::string> &args) {
        const std::string help = cfatool_run(args).out;
        return words(help.substr(help.find("Subcommands:")), "\n  ([a-z]+) ");
    };
    std::set<std::string> names = listed({"--help"});
    CHECK(names.erase("regs") == 1);
    for (const std::string &name : listed({"regs", "--help"}))
        names.insert("regs " + name);
    return names;
}

Outcome help_of(const std::string &subcommand) {
    if (subcommand.starts_with("regs "))
        return cfatool_run({"regs", subcommand.substr(5), "--help"});
    return cfatool_run({subcommand, "--help"});
}

std::set<std::string> options_of(const std::string &subcommand) {
    return words(help_of(subcommand).out, "\n  (-o|--[a-z-]+)");
}

/// What bash offers for these words.
std::set<std::string> completed(const std::string &line) {
    const std::string script =
        "source '" + source_root() + "/tools/cfatool/cfatool.bash'; COMP_WORDS=('" + std::getenv("CFATOOL") +
        "' " + line +
        "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _cfatool; printf '%s\\n' \"${COMPREPLY[@]}\"";
    const Outcome outcome = run_program({"/bin/bash", "-c", script});
    CHECK(outcome.err.empty());
    return words(outcome.out, "([^\n]+)\n");
}

} // namespace

TEST_CASE("the manual page, the completion and the help know the same subcommands and options") {
    const std::string manual =
        std::regex_replace(read_file(source_root() + "/docs/man/cfatool.1"), std::regex("\\\\-"), "-");
    const std::set<std::string> sections = words(manual, "\n\\.SS ((?:regs )?[a-z]+)");
    std::set<std::string> completions = completed("''");
    CHECK(completions.erase("regs") == 1);
    for (const std::string &name : completed("regs ''"))
        completions.insert("regs " + name);
    const std::set<std::string> names = subcommands();
    CHECK(names == sections);
    CHECK(names == completions);
    for (const std::string &name : names) {
        const size_t begin = manual.find("\n.SS " + name);
        const size_t end = std::min(manual.find("\n.S", begin + 1), manual.size());
        const std::set<std::string> options = options_of(name);
        CHECK_MESSAGE(options == words(manual.substr(begin, end - begin), "\\s(-o|--[a-z-]+)"), name);
        CHECK_MESSAGE(options == completed(name + " -"), name);
        CHECK_MESSAGE(contains(help_of(name).out, "Example"), name);
    }
}

TEST_CASE("completion offers charts and registers of the program itself") {
    CHECK(completed("chart zo") == std::set<std::string>{"zone-plate"});
    CHECK(completed("regs set x.ini reg_cfa_vw") == std::set<std::string>{"reg_cfa_vw_thd="});
    CHECK(completed("regs set x.ini reg_img_bay") == std::set<std::string>{"reg_img_bayerid="});
    CHECK(completed("regs defaults cm") == std::set<std::string>{"cmodel_top"});
}

TEST_CASE("the manual page of cfa_cmodel names the ten arguments in the order of its usage text") {
    std::string usage = run_program({tool_path()}).out;
    usage = usage.substr(usage.find(" ini_file") + 1, usage.find("\n[ 1]") - usage.find(" ini_file") - 1);
    std::replace(usage.begin(), usage.end(), '\n', ' ');
    CHECK(contains(read_file(source_root() + "/docs/man/cfa_cmodel.1"), "\n.I " + usage + "\n"));
}
