// Who makes the outputs of a case: the block under test, or what it is held against.
#pragma once

#include <memory>
#include <string>

#include "tools/cfatool/regress/inputs.h"
#include "tools/cfatool/regress/sums.h"

namespace cfatool {

class OutputMaker {
  public:
    virtual ~OutputMaker() = default;

    /// Changes whenever what is made may change.
    virtual Sum identity(const Case &c) const = 0;

    /// The sums of the outputs. Throws Trouble and cfa::Error.
    virtual OutputSums make(const Inputs &inputs) = 0;

    /// Puts the output files into a folder that is there, debug images too if they are wanted and can be had.
    /// False where only sums are known. Throws Trouble and cfa::Error.
    virtual bool make_files(const Inputs &inputs, const std::string &folder, bool debug) = 0;

    /// Whether it makes outputs for any inputs, not only for those of the plan.
    virtual bool takes_any_inputs() const { return true; }

    /// The command line that makes the outputs of a folder with inputs, from inside it; empty: cfa_cmodel's.
    virtual std::string call() const { return ""; }
};

/// This program's own block as cfa_cmodel runs it, or always over whole planes.
std::unique_ptr<OutputMaker> make_own_block();
std::unique_ptr<OutputMaker> make_whole_plane_model();

/// A program that takes the ten arguments, or a command line for the shell with {raw}, {ini}, {top}, {rgb},
/// {dc}, {gain}, {log}, {debug}, {dbg} and {folder} in it. Its files stand in
/// `scratch`, in a folder of the process.
std::unique_ptr<OutputMaker> make_program(const std::string &command, const std::string &scratch);

/// Outputs in FOLDER/CASE.
std::unique_ptr<OutputMaker> make_folders(const std::string &folder);

/// Sums alone.
std::unique_ptr<OutputMaker> make_recorded(RecordedSums sums);

} // namespace cfatool
