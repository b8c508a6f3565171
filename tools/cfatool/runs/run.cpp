// cfatool run: the block on a picture, without ten arguments.
#include <fmt/core.h>
#include <iostream>
#include <memory>

#include "tools/cfatool/base/files.h"
#include "tools/cfatool/registers/ini_text.h"
#include "tools/cfatool/registers/regs_edit.h"
#include "tools/cfatool/runs/run_maker.h"
#include "tools/cfatool/subcommands.h"

namespace cfatool {
namespace {

struct RunOptions {
    RunRequest request;
    std::string cfa_file, top_file;
    std::vector<std::string> assignments;
    int bayer = -1;
};

bool has_section(const std::string &text, const std::string &section) {
    for (const IniLine &line : read_ini_text(text))
        if (line.kind == IniLine::Kind::setting && line.section == section)
            return true;
    return false;
}

/// Changes one register in the file of its block.
void assign(RunRequest &request, const std::string &assignment) {
    Registers registers;
    const std::string key = assignment.substr(0, assignment.find('='));
    const FoundRegister found = find_register(registers, key);
    const bool top = found.info != nullptr && found.where.part == &registers.top.hw;
    std::string &text = top ? request.top_ini : request.cfa_ini;
    text = set_register(text, assignment);
}

void run(const RunOptions &options) {
    RunRequest request = options.request;
    const std::string top_section = cfa::cmodel_top_reg_hw_table().name;
    if (!options.cfa_file.empty())
        request.cfa_ini = read_whole_file(options.cfa_file);
    if (!options.top_file.empty())
        request.top_ini = read_whole_file(options.top_file);
    else if (has_section(request.cfa_ini, top_section))
        request.top_ini = request.cfa_ini;
    for (const std::string &assignment : options.assignments)
        assign(request, assignment);
    if (options.bayer >= 0)
        assign(request, fmt::format("reg_img_bayerid={}", options.bayer));
    make_run(request);
    std::cout << request.folder << "\n";
}

} // namespace

void run_command(Command &command) {
    const auto options = std::make_shared<RunOptions>();
    RunRequest &request = options->request;
    command.word("RAW", request.raw, "The mosaic, P5");
    command.text("-o", request.folder, "DIR", "The folder to make", Need::required);
    command.text("-r", options->cfa_file, "FILE", "Registers; what it does not set keeps its default");
    command.text("--top", options->top_file, "FILE", "Registers of the top level, if they are not in -r");
    command.texts("--set", options->assignments, "KEY=VALUE", "Change one register; may be repeated");
    command.number("--bayer", options->bayer, 0, 15, "Pattern id: 0 BGGR, 1 GBRG, 2 GRBG, 3 RGGB");
    command.flag("--mosaic", request.mosaic,
                 "RAW is a colour picture (PNG, P6): sample it through the pattern");
    command.flag("--debug", request.debug, "Write the debug images, too");
    command.flag("--planes", request.planes, "Write every plane of every stage as planes/NAME.npy");
    command.footer(
        "Examples: cfatool run raw.ppm --bayer 3 --set reg_cfa_edge_tol=300 --planes -o run\n"
        "          cfatool run photo.png --mosaic --bayer 0 -o run\n"
        "The folder holds raw.ppm, cfa.ini, cmodel_top.ini, out.ppm, out_dc.ppm, out_sg.ppm, cfa.log and\n"
        "run.json: version of the model, sums, registers away from reset, the call that makes it again.");
    command.run(options, run);
}

} // namespace cfatool
