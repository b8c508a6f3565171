// What the subcommands share on top of CLI11.
#pragma once

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <string>

#include "tools/cfatool/base/numbers.h"
#include "tools/cfatool/base/trouble.h"

namespace cfatool {

/// Adds an option that takes one whole decimal number of min..max. REQUIRES that target outlives the parsing.
template <class Integer> CLI::Option *add_number(CLI::App &app, const std::string &name, Integer &target,
                                                 int64_t min, int64_t max, const std::string &help) {
    const auto store = [name, &target, min, max](const std::string &text) {
        target = static_cast<Integer>(parse_decimal(text, name, min, max));
    };
    return app.add_option_function<std::string>(name, store, help)->type_name("N");
}

/// Adds an option that takes a number with up to three decimals and stores thousandths.
CLI::Option *add_thousandths(CLI::App &app, const std::string &name, int64_t &target, int64_t min,
                             int64_t max, const std::string &help);

/// Adds "-o FILE", which must be given.
CLI::Option *add_output(CLI::App &app, std::string &path, const std::string &help);

} // namespace cfatool
