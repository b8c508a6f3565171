// cfatool: what a verification engineer does before and after a run of the model.
#include <csignal>

#include "tools/cfatool/command_line.h"
#include "tools/cfatool/subcommands.h"

int main(int argc, char **argv) {
    std::signal(SIGXFSZ, SIG_IGN); // a size limit is a write error like others
    return cfatool::run_command_line(argc, argv, CFATOOL_VERSION, cfatool::SUBCOMMANDS);
}
