// Options shared by the subcommands.
#include "tools/cfatool/command_line.h"

namespace cfatool {

CLI::Option *add_thousandths(CLI::App &app, const std::string &name, int64_t &target, int64_t min,
                             int64_t max, const std::string &help) {
    const auto store = [name, &target, min, max](const std::string &text) {
        target = parse_thousandths(text, name, min, max);
    };
    return app.add_option_function<std::string>(name, store, help)->type_name("X.XXX");
}

CLI::Option *add_output(CLI::App &app, std::string &path, const std::string &help) {
    return app.add_option("-o", path, help)->type_name("FILE")->required();
}

} // namespace cfatool
