// What is found out and kept about a case that fails.
#pragma once

#include <string>

#include "tools/cfatool/regress/makers.h"

namespace cfatool {

/// What is known of a failure: for Result.
struct Failure {
    std::string stage, kind, text;
};

/// Makes a new folder for a case: inputs, a plan of it alone, and `again`, a script that runs it. Throws
/// Trouble.
void keep_case(const Inputs &inputs, const std::string &folder, const OutputMaker &block);

/// Adds got/ and want/ with outputs and debug images to the folder, compares them, and says in difference.txt
/// what it found. What cannot be had is left out. `wanted` are the reference's sums. Throws Trouble.
Failure look_into(const Inputs &inputs, const std::string &folder, OutputMaker &block, OutputMaker &reference,
                  const OutputSums &wanted);

/// The first output that differs: "out_dc.ppm".
std::string first_output(const OutputSums &got, const OutputSums &want);

} // namespace cfatool
