// cfatool regress run: the cases of a plan, or of a part of it.
#include <algorithm>
#include <chrono>
#include <fmt/core.h>
#include <iostream>
#include <memory>
#include <new>

#include "log/log.h"
#include "tools/cfatool/base/files.h"
#include "tools/cfatool/base/trouble.h"
#include "tools/cfatool/command_line.h"
#include "tools/cfatool/regress/case_runner.h"
#include "tools/cfatool/regress/commands.h"
#include "tools/cfatool/regress/merged.h"
#include "tools/cfatool/regress/pool.h"
#include "tools/cfatool/regress/progress.h"

namespace cfatool {
namespace {

PoolWork work_of(const RunOptions &options, uint64_t cases, int64_t limit_ms) {
    PoolWork work;
    work.cases = cases;
    const uint64_t jobs = static_cast<uint64_t>(options.jobs > 0 ? options.jobs : processors_given());
    work.jobs = static_cast<int>(std::min(jobs, std::max<uint64_t>(cases, 1)));
    work.limit_ms = limit_ms;
    return work;
}

/// Runs all cases of the shard. False when it was stopped.
bool run_cases(const RunOptions &options, const Plan &plan, const Shard &shard, CaseRunner &runner,
               Counts &counts) {
    PoolWork work = work_of(options, shard.cases_of(plan.size()), options.limit_ms);
    RunProgress progress(work.cases);
    work.start = [&] { runner.begin_worker(); };
    work.work = [&](uint64_t own) { runner.run_case(plan.at(shard.plan_index(own))); };
    work.lost = [&](uint64_t own, const std::string &reason) {
        runner.lose_case(plan.at(shard.plan_index(own)), reason);
    };
    work.tick = [&] { progress.show(counts.done(), counts.known, counts.fail + counts.error); };
    return run_pool(work);
}

/// Makes the kept cases of the shard small that are not yet. False when it was stopped.
bool make_kept_small(const RunOptions &options, const Plan &plan, const Shard &shard, CaseRunner &runner) {
    const Merged merged(plan, options.folder);
    std::vector<size_t> cases;
    for (const auto &[index, result] : merged.bad())
        if (shard.has(index) && !result.kept.empty() && result.kind != NOT_REPEATABLE &&
            !is_folder(options.folder + "/" + result.kept + "/least"))
            cases.push_back(index);
    StatusLine line;
    if (const std::string text = fmt::format("making {} small", cases_text(cases.size()));
        StatusLine::room() > 0)
        line.show(text);
    else if (!cases.empty())
        fmt::print(stderr, "{}\n", text);
    PoolWork work =
        work_of(options, cases.size(), 2 * options.limit_ms + 1000); // each of its runs has its limit
    work.start = work.tick = [] {};
    work.work = [&](uint64_t i) {
        try {
            runner.make_least(plan.at(cases[i]), *merged.bad(cases[i]));
        } catch (const std::exception &) { // it stays as it was, as where the process is lost
        }
    };
    work.lost = [](uint64_t, const std::string &) {};
    return run_pool(work);
}

int run(const RunOptions &options) {
    const auto start = std::chrono::steady_clock::now();
    log_set_quiet(1);
    const Plan plan(options.plan);
    const Shard shard = shard_of(options.shard);
    if (!options.record.empty() && shard.n > 1)
        throw CommandTrouble("--record takes the whole plan; for parts: cfatool regress merge --record");
    const SharedMemory memory = shared_memory(sizeof(Counts));
    Counts &counts = *new (memory.get()) Counts();
    CaseRunner runner(options, plan, shard, counts);
    bool complete = run_cases(options, plan, shard, runner, counts);
    if (complete && options.minimise)
        complete = make_kept_small(options, plan, shard, runner);
    const CaseCounts found = {counts.pass, counts.fail, counts.error,
                              shard.cases_of(plan.size()) - counts.done()};
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    std::cout << fmt::format("{}; {} known from before; {:.1f} s\n", counts_text(found), counts.known.load(),
                             seconds.count());
    if (!complete)
        throw CommandTrouble("stopped; the same call goes on from here");
    if (!options.record.empty() && found.all_pass())
        record_sums(plan, options.folder, options.record);
    return found.all_pass() ? STATUS_GOOD : STATUS_FOUND;
}

} // namespace

void regress_run_command(Command &command) {
    const auto options = std::make_shared<RunOptions>();
    command.word("plan", options->plan, "The plan");
    command.text("-o", options->folder, "FOLDER",
                 "The folder of results; what is in it already is not run again", Need::required);
    command.text("--against", options->against, "PATH",
                 "Hold against this program, or against 'model': the block over whole planes");
    command.text("--sums", options->sums, "FILE", "Hold against recorded sums");
    command.text("--expect", options->expect, "FOLDER",
                 "Hold against FOLDER/CASE/out.ppm, out_dc.ppm, out_sg.ppm");
    command.text("--record", options->record, "FILE", "Hold against nothing and record the sums");
    command.text("--tool", options->tool, "PATH",
                 "What is under test: a program with the ten arguments, or a command with {raw} and the like "
                 "(this program's own block)");
    command.number("--jobs", options->jobs, 1, 4096,
                   "Cases at a time (the processors given to this process)");
    command.text("--shard", options->shard, "I/N",
                 "Every N-th case from the I-th on (of a Slurm array: its element)");
    command.thousandths("--limit", options->limit_ms, 1, INT32_MAX, "Seconds that a case may take (60)");
    command.number("--keep", options->keep, 0, 1'000'000,
                   "Failures to keep, ready to run, and as many errors (20)");
    command.number("--look", options->look, 0, 1'000'000'000,
                   "Failures beyond those whose stage is looked for (100)");
    command.flag("--minimise", options->minimise,
                 "Make kept cases as small as still fail likewise, in CASE/least");
    command.footer("Example: cfatool regress run plan.tsv -o results --against model\n"
                   "Exit status: 0 all pass, 1 some do not, 2 trouble.");
    command.run(options, run);
}

} // namespace cfatool
