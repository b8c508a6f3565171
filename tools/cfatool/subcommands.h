// Every subcommand of cfatool: one function that adds it, one line here, one call in main.cpp.
#pragma once

namespace CLI {
class App;
}

namespace cfatool {

/// Each adds its subcommand to the program; once chosen, it runs when the arguments are parsed, throws
/// Trouble, and leaves STATUS_FOUND in `status` if it found something.
void add_chart(CLI::App &program, int &status);
void add_mosaic(CLI::App &program, int &status);
void add_preview(CLI::App &program, int &status);
void add_compare(CLI::App &program, int &status);
void add_probe(CLI::App &program, int &status);
void add_hex(CLI::App &program, int &status);
void add_regs(CLI::App &program, int &status);
void add_report(CLI::App &program, int &status);
void add_conformance(CLI::App &program, int &status);

} // namespace cfatool
