#include "tools/cfatool/runs/run_maker.h"

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include "cmodel/cfa/src/cfa_hw.h"
#include "cmodel/cfa/src/kit/debug_image.h"
#include "cmodel/cfa/src/kit/in_force.h"
#include "cmodel/cfa/src/picture_run.h"
#include "cmodel/common/ppm_stream.h"
#include "log/log.h"
#include "tools/cfatool/base/files.h"
#include "tools/cfatool/base/json_text.h"
#include "tools/cfatool/base/trouble.h"
#include "tools/cfatool/pictures/mosaic_writer.h"
#include "tools/cfatool/pictures/picture_reader.h"
#include "tools/cfatool/runs/output_frames.h"
#include "tools/cfatool/runs/plane_rows.h"

namespace cfatool {
namespace {

namespace fs = std::filesystem;

constexpr int LOG_LEVEL = LOG_INFO;

void run_for_planes(const Registers &registers, const FRAME *raw, cfa::PlaneTaker &taker) {
    const OutputFrames out(raw);
    const cfa::BoundRegisters bound(registers.block, registers.top, &taker);
    cfa::run_block(raw, out.rgb.get(), out.dc.get(), out.gain.get());
}

/// A folder that gets its name when it is complete and goes away otherwise.
class NewFolder {
  public:
    explicit NewFolder(std::string name) : name_(std::move(name)) {
        while (name_.size() > 1 && name_.back() == '/')
            name_.pop_back();
        if (fs::exists(name_) && (!is_folder(name_) || !fs::is_empty(name_)))
            throw file_trouble(name_, "is there already; -o names a new folder");
        path_ = name_ + ".cfatool." + std::to_string(getpid()) + ".tmp";
        if (std::error_code error; !fs::create_directory(path_, error))
            throw file_trouble(name_, error.message());
    }
    ~NewFolder() {
        std::error_code error;
        fs::remove_all(path_, error);
    }
    NewFolder(const NewFolder &) = delete;
    NewFolder &operator=(const NewFolder &) = delete;

    const std::string &path() const { return path_; }
    void commit() const {
        std::error_code error;
        fs::rename(path_, name_, error); // over an empty folder, too
        if (error)
            throw file_trouble(name_, error.message());
    }

