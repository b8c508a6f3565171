// cfa_faults model|engine first|all|record WANT FOLDER...: which pictures show the fault that is on.
//
// A folder holds raw.ppm, cfa.ini, cmodel_top.ini. "record" writes a line for each picture into WANT, what
// comes out without a fault; else the folders that come out otherwise, or not at all, are printed, with
// "first" no more than one. Every picture has a process of its own: a fault may crash or never end.

#include <cstdio>
#include <fstream>
#include <string>
#include <string_view>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "cmodel/cfa/src/cfa_hw.h"
#include "cmodel/cfa/src/cfa_model.h"
#include "cmodel/cfa/src/lines/frame_rows.h"
#include "cmodel/cfa/src/reg_parse/cfa_reg.h"
#include "cmodel/cmodel_top/src/reg_parse/cmodel_top_reg.h"
#include "cmodel/common/ppm.h"
#include "log/log.h"

using namespace cfa;

namespace {

constexpr rlim_t SECONDS = 5; // of the processor, for one picture

uint64_t sum_of(const FRAME *frame, uint64_t sum) {
    const size_t count = static_cast<size_t>(frame->width) * frame->height * frame->channels;
    for (size_t i = 0; i < count; i++)
        sum = (sum ^ frame->data[i]) * 1099511628211u;
    return sum;
}

// One sum over the three outputs. What the engine refuses is the model's.
uint64_t sum_of_outputs(const FRAME *raw, bool engine) {
    const FramePtr rgb = plane_like(raw, FRAME_TYPE_IMG, 3, 12);
    const FramePtr dc = plane_like(raw, FRAME_TYPE_IMG, 1, 12), gain = plane_like(raw, FRAME_TYPE_IMG, 1, 12);
    if (cfa_reg.hw.reg_cfa_enable == 0)
        cfa_bypass(raw, rgb.get(), dc.get(), gain.get());
    else if (!engine || !cfa_lines(raw, rgb.get(), dc.get(), gain.get()))
        cfa_model(raw, rgb.get(), dc.get(), gain.get());
    return sum_of(gain.get(), sum_of(dc.get(), sum_of(rgb.get(), 14695981039346656037u)));
}

// The line of a picture in WANT, or "" when its process does not end well.
std::string outcome(const std::string &folder, bool engine) {
    INIT_CFA_REG("NULL");
    INIT_CMODEL_TOP_REG("NULL");
    LOAD_CFA_INI((folder + "/cfa.ini").c_str());
    LOAD_CMODEL_TOP_INI((folder + "/cmodel_top.ini").c_str());
    const FramePtr raw(CM_ReadPPM5((folder + "/raw.ppm").c_str(), FRAME_TYPE_IMG));
    int ends[2];
    if (pipe(ends) != 0)
        std::exit(2);
    const pid_t child = fork();
    if (child == 0) {
        const rlimit limit{SECONDS, SECONDS};
        setrlimit(RLIMIT_CPU, &limit);
        const uint64_t sum = sum_of_outputs(raw.get(), engine);
        _exit(write(ends[1], &sum, sizeof sum) == sizeof sum ? 0 : 1);
    }
    close(ends[1]);
    uint64_t sum = 0;
    const bool ended = read(ends[0], &sum, sizeof sum) == sizeof sum;
    close(ends[0]);
    waitpid(child, nullptr, 0);
    return ended ? std::to_string(sum) : "";
}

} // namespace

int main(int argc, char **argv) {
    if (argc < 5)
        return 2;
    const bool engine = std::string_view(argv[1]) == "engine";
    const std::string_view mode = argv[2];
    log_set_quiet(true);
    std::fstream want(argv[3], mode == "record" ? std::ios::out : std::ios::in);
    for (int i = 4; i < argc; i++) {
        const std::string got = outcome(argv[i], engine);
        std::string line;
        if (mode == "record")
            want << got << "\n";
        else if (!std::getline(want, line) || line != got)
            std::puts(argv[i]);
        if (mode == "first" && line != got)
            break;
    }
}
