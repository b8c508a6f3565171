// cfatool hex: a picture as $readmemh text, and back.
#include <fmt/core.h>
#include <iostream>
#include <memory>
#include <optional>

#include "cmodel/common/ppm_stream.h"
#include "tools/cfatool/base/files.h"
#include "tools/cfatool/pictures/memory_text.h"
#include "tools/cfatool/pictures/picture_crop.h"
#include "tools/cfatool/subcommands.h"

namespace cfatool {
namespace {

struct HexOptions {
    std::string file;
    std::string crop;
    std::string output;
    std::string back;  // "WxH" of the picture that the text becomes
    uint32_t bits = 0; // 0: not given
    bool colour = false;
};

void make_picture(const HexOptions &options) {
    if (options.output.empty())
        throw UsageTrouble("--back needs -o");
    if (!options.crop.empty())
        throw UsageTrouble("--crop does not go with --back");
    const uint32_t bits = options.bits == 0 ? 12 : options.bits;
    const Size size = parse_size(options.back, "--back");
    const auto width = static_cast<uint32_t>(size.width), height = static_cast<uint32_t>(size.height);
    const uint32_t most = (1u << bits) - 1;
    const size_t count = size_t{width} * height * (options.colour ? 3 : 1);
    std::string bytes = cfa::ppm_header_text(options.colour ? '6' : '5', width, height, bits);
    for (const uint32_t sample : read_memory_text(options.file, read_whole_file(options.file), count, most))
        for (int shift = 8 * cfa::ppm_sample_bytes(bits) - 8; shift >= 0; shift -= 8)
            bytes += static_cast<char>(sample >> shift);
    write_whole_file(options.output, bytes);
}

void run(const HexOptions &options) {
    keep_apart(options.file, options.output);
    if (!options.back.empty())
        return make_picture(options);
    if (options.bits != 0 || options.colour)
        throw UsageTrouble("--bits and --colour go with --back");
    PictureReader reader(options.file);
    const Crop crop = crop_in(options.crop, reader);
    std::optional<OutputFile> file;
    if (!options.output.empty())
        file.emplace(options.output);
    const uint64_t wide = put_memory_text(reader, crop, [&](const std::string &text) {
        file ? file->write(text) : static_cast<void>(std::cout << text);
    });
    if (file)
        file->commit();
    if (wide > 0)
        std::cerr << fmt::format("{}: {} samples above the maximum value {} take more than {} digits\n",
                                 options.file, wide, reader.info().max, hex_digits(reader.info().max));
}

} // namespace

void hex_command(Command &command) {
    const auto options = std::make_shared<HexOptions>();
    command.word("FILE", options->file, "P5, P6 or PNG picture; with --back $readmemh text");
    command.text("--crop", options->crop, "X,Y,W,H", "Only this part");
    command.text("-o", options->output, "FILE", "Write to this file instead of standard output");
    command.text("--back", options->back, "WxH", "Read the text into a picture of this size");
    command.number("--bits", options->bits, 2, 31, "--back: depth of the samples, 2 to 31 (12)");
    command.flag("--colour", options->colour, "--back: R, G, B of a pixel one after the other");
    command.footer(
        "Examples: cfatool hex raw.ppm -o raw.mem\n"
        "          cfatool hex raw.mem --back 640x480 -o raw.ppm\n"
        "Rows top to bottom, R, G, B of a pixel one after the other; as many digits as the maximum value.");
    command.run(options, run);
}

} // namespace cfatool
