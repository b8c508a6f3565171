#include "tools/cfatool/regress/case_runner.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fmt/core.h>
#include <unistd.h>

#include "tools/cfatool/base/trouble.h"
#include "tools/cfatool/regress/failure.h"
#include "tools/cfatool/regress/least.h"
#include "tools/cfatool/regress/pool.h"

namespace cfatool {

namespace fs = std::filesystem;
using Status = Result::Status;

namespace {

bool one_more(std::atomic<uint64_t> &count, int64_t most) {
    return count++ < static_cast<uint64_t>(most);
}

} // namespace

CaseRunner::CaseRunner(const RunOptions &options, const Plan &plan, const Shard &shard, Counts &counts)
    : options_(options), plan_(plan), shard_(shard), counts_(counts) {
    fs::create_directories(options.folder);
    block_ = options.tool.empty() ? make_own_block() : make_program(options.tool, scratch_.path + "/tool");
    make_reference();
    read_results(
        options.folder, [this](std::string_view name) { return own_index(name).has_value(); },
        [this](const Result &result) { remember(result); });
}

void CaseRunner::make_reference() {
    const RunOptions &o = options_;
    if (!o.record.empty() + !o.sums.empty() + !o.against.empty() + !o.expect.empty() > 1)
        throw UsageTrouble("only one of --record, --sums, --against and --expect");
    if (!o.sums.empty())
        reference_ = make_recorded(read_recorded_sums(
            o.sums, [this](const std::string &name) { return own_index(name).has_value(); }));
    else if (o.against == "model")
        reference_ = make_whole_plane_model();
    else if (!o.against.empty())
        reference_ = make_program(o.against, scratch_.path + "/against");
    else if (!o.expect.empty())
        reference_ = make_folders(o.expect);
}

/// The place in the plan of a case of this shard.
std::optional<size_t> CaseRunner::own_index(std::string_view name) const {
    const auto index = plan_.find(name);
    return index && shard_.has(*index) ? index : std::nullopt;
}

/// A result of before. An error is none that lasts.
void CaseRunner::remember(const Result &result) {
    const auto index = own_index(result.name);
    if (!index || result.status == Status::error)
        return;
    Known &known = known_[*index];
    if (result.at >= known.at)
        known = {result.key, result.at, result.status};
}

void CaseRunner::begin_worker() {
    results_ = std::make_unique<ResultFile>(options_.folder);
}

void CaseRunner::run_case(const Case &c) {
    const auto start = std::chrono::steady_clock::now();
    Result result;
    result.name = c.name;
    std::optional<Inputs> inputs;
    try {
        inputs = loader_.load(c);
        result.key = key_of(*inputs);
        if (is_known(c, result.key))
            return;
        judge_case(*inputs, result);
    } catch (const std::exception &error) {
        result.status = Status::error;
        result.text = text_of(error);
    }
    if (result.status == Status::error && inputs && one_more(counts_.kept_error, options_.keep))
        keep_inputs(*inputs, result);
    result.ms = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
    finish(result);
}

void CaseRunner::finish(Result &result) {
    result.at = milliseconds_now();
    results_->add(result);
    counts_.add(result.status);
}

void CaseRunner::lose_case(const Case &c, const std::string &reason) {
    Result result;
    result.name = c.name;
    result.status = Status::error;
    result.text = reason;
    if (!results_)
        results_ = std::make_unique<ResultFile>(options_.folder);
    try {
        if (one_more(counts_.kept_error, options_.keep))
            keep_inputs(loader_.load(c), result);
    } catch (const std::exception &) { // without
    }
    finish(result);
}

Sum CaseRunner::key_of(const Inputs &inputs) const {
    Summer summer;
    summer.add(inputs.sum);
    summer.add(block_->identity(inputs.from));
    if (reference_)
        summer.add(reference_->identity(inputs.from));
    return summer.sum();
}

bool CaseRunner::is_known(const Case &c, const Sum &key) {
    const auto found = known_.find(*plan_.find(c.name));
    if (found == known_.end() || found->second.key != key)
        return false;
    ++counts_.known;
    counts_.add(found->second.status);
    return true;
}

void CaseRunner::judge_case(const Inputs &inputs, Result &result) {
    const OutputSums got = block_->make(inputs);
    if (!reference_) {
        result.sums = got;
        return;
    }
    const OutputSums want = reference_->make(inputs);
    if (got == want)
        return;
    result.status = Status::fail;
    result.sums = got;
    result.stage = first_output(got, want);
    result.kind = block_->make(inputs) == got ? "" : NOT_REPEATABLE;
    try {
        find_stage(inputs, want, result);
    } catch (const Trouble &error) { // it fails all the same
        result.text += std::string(" not looked into: ") + error.what();
    }
}

/// In a folder of one level, whatever the case is called. Returns it.
std::string CaseRunner::keep_inputs(const Inputs &inputs, Result &result) {
    std::string flat = inputs.from.name;
    std::replace(flat.begin(), flat.end(), '/', '~');
    result.kept = "kept/" + flat;
    std::string folder = options_.folder + "/" + result.kept;
    keep_case(inputs, folder, *block_);
    return folder;
}

/// In the folder that is kept; where enough are kept, in one that is not.
void CaseRunner::find_stage(const Inputs &inputs, const OutputSums &want, Result &result) {
    const bool keep = one_more(counts_.kept_fail, options_.keep);
    if (!keep && !one_more(counts_.looked_into, options_.look)) {
        result.kind += result.kind.empty() ? "stage not looked for" : "";
        return;
    }
    restart_case_time();
    const std::string folder =
        keep ? keep_inputs(inputs, result) : fmt::format("{}/look.{}", scratch_.path, getpid());
    fs::create_directories(folder);
    const Failure failure = look_into(inputs, folder, *block_, *reference_, want);
    if (!keep)
        fs::remove_all(folder);
    if (!failure.stage.empty())
        result.stage = failure.stage;
    if (result.kind.empty())
        result.kind = failure.kind;
    result.text = failure.text;
}

void CaseRunner::make_least(const Case &c, const Result &bad) {
    cfatool::make_least(loader_.load(c), bad, *block_, reference_.get(), options_.limit_ms,
                        options_.folder + "/" + bad.kept + "/least");
}

} // namespace cfatool
