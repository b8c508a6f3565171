// cfatool crop: a small test out of a big failure.
#include <algorithm>
#include <fmt/core.h>
#include <iostream>
#include <memory>

#include "cmodel/common/ppm.h"
#include "tools/cfatool/base/files.h"
#include "tools/cfatool/base/numbers.h"
#include "tools/cfatool/base/scratch_folder.h"
#include "tools/cfatool/compare/verdict.h"
#include "tools/cfatool/runs/run_maker.h"
#include "tools/cfatool/subcommands.h"

namespace cfatool {
namespace {

constexpr int REACH = 4;           // no stage reads farther from the pixel that it writes
constexpr int REFERENCE = 256;     // of a large picture, pixels around the one in question stand for all
constexpr int SMALLEST[] = {4, 3}; // picture that the block takes

struct CropOptions {
    std::string run, other, around, output;
};

/// What a window must keep: the values of a plane around the pixel.
struct Kept {
    std::string plane;
    int reach;
};

struct Question {
    int x = 0, y = 0;
    std::vector<Kept> kept;
};

/// A part of the mosaic, and the planes of a run on it alone.
struct Window {
    Crop at;
    cfa::FramePtr raw;
    TakenPlanes planes;

    Window(const FRAME *mosaic, const Crop &crop, const Registers &registers) : at(crop) {
        raw.reset(cfa::new_frame(FRAME_TYPE_IMG, FRAME_FMT_MONO, static_cast<uint32_t>(crop.width),
                                 static_cast<uint32_t>(crop.height), 1, mosaic->bit_depth));
        for (int y = 0; y < crop.height; ++y)
            std::copy_n(&cfa::sample(const_cast<FRAME *>(mosaic), crop.y + y, crop.x), crop.width,
                        &cfa::sample(raw.get(), y, 0));
        planes = planes_of_run(registers, raw.get());
    }
    const FRAME *plane(const std::string &name) const {
        const auto found = planes.all().find(name);
        return name == "raw" ? raw.get() : found != planes.all().end() ? found->second.get() : nullptr;
    }
    bool holds(int x, int y) const {
        return x >= at.x && x < at.x + at.width && y >= at.y && y < at.y + at.height;
    }
};

/// Whether a window has what must be kept as the reference has it.
bool keeps(const Window &window, const Window &reference, const Question &question) {
    for (const Kept &kept : question.kept) {
        const FRAME *const want = reference.plane(kept.plane), *const got = window.plane(kept.plane);
        for (int y = question.y - kept.reach; y <= question.y + kept.reach && want != nullptr; ++y)
            for (int x = question.x - kept.reach; x <= question.x + kept.reach; ++x) {
                if (!reference.holds(x, y))
                    continue;
                if (!window.holds(x, y))
                    return false;
                for (int c = 0; c < static_cast<int>(want->channels); ++c)
                    if (cfa::value(want, y - reference.at.y, x - reference.at.x, c) !=
                        cfa::value(got, y - window.at.y, x - window.at.x, c))
                        return false;
            }
    }
    return true;
}

/// from..to in steps of the pattern, within 0..size and at least `least` long.
void align(int from, int to, int size, int period, int least, int &begin, int &length) {
    begin = std::max(from, 0) / period * period;
    int end = std::min((to + period - 1) / period * period, size);
    end = std::min(std::max(end, begin + least), size);
    while (end - begin < least && begin > 0)
        begin -= period;
    length = end - begin;
}

class Cutter {
  public:
    Cutter(const FRAME *mosaic, const Registers &registers, const Question &question)
        : mosaic_(mosaic), registers_(registers), question_(question),
          period_(int32_t{registers.top.hw.reg_img_bayerid} > 7 ? 4 : 2),
          reference_(mosaic, around(is_large() ? REFERENCE : std::max(width(), height())), registers) {}

