// The subcommands of cfatool regress.
#pragma once

namespace cfatool {

class Command;

void regress_plan_command(Command &command);
void regress_run_command(Command &command);
void regress_merge_command(Command &command);

} // namespace cfatool
