// cfatool regress merge: where a plan stands, at any moment.
#include <fmt/core.h>
#include <iostream>
#include <memory>

#include "tools/cfatool/base/files.h"
#include "tools/cfatool/command_line.h"
#include "tools/cfatool/page/report.h"
#include "tools/cfatool/regress/commands.h"
#include "tools/cfatool/regress/merged.h"
#include "tools/cfatool/regress/regress_page.h"

namespace cfatool {
namespace {

constexpr size_t MOST_LINES = 10; // of a bucket, in the terminal

struct MergeOptions {
    std::string plan, folder, junit, page, record;
};

void print_cases(const std::vector<size_t> &cases, const Merged &merged) {
    for (size_t i = 0; i < std::min(cases.size(), MOST_LINES); ++i) {
        const Result &result = *merged.bad(cases[i]);
        std::cout << "    " << result.name << (result.text.empty() ? "" : ": " + result.text)
                  << (result.kept.empty() ? "" : " (" + result.kept + ")") << "\n";
    }
    if (cases.size() > MOST_LINES)
        std::cout << fmt::format("    and {} more\n", cases.size() - MOST_LINES);
}

void print_summary(const Merged &merged) {
    for (const Merged::Bucket &bucket : merged.buckets()) {
        std::cout << fmt::format("{}: {}\n", bucket.name, cases_text(bucket.cases.size()));
        print_cases(bucket.cases, merged);
    }
    if (merged.foreign() > 0)
        std::cout << fmt::format("{} results of cases that are not in the plan\n", merged.foreign());
    std::cout << counts_text(merged.counts()) << "\n";
}

/// A page of the two sides of every failure that was kept.
void write_differences(const Merged &merged, const std::string &folder) {
    for (const auto &[index, result] : merged.bad()) {
        const std::string kept = folder + "/" + result.kept;
        if (!result.kept.empty() && is_folder(kept + "/want") && !is_folder(kept + "/page"))
            write_report(kept + "/want", kept + "/got", kept + "/page");
    }
}

int merge(const MergeOptions &options) {
    const Plan plan(options.plan);
    const Merged merged(plan, options.folder);
    if (!options.record.empty())
        record_sums(plan, options.folder, options.record);
    if (!options.junit.empty())
        write_junit(plan, merged, options.junit);
    if (!options.page.empty()) {
        write_differences(merged, options.folder);
        write_page(plan, merged, options.folder, options.page);
    }
    print_summary(merged);
    return merged.counts().all_pass() ? STATUS_GOOD : STATUS_FOUND;
}

} // namespace

void regress_merge_command(Command &command) {
    const auto options = std::make_shared<MergeOptions>();
    command.word("plan", options->plan, "The plan");
    command.word("results", options->folder, "The folder of results");
    command.text("--junit", options->junit, "FILE", "Write a JUnit file");
    command.text("--page", options->page, "FILE", "Write a web page");
    command.text("--record", options->record, "FILE",
                 "Record the sums of cases that were held against nothing");
    command.footer(
        "Example: cfatool regress merge plan.tsv results --junit junit.xml --page results/index.html\n"
        "Exit status: 0 all pass, 1 some fail or are not run, 2 trouble.");
    command.run(options, merge);
}

} // namespace cfatool
