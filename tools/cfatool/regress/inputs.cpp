#include "tools/cfatool/regress/inputs.h"

#include <filesystem>
#include <fmt/core.h>
#include <sstream>

#include "cmodel/cfa/src/kit/in_force.h"
#include "cmodel/common/ppm.h"
#include "tools/cfatool/base/files.h"
#include "tools/cfatool/base/trouble.h"
#include "tools/cfatool/random/drawn_case.h"
#include "tools/cfatool/runs/run_maker.h"

namespace cfatool {
namespace {

cfa::FramePtr drawn_mosaic(const std::string &text) {
    Registers unused;
    if (const auto seed = drawn_seed(text, "random"))
        return draw_mosaic(*seed, small_size(*seed));
    if (const auto seed = drawn_seed(text, "large"))
        return draw_mosaic(*seed, large_size(*seed));
    if (const auto seed = drawn_seed(text, "limits"))
        return draw_at_limits(*seed, unused.block, unused.top);
    return nullptr;
}

void set(Registers &registers, const std::string &setting) {
    const auto [to, value] = parse_setting(registers, setting);
    to.info->store(*to.where.part, value);
}

bool tells_the_id(const Registers &registers) {
    const auto *const id = cfa::cmodel_top_reg_hw_table().find("reg_img_bayerid");
    return id->record(registers.top.hw).is_set != 0;
}

std::shared_ptr<const Registers> load_registers(const Case &c) {
    const auto registers = std::make_shared<Registers>();
    if (const auto random = drawn_seed(c.registers, "random")) {
        draw_registers(*random, registers->block, registers->top);
    } else if (const auto limits = drawn_seed(c.registers, "limits")) {
        draw_at_limits(*limits, registers->block, registers->top);
    } else if (c.registers != "-") {
        registers->load(c.registers);
        if (c.bayer == "-" && !tells_the_id(*registers))
            throw Trouble(c.registers + ": does not say the pattern id, nor does the plan");
    }
    if (c.bayer != "-")
        set(*registers, "reg_img_bayerid=" + c.bayer);
    std::istringstream settings(c.settings);
    for (std::string setting; settings >> setting;)
        set(*registers, setting);
    return registers;
}

// The section of a block with the registers that are away from their resets; the id always.
std::string ini_text(const RegisterTable &table, const RegisterPart &part) {
    std::string text = fmt::format("[{}]\n", table.name);
    for (const RegisterInfo &info : table.registers)
        if (info.read(part) != info.reset || std::string(info.key) == "reg_img_bayerid")
            text += fmt::format("{} = {}\n", info.key, info.read(part));
    return text;
}

} // namespace

std::shared_ptr<Mosaic> Mosaic::from_file(const std::string &path) {
    if (is_folder(path))
        throw file_trouble(path, "is a folder");
    open_to_read(path); // the reader behind it waits for a file that is missing
    auto mosaic = std::make_shared<Mosaic>();
    mosaic->path_ = path;
    cfa::PpmReader reader(path.c_str());
    const cfa::PpmHeader &header = reader.header();
    const auto width = static_cast<uint32_t>(header.width), height = static_cast<uint32_t>(header.height);
    if (header.bit_depth >= 1 && header.bit_depth <= 16 && cfa::frame_size_ok(width, height, 3))
        mosaic->words_.emplace(header);
    if (mosaic->words_ && mosaic->words_->read(reader)) {
        Summer summer = Summer::of_picture(1, header.width, header.height, header.bit_depth);
        summer.add(mosaic->words_->row<uint8_t>(0), mosaic->words_->size());
        mosaic->sum_ = summer.sum();
    } else {
        mosaic->words_.reset();
        mosaic->sum_ = sum_of_file(path);
    }
    return mosaic;
}

std::shared_ptr<Mosaic> Mosaic::from_frame(cfa::FramePtr frame, const Sum &sum) {
    auto mosaic = std::make_shared<Mosaic>();
    mosaic->frame_ = std::move(frame);
    mosaic->sum_ = sum;
    return mosaic;
}

const FRAME *Mosaic::frame() {
    if (frame_ == nullptr)
        frame_ = read_mosaic(path_);
    return frame_.get();
}

Inputs make_inputs(const Case &from, std::shared_ptr<Mosaic> mosaic,
                   std::shared_ptr<const Registers> registers) {
    Summer summer;
    summer.add(mosaic->sum());
    for (const auto &[table, part] : registers->parts())
        for (const RegisterInfo &info : table->registers) {
            const int32_t v = info.read(*part);
            summer.add(&v, sizeof v);
        }
    return {from, std::move(mosaic), std::move(registers), summer.sum()};
}

Inputs InputLoader::load(const Case &c) {
    if (raw_ == nullptr || raw_name_ != c.raw) {
        raw_ = nullptr; // one at a time
        if (cfa::FramePtr drawn = drawn_mosaic(c.raw)) {
            drawn->bit_depth = std::max(drawn->bit_depth, 2u); // a file of one bit is read as one of none
            raw_ = Mosaic::from_frame(std::move(drawn), sum_of_text(c.raw));
        } else {
            raw_ = Mosaic::from_file(c.raw);
        }
        raw_name_ = c.raw;
    }
    return make_inputs(c, raw_, load_registers(c));
}

std::shared_ptr<Registers> copy_registers(const Registers &registers) {
    auto copy = std::make_shared<Registers>();
    copy->block = registers.block;
    copy->top = registers.top;
    return copy;
}

void write_inputs(const Inputs &inputs, const std::string &folder) {
    const std::string raw = folder + "/raw.ppm";
    std::error_code error;
    if (!inputs.mosaic->path().empty()) // its bytes: samples that are missing cannot be written
        std::filesystem::copy_file(inputs.mosaic->path(), raw,
                                   std::filesystem::copy_options::overwrite_existing, error);
    else
        cfa::write_p5(raw.c_str(), inputs.mosaic->frame());
    if (error)
        throw file_trouble(inputs.from.raw, error.message());
    write_whole_file(folder + "/cfa.ini", ini_text(cfa::cfa_reg_hw_table(), inputs.registers->block.hw));
    write_whole_file(folder + "/cmodel_top.ini",
                     ini_text(cfa::cmodel_top_reg_hw_table(), inputs.registers->top.hw));
}

} // namespace cfatool
