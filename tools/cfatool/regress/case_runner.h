// One case: run, judged, written down.
#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>

#include "tools/cfatool/base/scratch_folder.h"
#include "tools/cfatool/regress/makers.h"
#include "tools/cfatool/regress/results.h"
#include "tools/cfatool/regress/shard.h"

namespace cfatool {

struct RunOptions {
    std::string plan, folder, shard, record, sums, against, expect, tool;
    int jobs = 0;
    int64_t limit_ms = 60'000;
    int64_t keep = 20, look = 100;
    bool minimise = false;
};

/// What all processes of a run count together.
struct Counts {
    std::atomic<uint64_t> pass, fail, error, known, kept_fail, kept_error, looked_into;
    uint64_t done() const { return pass + fail + error; }
    void add(Result::Status status) {
        ++(status == Result::Status::pass ? pass : status == Result::Status::fail ? fail : error);
    }
};

/// Everything that a run needs for its cases. Made once, then every worker process goes on with a copy.
class CaseRunner {
  public:
    /// Reads the results of before. Throws Trouble.
    CaseRunner(const RunOptions &options, const Plan &plan, const Shard &shard, Counts &counts);

    /// In a worker, before its first case.
    void begin_worker();
    /// Throws Trouble when the result cannot be written.
    void run_case(const Case &c);
    /// In a worker: makes a kept case as small as still ends as it did, in `least` of its folder.
    void make_least(const Case &c, const Result &bad);
    /// The result of a case whose worker has died of it.
    void lose_case(const Case &c, const std::string &reason);

  private:
    void make_reference();
    std::optional<size_t> own_index(std::string_view name) const;
    void remember(const Result &result);
    void finish(Result &result);
    Sum key_of(const Inputs &inputs) const;
    bool is_known(const Case &c, const Sum &key);
    void judge_case(const Inputs &inputs, Result &result);
    std::string keep_inputs(const Inputs &inputs, Result &result);
    void find_stage(const Inputs &inputs, const OutputSums &want, Result &result);

    struct Known {
        Sum key;
        int64_t at = 0;
        Result::Status status = Result::Status::pass;
    };

    const RunOptions &options_;
    const Plan &plan_;
    const Shard shard_;
    Counts &counts_;
    const ScratchFolder scratch_;
    std::unique_ptr<OutputMaker> block_, reference_; // null: nothing to hold the block against
    std::unordered_map<size_t, Known> known_;
    InputLoader loader_;
    std::unique_ptr<ResultFile> results_;
};

} // namespace cfatool
