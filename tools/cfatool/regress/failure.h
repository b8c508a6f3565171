// What is found out and kept about a case that fails.
#pragma once

#include <string>

#include "tools/cfatool/regress/makers.h"

namespace cfatool {

/// What is known of a failure: for Result.
struct Failure {
    std::string stage, kind, text;
};

/// Fills a new folder for a case: inputs, `again` (a script that runs it), and, where the block makes outputs
/// at all, got/ and want/ with outputs and debug images, and difference.txt. What cannot be had is left out.
class KeptCase {
  public:
    /// Throws Trouble.
    KeptCase(const Inputs &inputs, const std::string &folder, const OutputMaker &block);

    /// Compares the two sides. `wanted` are the reference's sums.
    Failure look_into(const Inputs &inputs, OutputMaker &block, OutputMaker &reference,
                      const OutputSums &wanted);

  private:
    std::string folder_;
};

/// The first output that differs: "out_dc.ppm".
std::string first_output(const OutputSums &got, const OutputSums &want);

} // namespace cfatool
