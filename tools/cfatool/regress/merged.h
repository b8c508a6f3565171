// Where every case of a plan stands, from all result files.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "tools/cfatool/regress/plan.h"
#include "tools/cfatool/regress/results.h"

namespace cfatool {

/// Cases of the plan == pass + fail + error + not_run.
struct CaseCounts {
    uint64_t pass = 0, fail = 0, error = 0, not_run = 0;
    bool all_pass() const { return fail + error + not_run == 0; }
};

/// "12 cases: 11 pass, 1 fail, 0 error, 0 not run".
std::string counts_text(const CaseCounts &counts);

/// "1 case", "2 cases".
std::string cases_text(size_t count);

/// Of several results of a case the newest counts.
class Merged {
  public:
    /// Throws Trouble.
    Merged(const Plan &plan, const std::string &folder);

    CaseCounts counts() const;
    /// The last result of a case whose result is no pass, null for any other.
    const Result *bad(size_t index) const;
    const std::map<size_t, Result> &bad() const { return bad_; }
    bool was_run(size_t index) const { return at_[index] != 0; }
    uint64_t foreign() const { return foreign_; } // results of cases that are not in the plan
    double seconds() const { return seconds_; }   // that the cases took, taken together

    /// Cases that fail, "fail, STAGE, KIND OF DIFFERENCE", those with most cases first; then the errors,
    /// "error".
    struct Bucket {
        std::string name;
        std::vector<size_t> cases;
    };
    std::vector<Bucket> buckets() const;

  private:
    void take(const Plan &plan, Result &&result);

    std::vector<int64_t> at_; // of the newest result, 0 for none
    std::map<size_t, Result> bad_;
    uint64_t foreign_ = 0;
    double seconds_ = 0;
};

/// Writes the sums of all cases, which must have been run without a reference. Throws Trouble.
void record_sums(const Plan &plan, const std::string &folder, const std::string &path);

} // namespace cfatool
