#include "tools/cfatool/regress/merged.h"

#include <algorithm>
#include <fmt/core.h>

#include "tools/cfatool/base/files.h"
#include "tools/cfatool/base/trouble.h"

namespace cfatool {

std::string counts_text(const CaseCounts &c) {
    return fmt::format("{} cases: {} pass, {} fail, {} error, {} not run",
                       c.pass + c.fail + c.error + c.not_run, c.pass, c.fail, c.error, c.not_run);
}

std::string cases_text(size_t count) {
    return fmt::format("{} case{}", count, count == 1 ? "" : "s");
}

Merged::Merged(const Plan &plan, const std::string &folder) : at_(plan.size()) {
    const auto all = [](std::string_view) { return true; };
    read_results(folder, all, [&](Result &&result) { take(plan, std::move(result)); });
}

void Merged::take(const Plan &plan, Result &&result) {
    const auto index = plan.find(result.name);
    if (!index) {
        ++foreign_;
        return;
    }
    seconds_ += result.ms / 1000;
    if (result.at < at_[*index])
        return;
    at_[*index] = result.at;
    if (result.status == Result::Status::pass)
        bad_.erase(*index);
    else
        bad_[*index] = std::move(result);
}

CaseCounts Merged::counts() const {
    CaseCounts counts;
    for (const int64_t at : at_)
        ++(at == 0 ? counts.not_run : counts.pass);
    for (const auto &[index, result] : bad_)
        ++(result.status == Result::Status::fail ? counts.fail : counts.error);
    counts.pass -= bad_.size();
    return counts;
}

const Result *Merged::bad(size_t index) const {
    const auto found = bad_.find(index);
    return found == bad_.end() ? nullptr : &found->second;
}

std::vector<Merged::Bucket> Merged::buckets() const {
    std::map<std::string, std::vector<size_t>> found;
    Bucket errors{"error", {}};
    for (const auto &[index, result] : bad_)
        if (result.status == Result::Status::error)
            errors.cases.push_back(index);
        else
            found["fail, " + result.stage + (result.kind.empty() ? "" : ", ") + result.kind].push_back(index);
    std::vector<Bucket> buckets;
    for (auto &[name, cases] : found)
        buckets.push_back({name, std::move(cases)});
    std::ranges::stable_sort(buckets, std::greater(),
                             [](const Bucket &bucket) { return bucket.cases.size(); });
    if (!errors.cases.empty())
        buckets.push_back(std::move(errors));
    return buckets;
}

void record_sums(const Plan &plan, const std::string &folder, const std::string &path) {
    std::vector<std::pair<int64_t, OutputSums>> newest(plan.size());
    const auto planned = [&](std::string_view name) { return plan.find(name).has_value(); };
    read_results(folder, planned, [&](const Result &result) {
        const auto index = plan.find(result.name);
        if (index && result.sums && result.status == Result::Status::pass &&
            result.at >= newest[*index].first)
            newest[*index] = {result.at, *result.sums};
    });
    OutputFile file(path);
    for (size_t i = 0; i < plan.size(); ++i) {
        if (newest[i].first == 0)
            throw Trouble(fmt::format("{}: no sums of {}; nothing is recorded", folder, plan.name(i)));
        file.write(recorded_sums_line(std::string(plan.name(i)), newest[i].second));
    }
    file.commit();
}

} // namespace cfatool
