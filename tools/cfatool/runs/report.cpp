// cfatool report: one page about one run.
#include <filesystem>
#include <fmt/core.h>
#include <iostream>
#include <memory>

#include "tools/cfatool/base/files.h"
#include "tools/cfatool/registers/ini_text.h"
#include "tools/cfatool/registers/registers.h"
#include "tools/cfatool/runs/report_page.h"
#include "tools/cfatool/subcommands.h"

namespace cfatool {
namespace {

struct ReportOptions {
    std::string folder;
    std::string output;
};

void collect_registers(const std::string &folder, Report &report) {
    Registers registers;
    for (const char *name : {"cfa.ini", "cmodel_top.ini"}) {
        if (!readable(folder + "/" + name))
            continue;
        registers.load(folder + "/" + name);
        report.register_files.emplace_back(name);
    }
    for (const BlockPart &p : registers.parts())
        for (const RegisterInfo &info : p.table->registers)
            if (const int32_t value = info.read(*p.part); value != info.reset)
                report.registers.push_back({p.table->name, info.key, info.meaning, info.reset, value});
}

/// The call as written down, or the one that makes the run again.
void collect_call(const std::string &folder, Report &report) {
    report.call_is_recorded = readable(folder + "/call.txt");
    if (report.call_is_recorded) {
        report.call = read_whole_file(folder + "/call.txt");
        return;
    }
    const bool debug_folder = is_folder(folder + "/dbg");
    report.call = fmt::format(
        "cfa_cmodel cfa.ini run.log 0 1 {} cmodel_top.ini raw.ppm out.ppm out_dc.ppm out_sg.ppm\n",
        debug_folder ? "dbg" : ".");
}

void make_folders(const std::string &output) {
    for (const std::string &folder : {output, output + "/images", output + "/thumbs"}) {
        std::error_code error;
        std::filesystem::create_directories(folder, error);
        if (error)
            throw file_trouble(folder, error.message());
    }
}

void run(const ReportOptions &options) {
    const std::vector<FoundImage> images = find_images(options.folder);
    if (images.empty())
        throw file_trouble(options.folder, "holds no .ppm image");
    Report report;
    report.folder = options.folder;
    collect_registers(options.folder, report);
    collect_call(options.folder, report);
    make_folders(options.output);
    for (const FoundImage &image : images)
        report.images.push_back(make_report_image(image, options.output));
    write_whole_file(options.output + "/index.html", report_page(report));
    std::cout << fmt::format("{}/index.html: {} images, {} registers that differ from their defaults\n",
                             options.output, report.images.size(), report.registers.size());
}

} // namespace

void report_command(Command &command) {
    const auto options = std::make_shared<ReportOptions>();
    command.word("RUN_DIR", options->folder, "Folder of the run");
    command.text("-o", options->output, "DIR", "Folder for the page, made if it is not there",
                 Need::required);
    command.footer(
        "Example: cfatool report run/ -o report/\n"
        "A run folder holds cfa.ini, cmodel_top.ini, raw.ppm, out.ppm, out_dc.ppm, out_sg.ppm, the "
        "debug images\n"
        "(in it or in dbg/) and, if somebody wrote it there, the command line in call.txt. What is "
        "missing is\n"
        "left out; other .ppm files come last.");
    command.run(options, run);
}

} // namespace cfatool
