// A stage by itself: the model's on the other side's input planes.
#pragma once

#include <string>
#include <vector>

#include "tools/cfatool/compare/verdict.h"

namespace cfatool {

/// What the model's stage makes of B's own inputs, against what B has.
struct Explanation {
    enum class Result {
        input_only, // it makes B's planes: what is wrong came in
        itself,     // it does not: B's stage is wrong
        not_apart,  // it contains another stage, which is wrong on this input
        no_planes,  // B lacks an exact plane that it reads or makes
    };
    std::string stage;
    Result result = Result::no_planes;
    std::string plane;  // the first that is not as B has it, or that is missing
    std::string detail; // how it differs
};

/// Runs each stage that differs or is suspect again. Planes and registers are B's; registers A's where B has
/// none. Throws Trouble.
std::vector<Explanation> explain(const RunFolder &a, const RunFolder &b, const RunVerdict &verdict);

/// One line.
std::string explanation_text(const Explanation &explanation);

} // namespace cfatool
