// Every subcommand of cfatool: a declaration and a row here, and a file of its name.
#pragma once

#include "tools/cfatool/command_line.h"

namespace cfatool {

// Each says what its subcommand takes and does.
void run_command(Command &command);
void crop_command(Command &command);
void chart_command(Command &command);
void mosaic_command(Command &command);
void preview_command(Command &command);
void compare_command(Command &command);
void probe_command(Command &command);
void hex_command(Command &command);
void regress_command(Command &command);
void regs_command(Command &command);
void report_command(Command &command);
void view_command(Command &command);
void conformance_command(Command &command);

inline constexpr Subcommand SUBCOMMANDS[] = {
    {"chart", "Write a test chart as a mosaic (P5)", chart_command},
    {"mosaic", "Sample an RGB picture into a mosaic (P5)", mosaic_command},
    {"preview", "Show images as a PNG, several of them side by side", preview_command},
    {"run", "Run the block on a picture: a new folder with all it reads and makes", run_command},
    {"compare", "Compare two pictures, or two runs: which stage is wrong", compare_command},
    {"crop", "Cut the smallest window out of a run that still shows a difference", crop_command},
    {"probe", "Show one pixel in every image of a run, in pipeline order", probe_command},
    {"hex", "Print a picture as $readmemh text, one sample a line, or read it back", hex_command},
    {"regress", "Plan, run and join regressions of any size", regress_command},
    {"regs", "Make, check, compare and change register files", regs_command},
    {"report", "Make a page of a run, or of two: every plane, what differs", report_command},
    {"view", "Show that page in a browser, at once for any size", view_command},
    {"conformance", "Check that a built cfa_cmodel gives the recorded bytes", conformance_command},
};

} // namespace cfatool
