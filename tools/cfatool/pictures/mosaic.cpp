// cfatool mosaic: an RGB picture seen through the colour-filter array.
#include <memory>

#include "tools/cfatool/base/integer_math.h"
#include "tools/cfatool/pictures/mosaic_writer.h"
#include "tools/cfatool/pictures/picture_reader.h"
#include "tools/cfatool/pictures/png_file.h"
#include "tools/cfatool/subcommands.h"

namespace cfatool {
namespace {

struct MosaicOptions {
    std::string picture;
    std::string output;
    MosaicForm form;
};

void mosaic_of_png(const std::string &path, MosaicForm form, const std::string &output) {
    const RgbPicture picture = read_png(path);
    form.width = picture.width;
    form.height = picture.height;
    form.full = picture.max;
    const int bytes = picture.max > 255 ? 2 : 1;
    const uint8_t *p = picture.samples.data();
    const auto next = [&p, bytes] {
        const int64_t value = bytes == 2 ? p[0] << 8 | p[1] : p[0];
        p += bytes;
        return value;
    };
    MosaicWriter writer(output, form);
    std::vector<Rgb> row(form.width);
    for (int y = 0; y < form.height; ++y) {
        for (Rgb &pixel : row)
            pixel = {next(), next(), next()}; // braces: left to right
        writer.write_row(row);
    }
    writer.commit();
}

void mosaic_of_ppm(const std::string &path, MosaicForm form, const std::string &output) {
    PictureReader picture(path);
    if (picture.info().channels != 3)
        throw file_trouble(path, "is greyscale; an RGB picture is needed");
    form.width = picture.info().width;
    form.height = picture.info().height;
    form.full = picture.info().max;
    MosaicWriter writer(output, form);
    std::vector<uint32_t> samples;
    std::vector<Rgb> row(form.width);
    for (int y = 0; y < form.height; ++y) {
        picture.read_row(samples);
        for (int x = 0; x < form.width; ++x)
            row[x] = {samples[3 * x], samples[3 * x + 1], samples[3 * x + 2]};
        writer.write_row(row);
    }
    picture.finish();
    writer.commit();
}

void run(const MosaicOptions &options) {
    keep_apart(options.picture, options.output);
    write_mosaic(options.picture, options.form, options.output);
}

} // namespace

void write_mosaic(const std::string &picture, const MosaicForm &form, const std::string &output) {
    is_png(picture) ? mosaic_of_png(picture, form, output) : mosaic_of_ppm(picture, form, output);
}

void mosaic_command(Command &command) {
    const auto options = std::make_shared<MosaicOptions>();
    command.word("PICTURE", options->picture, "PNG of 8 or 16 bits, or P6 of 1 to 4 bytes a sample");
    command.number("--bayer", options->form.bayer, 0, 15,
                   "Pattern id, 0 to 15: 0 BGGR, 1 GBRG, 2 GRBG, 3 RGGB", Need::required);
    command.number("--bits", options->form.bits, 2, 31, "Depth of the samples, 2 to 31 (12)");
    command.thousandths("--noise", options->form.noise, 0, 1000000000,
                        "Standard deviation of normal noise, in sample steps (0)");
    command.number("--seed", options->form.seed, 0, INT64_MAX, "Seed of the noise (1)");
    command.text("-o", options->output, "FILE", "The file to write", Need::required);
    command.footer("Example: cfatool mosaic photo.png --bayer 3 --noise 2.5 -o photo.ppm\n"
                   "Values are scaled to the depth, no gamma; greyscale and alpha are refused.");
    command.run(options, run);
}

} // namespace cfatool
