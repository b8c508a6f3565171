#include "tools/cfatool/regress/failure.h"

#include <filesystem>
#include <fmt/format.h>

#include "cmodel/common/error.h"
#include "tools/cfatool/base/files.h"
#include "tools/cfatool/base/trouble.h"
#include "tools/cfatool/compare/difference_kind.h"
#include "tools/cfatool/compare/verdict.h"
#include "tools/cfatool/runs/run_folder.h"

namespace cfatool {
namespace {

namespace fs = std::filesystem;

constexpr const char *TEN_ARGUMENTS =
    "\"${CFA_CMODEL:-cfa_cmodel}\" ./cfa.ini ./cfa.log 5 0 . ./cmodel_top.ini "
    "./raw.ppm ./out.ppm ./out_dc.ppm ./out_sg.ppm";

/// A side of the comparison as a run folder: debug images of one run, outputs of another, as some blocks take
/// another way for debug images.
bool fill(OutputMaker &maker, const Inputs &inputs, const std::string &folder) {
    fs::create_directory(folder);
    if (maker.takes_any_inputs()) {
        write_inputs(inputs, folder);
        try {
            maker.make_files(inputs, folder, true);
        } catch (const Trouble &) { // then without debug images
        }
    }
    return maker.make_files(inputs, folder, false);
}

std::string joined(const std::vector<std::string> &texts, const char *between) {
    return fmt::format("{}", fmt::join(texts, between));
}

Failure judged(const std::string &got, const std::string &want, const Inputs &inputs) {
    const RunFolder a(want), b(got);
    const RunVerdict verdict = judge(a, b, CompareOptions());
    Failure failure;
    for (const FilePair &pair : verdict.files) {
        if (!pair.differs())
            continue;
        const int bayer = inputs.registers->top.hw.reg_img_bayerid;
        const uint32_t range = range_of_format(pair.a->range);
        failure.stage = verdict.suspects.empty() ? pair.a->stage : joined(verdict.suspects, " or ");
        failure.kind =
            pair.found.mismatch.empty()
                ? joined(difference_kinds(pair.a->path, pair.b->path, pair.found, range, bayer, Sites::all),
                         ", ")
                : "another size";
        failure.text = pair.name + ": " + result_text(pair.found, bayer);
        break;
    }
    return failure;
}

} // namespace

std::string first_output(const OutputSums &got, const OutputSums &want) {
    for (const size_t i : {1, 2}) // in the order in which they are made
        if (got[i] != want[i])
            return OUTPUT_FILES[i];
    return OUTPUT_FILES[0];
}

void keep_case(const Inputs &inputs, const std::string &folder, const OutputMaker &block) {
    fs::remove_all(folder);
    fs::create_directories(folder);
    write_inputs(inputs, folder);
    Case c = inputs.from; // the same case by itself
    c.raw = "raw.ppm";
    c.registers = "cfa.ini";
    c.bayer = std::to_string(inputs.registers->top.hw.reg_img_bayerid);
    c.settings.clear();
    write_whole_file(folder + "/plan.tsv", plan_line(c));
    const std::string script = folder + "/again";
    write_whole_file(
        script, "#!/bin/sh\n# Runs this case once more, in its folder.\ncd \"$(dirname \"$0\")\" || exit\n" +
                    (block.call().empty() ? TEN_ARGUMENTS : block.call()) + "\n");
    fs::permissions(script, fs::perms::owner_exec | fs::perms::group_exec | fs::perms::others_exec,
                    fs::perm_options::add);
}

Failure look_into(const Inputs &inputs, const std::string &folder, OutputMaker &block, OutputMaker &reference,
                  const OutputSums &wanted) {
    const std::string got = folder + "/got", want = folder + "/want";
    fill(block, inputs, got);
    if (!fill(reference, inputs, want)) { // sums alone: the model may have the pictures to them
        const auto model = make_whole_plane_model();
        if (model->make(inputs) == wanted)
            fill(*model, inputs, want);
    }
    Failure failure = judged(got, want, inputs);
    write_whole_file(folder + "/difference.txt",
                     failure.stage + "\n" + failure.kind + "\n" + failure.text + "\n");
    return failure;
}

} // namespace cfatool
