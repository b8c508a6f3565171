#include "tools/cfatool/regress/least.h"

#include <filesystem>

#include "tools/cfatool/regress/failure.h"
#include "tools/cfatool/regress/minimise.h"
#include "tools/cfatool/regress/pool.h"

namespace cfatool {
namespace {

using Status = Result::Status;

constexpr const char *DIFFERS = "differs";
constexpr int64_t MOST_LIMITS = 10;

/// The text of an error without what a program says, which may tell the size of the picture.
std::string kind_of_error(const std::string &text) {
    return text.substr(0, text.find(':'));
}

/// How a run ends: nothing for a pass.
std::string ending(const Inputs &inputs, OutputMaker &block, OutputMaker *reference) {
    try {
        const OutputSums got = block.make(inputs);
        return reference == nullptr || reference->make(inputs) == got ? "" : DIFFERS;
    } catch (const std::exception &error) {
        return kind_of_error(text_of(error));
    }
}

} // namespace

void make_least(const Inputs &inputs, const Result &bad, OutputMaker &block, OutputMaker *reference,
                int64_t limit_ms, const std::string &folder) {
    const bool fails = bad.status == Status::fail;
    const std::unique_ptr<OutputMaker> model = make_whole_plane_model();
    if (reference != nullptr && !reference->takes_any_inputs()) {
        // Sums and folders know the whole picture alone: the model stands in for them where it agrees with
        // them.
        if (fails && model->make(inputs) != reference->make(inputs))
            return;
        reference = fails ? model.get() : nullptr;
    }
    const std::string wanted = fails ? DIFFERS : kind_of_error(bad.text);
    const int64_t end = milliseconds_now() + MOST_LIMITS * limit_ms;
    const auto ends_likewise = [&](const Inputs &smaller) {
        restart_case_time();
        return milliseconds_now() < end &&
               done_apart(limit_ms, [&] { return ending(smaller, block, reference); }) == wanted;
    };
    if (!ends_likewise(inputs))
        return;
    const Inputs least = minimised(inputs, ends_likewise);
    restart_case_time();
    const std::string unfinished = folder + ".part";
    keep_case(least, unfinished, block);
    if (fails)
        look_into(least, unfinished, block, *reference, reference->make(least));
    std::filesystem::rename(unfinished, folder);
}

} // namespace cfatool
