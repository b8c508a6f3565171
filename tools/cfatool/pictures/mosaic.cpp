// cfatool mosaic: an RGB picture seen through the colour-filter array.
#include <memory>

#include "tools/cfatool/base/integer_math.h"
#include "tools/cfatool/command_line.h"
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

void mosaic_of_png(const MosaicOptions &options) {
    const RgbPicture picture = read_png(options.picture);
    MosaicForm form = options.form;
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
    MosaicWriter writer(options.output, form);
    std::vector<Rgb> row(form.width);
    for (int y = 0; y < form.height; ++y) {
        for (Rgb &pixel : row)
            pixel = {next(), next(), next()}; // braces: left to right
        writer.write_row(row);
    }
    writer.commit();
}

void mosaic_of_ppm(const MosaicOptions &options) {
    PictureReader picture(options.picture);
    if (picture.info().channels != 3)
        throw file_trouble(options.picture, "is greyscale; an RGB picture is needed");
    MosaicForm form = options.form;
    form.width = picture.info().width;
    form.height = picture.info().height;
    form.full = picture.info().max;
    MosaicWriter writer(options.output, form);
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

} // namespace

void add_mosaic(CLI::App &program, int &) {
    const auto options = std::make_shared<MosaicOptions>();
    CLI::App *app = program.add_subcommand("mosaic", "Sample an RGB picture into a mosaic (P5)");
    app->add_option("PICTURE", options->picture, "PNG of 8 or 16 bits, or P6 of 1 to 4 bytes a sample")
        ->type_name("")
        ->required();
    add_number(*app, "--bayer", options->form.bayer, 0, 15,
               "Pattern id, 0 to 15: 0 BGGR, 1 GBRG, 2 GRBG, 3 RGGB")
        ->required();
    add_number(*app, "--bits", options->form.bits, 2, 31, "Depth of the samples, 2 to 31 (12)");
    add_thousandths(*app, "--noise", options->form.noise, 0, 1000000000,
                    "Standard deviation of normal noise, in sample steps (0)");
    add_number(*app, "--seed", options->form.seed, 0, INT64_MAX, "Seed of the noise (1)");
    add_output(*app, options->output, "The file to write");
    app->footer("Example: cfatool mosaic photo.png --bayer 3 --noise 2.5 -o photo.ppm\n"
                "Values are scaled to the depth, no gamma; greyscale and alpha are refused.");
    app->callback(
        [options] { is_png(options->picture) ? mosaic_of_png(*options) : mosaic_of_ppm(*options); });
}

} // namespace cfatool
