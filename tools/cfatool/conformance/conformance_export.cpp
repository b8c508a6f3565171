// The conformance set as folders for a bench that knows nothing of this program.
#include <filesystem>

#include "tools/cfatool/base/files.h"
#include "tools/cfatool/base/scratch_folder.h"
#include "tools/cfatool/conformance/conformance_set.h"
#include "tools/cfatool/pictures/memory_text.h"
#include "tools/cfatool/pictures/picture_crop.h"
#include "tools/cfatool/regress/plan.h"
#include "tools/cfatool/runs/run_maker.h"

namespace cfatool {
namespace {

/// NAME.hex beside NAME.ppm.
void write_memory_text(const std::string &picture) {
    PictureReader reader(picture);
    OutputFile text(std::filesystem::path(picture).replace_extension(".hex").string());
    put_memory_text(reader, crop_in("", reader), [&](const std::string &rows) { text.write(rows); });
    text.commit();
}

} // namespace

void export_conformance_set(const std::string &folder) {
    std::filesystem::create_directories(folder + "/cases");
    std::string plan = "# cfatool regress run plan.tsv -o results --expect FOLDER holds FOLDER/CASE/out*.ppm "
                       "against the model.\n";
    for (const ConformanceCase &c : conformance_cases()) {
        const ScratchFolder inputs;
        write_conformance_case(c, inputs.path);
        RunRequest request;
        request.raw = inputs.path + "/raw.ppm";
        request.cfa_ini = read_whole_file(inputs.path + "/cfa.ini");
        request.top_ini = read_whole_file(inputs.path + "/cmodel_top.ini");
        request.planes = true;
        const std::string name = std::string("cases/") + c.name;
        request.folder = folder + "/" + name;
        make_run(request);
        for (const char *picture : {"raw.ppm", "out.ppm", "out_dc.ppm", "out_sg.ppm"})
            write_memory_text(request.folder + "/" + picture);
        plan += plan_line({c.name, name + "/raw.ppm", name + "/cfa.ini", std::to_string(c.bayer), ""});
    }
    write_whole_file(folder + "/plan.tsv", plan);
}

} // namespace cfatool