    Window cut() const {
        for (int reach = 0;; ++reach) {
            const Crop crop = around(reach);
            Window window(mosaic_, crop, registers_);
            const bool all = crop.width >= reference_.at.width && crop.height >= reference_.at.height;
            if (all || keeps(window, reference_, question_))
                return all ? std::move(window) : shrink(std::move(window));
        }
    }

  private:
    int width() const { return cfa::width_of(mosaic_); }
    int height() const { return cfa::height_of(mosaic_); }
    bool is_large() const { return int64_t{width()} * height() > 4 * REFERENCE * REFERENCE; }

    Crop around(int reach) const {
        Crop crop;
        align(question_.x - reach, question_.x + reach + 1, width(), period_, SMALLEST[0], crop.x,
              crop.width);
        align(question_.y - reach, question_.y + reach + 1, height(), period_, SMALLEST[1], crop.y,
              crop.height);
        return crop;
    }

    /// Takes away what is not needed, side by side.
    Window shrink(Window window) const {
        for (bool smaller = true; smaller;) {
            smaller = false;
            for (int side = 0; side < 4; ++side) {
                Crop crop = window.at;
                (side < 2 ? crop.width : crop.height) -= period_;
                crop.x += side == 0 ? period_ : 0;
                crop.y += side == 2 ? period_ : 0;
                if (crop.width < SMALLEST[0] || crop.height < SMALLEST[1])
                    continue;
                if (Window trial(mosaic_, crop, registers_); keeps(trial, reference_, question_)) {
                    window = std::move(trial);
                    smaller = true;
                }
            }
        }
        return window;
    }

    const FRAME *mosaic_;
    const Registers &registers_;
    const Question &question_;
    int period_;
    Window reference_;
};

/// The first wrong pixel of the first wrong plane: it, and all around it that it is computed from.
Question first_difference(const RunFolder &run, const CropOptions &options) {
    const RunFolder other(options.other);
    const RunVerdict verdict = judge(run, other, {});
    const PlaneVerdict *const plane = verdict.first_plane();
    if (plane == nullptr || plane->found.list.empty())
        throw CommandTrouble(fmt::format("no sample differs between {} and {}", options.run, options.other));
    Question question = {plane->found.list[0].x, plane->found.list[0].y, {{plane->part.name, 0}}};
    for (const size_t input : plane->part.inputs)
        question.kept.push_back({verdict.planes[input].part.name, REACH});
    return question;
}

Question question_of(const RunFolder &run, const CropOptions &options) {
    Question question;
    if (!options.other.empty())
        question = first_difference(run, options);
    else if (options.around.empty())
        throw UsageTrouble("OTHER or --around says which pixel");
    if (!options.around.empty()) {
        const auto pixel = parse_list(options.around, "--around", ',', 2, 0, INT32_MAX);
        question.x = static_cast<int>(pixel[0]);
        question.y = static_cast<int>(pixel[1]);
    }
    for (const cfa::PlaneInfo &plane : cfa::planes())
        if (options.other.empty())
            question.kept.push_back({plane.name, 0});
    return question;
}

void run(const CropOptions &options) {
    const RunFolder folder(options.run);
    const Registers defaults;
    const Registers &registers = folder.registers() != nullptr ? *folder.registers() : defaults;
    const Question question = question_of(folder, options);
    const cfa::FramePtr mosaic = read_mosaic(options.run + "/raw.ppm");
    if (question.x >= cfa::width_of(mosaic.get()) || question.y >= cfa::height_of(mosaic.get()))
        throw file_trouble(options.run + "/raw.ppm",
                           fmt::format("has no pixel {},{}: it is {}x{}", question.x, question.y,
                                       mosaic->width, mosaic->height));
    const Window window = Cutter(mosaic.get(), registers, question).cut();

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
        "OTHER the plane that is wrong and, around it, all it is computed from; else every plane.\n"
        "The folder is a run of its own, with exact planes.");
    command.run(options, run);
}

} // namespace cfatool
