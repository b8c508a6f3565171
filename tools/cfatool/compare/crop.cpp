// cfatool crop: a small test out of a big failure.
#include <algorithm>
#include <fmt/core.h>
#include <iostream>
#include <memory>
#include <optional>

#include "cmodel/common/ppm.h"
#include "tools/cfatool/base/files.h"
#include "tools/cfatool/base/scratch_folder.h"
#include "tools/cfatool/compare/crop_window.h"
#include "tools/cfatool/compare/verdict.h"
#include "tools/cfatool/subcommands.h"

namespace cfatool {
namespace {

constexpr int REACH = 4; // no stage reads farther from the pixel that it writes

struct CropOptions {
    std::string run, other, around, output;
};

void take_asked(CropQuestion &question, const CropOptions &options) {
    if (options.around.empty())
        return;
    const auto pixel = parse_list(options.around, "--around", ',', 2, 0, INT32_MAX);
    question.x = static_cast<int>(pixel[0]);
    question.y = static_cast<int>(pixel[1]);
}

/// The first wrong pixel, or the one that is asked for, of the first wrong plane: it, and all around it that
/// it is computed from.
CropQuestion first_difference(const RunFolder &run, const RunFolder &other, const CropOptions &options) {
    CompareOptions progress;
    progress.progress = true;
    const RunVerdict verdict = judge(run, other, progress);
    const PlaneVerdict *const plane = verdict.first_plane();
    const auto compared = [](const FilePair &pair) { return pair.compared(); };
    for (const FilePair &pair : verdict.files)
        if (!pair.unreadable.empty())
            throw Trouble(pair.unreadable);
    if (std::none_of(verdict.files.begin(), verdict.files.end(), compared))
        throw CommandTrouble(fmt::format("no image is in both {} and {}", options.run, options.other));
    if (plane != nullptr && !plane->found.mismatch.empty())
        throw CommandTrouble(plane->found.mismatch);
    if (plane == nullptr || plane->found.list.empty())
        throw CommandTrouble(fmt::format("no sample differs between {} and {}", options.run, options.other));
    CropQuestion question;
    question.x = plane->found.list[0].x;
    question.y = plane->found.list[0].y;
    question.kept.push_back({plane->part.name, 0});
    for (const size_t input : plane->part.inputs)
        question.kept.push_back({verdict.planes[input].part.name, REACH});
    take_asked(question, options);
    const PlaneFile samples(plane->b);
    if (question.x < samples.form().width && question.y < samples.form().height)
        question.samples = samples.read(question.x, question.y, 1, 1);
    question.other = other.registers();
    return question;
}

/// The pixel alone, in every plane.
CropQuestion every_plane(const CropOptions &options) {
    if (options.around.empty())
        throw UsageTrouble("OTHER or --around says which pixel");
    CropQuestion question;
    take_asked(question, options);
    for (const cfa::PlaneInfo &plane : cfa::planes())
        question.kept.push_back({plane.name, 0});
    return question;
}

void run(const CropOptions &options) {
    const RunFolder folder(options.run);
    const Registers defaults;
    const Registers &registers = folder.registers() != nullptr ? *folder.registers() : defaults;
    std::optional<RunFolder> other;
    if (!options.other.empty())
        other.emplace(options.other);
    const CropQuestion question = other ? first_difference(folder, *other, options) : every_plane(options);
    const cfa::FramePtr mosaic = read_mosaic(options.run + "/raw.ppm");
    if (question.x >= cfa::width_of(mosaic.get()) || question.y >= cfa::height_of(mosaic.get()))
        throw file_trouble(options.run + "/raw.ppm",
                           fmt::format("has no pixel {},{}: it is {}x{}", question.x, question.y,
                                       mosaic->width, mosaic->height));
    const CropWindow window = smallest_window(mosaic.get(), registers, question);

    const ScratchFolder scratch;
    RunRequest request;
    request.raw = scratch.path + "/raw.ppm";
    cfa::write_p5(request.raw.c_str(), window.raw.get());
    const auto text_of = [&](const char *name) {
        const std::string path = options.run + "/" + name;
        return readable(path) ? read_whole_file(path) : "";
    };
    request.cfa_ini = text_of("cfa.ini");
    request.top_ini = text_of("cmodel_top.ini");
    const auto planes = folder.planes();
    request.debug = std::any_of(planes.begin(), planes.end(), [](const RunPlane &p) { return !p.exact; });
    request.planes = true;
    request.folder = options.output;
    request.name = fmt::format("{}/raw.ppm --crop {},{},{},{}", options.run, window.at.x, window.at.y,
                               window.at.width, window.at.height);
    make_run(request);
    std::cout << fmt::format("{}: {}x{} from {},{} on; pixel {},{} is {},{} in it\n", options.output,
                             window.at.width, window.at.height, window.at.x, window.at.y, question.x,
                             question.y, question.x - window.at.x, question.y - window.at.y);
}

} // namespace

void crop_command(Command &command) {
    const auto options = std::make_shared<CropOptions>();
    command.word("RUN_DIR", options->run, "Folder of a run: raw.ppm and its register files");
    command.word("OTHER", options->other, "A run that differs: the first wrong pixel is kept",
                 Need::optional);
    command.text("--around", options->around, "X,Y", "The pixel to keep");
    command.text("-o", options->output, "DIR", "The folder to make", Need::required);
    command.footer(
        "Example: cfatool crop run/ rtl_run/ -o small\n"
        "The smallest window, aligned to the pattern, in which the block computes the same there: with\n"
        "OTHER the plane that is wrong, in both runs if the model with OTHER's registers makes OTHER's\n"
        "sample, else in RUN_DIR and, up to 4 pixels around, all it is computed from; without OTHER every\n"
        "plane.\n"
        "The folder is a run of its own, with exact planes.");
    command.run(options, run);
}

} // namespace cfatool