  private:
    std::string name_, path_;
};

bool is_png_or_colour(const std::string &path) {
    const Stream stream = open_to_read(path);
    const int first = std::fgetc(stream.get()), second = std::fgetc(stream.get());
    return first == 0x89 || (first == 'P' && (second == '6' || second == '3'));
}

void put_mosaic(const RunRequest &request, uint32_t bayer, const std::string &to) {
    if (request.mosaic) {
        MosaicForm form;
        form.bayer = bayer;
        return write_mosaic(request.raw, form, to);
    }
    if (!is_folder(request.raw) && !fs::is_regular_file(request.raw))
        throw file_trouble(request.raw, "is no regular file: it is read more than once");
    if (is_png_or_colour(request.raw))
        throw file_trouble(request.raw, "is no P5; --mosaic samples a colour picture through the pattern");
    cfa::PpmReader(request.raw.c_str()).close(); // what is wrong with the header names this file
    std::error_code error;
    if (!fs::copy_file(request.raw, to, error))
        throw file_trouble(request.raw, error.message());
}

/// The run of the ten-argument tool, in this process.
void run_as_tool(const std::string &folder, const RunRequest &request) {
    const auto in = [&](const char *name) { return folder + "/" + name; };
    std::FILE *const log = std::fopen(in("cfa.log").c_str(), "a"); // the log keeps it
    if (log == nullptr || log_add_fp(log, LOG_LEVEL) != 0)
        throw errno_trouble(in("cfa.log"));
    if (folder.size() + 64 > sizeof dbg_path)
        throw file_trouble(folder, "is too long a name for debug images");
    cfa::load_registers(in("cfa.ini").c_str(), in("cmodel_top.ini").c_str());
    dump_dbg_img = request.debug;
    std::snprintf(dbg_path, sizeof dbg_path, "%s", folder.c_str());
    static std::string copy, named; // a notice carries nothing with it
    copy = in("raw.ppm"), named = request.raw;
    cfa::run_picture(copy.c_str(),
                     {in("out.ppm").c_str(), in("out_dc.ppm").c_str(), in("out_sg.ppm").c_str()},
                     [](const char *line) {
                         std::string text = line;
                         if (const size_t at = text.find(copy); at != std::string::npos)
                             text.replace(at, copy.size(), named); // the file that was given
                         std::cerr << text << "\n";
                     });
}

std::string record(const RunRequest &request, const std::string &folder, Registers &registers,
                   const FRAME *raw) {
    Json away = Json::object(), outputs;
    for (const BlockPart &p : registers.parts())
        for (const RegisterInfo &info : p.table->registers)
            if (const int32_t value = info.read(*p.part); value != info.reset)
                away[info.key] = value;
    for (const char *name : {"out.ppm", "out_dc.ppm", "out_sg.ppm"})
        outputs[name] = sha256_of_file(folder + "/" + name);
    Json call = {"cfatool", "run", "raw.ppm", "-r", "cfa.ini", "--top", "cmodel_top.ini"};
    if (request.debug)
        call.push_back("--debug");
    if (request.planes)
        call.push_back("--planes");
    call.insert(call.end(), {"-o", "again"});
    return Json({{"model", CFATOOL_VERSION},
                 {"input",
                  {{"file", request.name.empty() ? request.raw : request.name},
                   {"width", raw->width},
                   {"height", raw->height},
                   {"bayer", int32_t{registers.top.hw.reg_img_bayerid}},
                   {"sha256", sha256_of_file(folder + "/raw.ppm")}}},
                 {"outputs", outputs},
                 {"registers", away},
                 {"call", call},
                 {"debug", request.debug},
                 {"planes", request.planes}})
               .dump(2, ' ', false, Json::error_handler_t::replace) +
           "\n";
}

} // namespace

cfa::FramePtr read_mosaic(const std::string &path) {
    log_set_quiet(1);
    open_to_read(path); // the reader behind it waits for a file that is missing
    cfa::PpmReader reader(path.c_str());
    const cfa::PpmHeader &header = reader.header();
    cfa::FramePtr raw(cfa::new_frame(FRAME_TYPE_IMG, FRAME_FMT_MONO, static_cast<uint32_t>(header.width),
                                     static_cast<uint32_t>(header.height), 1, header.bit_depth));
    reader.read(raw->data, static_cast<size_t>(raw->width) * raw->height);
    reader.close();
    return raw;
}

Planes planes_of_run(const Registers &registers, const FRAME *raw) {
    TakenPlanes taken(raw);
    run_for_planes(registers, raw, taken);
    return std::move(taken.planes);
}

void make_run(const RunRequest &request) {
    log_set_quiet(1);
    open_to_read(request.raw); // before anything is made
    const NewFolder folder(request.folder);
    const std::string &path = folder.path();
    write_whole_file(path + "/cfa.ini", request.cfa_ini);
    write_whole_file(path + "/cmodel_top.ini", request.top_ini);
    Registers registers;
    registers.load_run(path);
    const auto bayer = static_cast<uint32_t>(int32_t{registers.top.hw.reg_img_bayerid});
    put_mosaic(request, bayer, path + "/raw.ppm");
    run_as_tool(path, request);
    const cfa::FramePtr raw = read_mosaic(path + "/raw.ppm");
    if (request.planes) {
        PlaneFiles files(raw.get(), path + "/planes");
        files.put_mosaic();
        run_for_planes(registers, raw.get(), files);
    }
    write_whole_file(path + "/run.json", record(request, path, registers, raw.get()));
    folder.commit();
}

} // namespace cfatool
