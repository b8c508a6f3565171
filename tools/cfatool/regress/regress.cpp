// cfatool regress: plans, runs and results of many cases.
#include "tools/cfatool/regress/commands.h"
#include "tools/cfatool/subcommands.h"

namespace cfatool {
namespace {

constexpr Subcommand REGRESS_SUBCOMMANDS[] = {
    {"plan", "Write a plan: pictures x registers x settings x ids, and drawn cases", regress_plan_command},
    {"run", "Run a plan or a part of it, and go on where a run has stopped", regress_run_command},
    {"merge", "Join results: summary, JUnit file, web page", regress_merge_command},
};

} // namespace

void regress_command(Command &command) {
    command.choice(REGRESS_SUBCOMMANDS);
    command.footer("Example: cfatool regress plan --random 1000 -o plan.tsv");
}

} // namespace cfatool
