// cfatool hex: a picture as $readmemh text.
#include <bit>
#include <fmt/core.h>
#include <iostream>
#include <memory>
#include <optional>

#include "tools/cfatool/base/files.h"
#include "tools/cfatool/pictures/picture_crop.h"
#include "tools/cfatool/subcommands.h"

namespace cfatool {
namespace {

struct HexOptions {
    std::string file;
    std::string crop;
    std::string output;
};

int digits_of(uint32_t sample) {
    return (static_cast<int>(std::bit_width(sample)) + 3) / 4;
}

void run(const HexOptions &options) {
    PictureReader reader(options.file);
    const PictureInfo &info = reader.info();
    const Crop crop = crop_in(options.crop, reader);
    const int digits = digits_of(info.max);
    std::optional<OutputFile> file;
    if (!options.output.empty())
        file.emplace(options.output);

    uint64_t wide = 0; // samples that need more digits
    std::vector<uint32_t> row;
    for (int y = 0; y < info.height; ++y) {
        reader.read_row(row);
        if (y < crop.y || y >= crop.y + crop.height)
            continue;
        std::string text;
        const size_t begin = static_cast<size_t>(crop.x) * info.channels;
        for (size_t i = begin; i < begin + static_cast<size_t>(crop.width) * info.channels; ++i) {
            text += fmt::format("{:0{}x}\n", row[i], digits);
            wide += digits_of(row[i]) > digits;
        }
        file ? file->write(text) : static_cast<void>(std::cout << text);
    }
    reader.finish();
    if (file)
        file->commit();
    if (wide > 0)
        std::cerr << fmt::format("{}: {} samples above the maximum value {} take more than {} digits\n",
                                 options.file, wide, info.max, digits);
}

} // namespace

void hex_command(Command &command) {
    const auto options = std::make_shared<HexOptions>();
    command.word("FILE", options->file, "P5 or P6 picture, 1 to 4 bytes a sample");
    command.text("--crop", options->crop, "X,Y,W,H", "Only this part");
    command.text("-o", options->output, "FILE", "Write to this file instead of standard output");
    command.footer(
        "Example: cfatool hex raw.ppm -o raw.mem\n"
        "Rows top to bottom, R, G, B of a pixel one after the other; as many digits as the maximum value.");
    command.run(options, run);
}

} // namespace cfatool
