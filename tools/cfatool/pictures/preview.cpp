// cfatool preview: any of our images as an 8-bit PNG, several side by side.
#include <list>
#include <memory>

#include "tools/cfatool/pictures/picture_crop.h"
#include "tools/cfatool/pictures/png_file.h"
#include "tools/cfatool/pictures/preview_colours.h"
#include "tools/cfatool/subcommands.h"

namespace cfatool {
namespace {

constexpr int GAP = 8; // white pixels between two pictures

struct PreviewOptions {
    std::vector<std::string> files;
    std::string output;
    std::string crop;
    int zoom = 1;
    int64_t gain = 1000;
    bool false_colour = false;
};

/// One of the pictures that are shown.
struct Shown {
    PictureReader reader;
    Look look;
    std::vector<uint32_t> samples; // of the current row

    Shown(const std::string &path, bool false_colour) : reader(path), look(look_of_name(path)) {
        if (!false_colour)
            return;
        if (reader.info().channels != 1)
            throw file_trouble(path, "--false-colour needs a picture of one channel");
        look = Look::false_colour;
    }
};

void check_sizes(const std::list<Shown> &shown) {
    const PictureInfo &first = shown.front().reader.info();
    for (const Shown &s : shown) {
        const PictureInfo &info = s.reader.info();
        if (info.width != first.width || info.height != first.height)
            throw file_trouble(s.reader.path(), "differs in size from " + shown.front().reader.path());
    }
    if (first.width == 0 || first.height == 0)
        throw file_trouble(shown.front().reader.path(), "a picture of no pixels has no preview");
}

/// The current rows of all pictures, cropped and zoomed, as RGB bytes.
std::vector<uint8_t> preview_row(const std::list<Shown> &shown, const Crop &crop,
                                 const PreviewOptions &options) {
    std::vector<uint8_t> row;
    for (const Shown &s : shown) {
        if (!row.empty())
            row.insert(row.end(), 3 * GAP, 255);
        const PictureInfo &info = s.reader.info();
        for (int x = crop.x; x < crop.x + crop.width; ++x) {
            const uint32_t *pixel = &s.samples[static_cast<size_t>(x) * info.channels];
            const uint32_t rgb = preview_colour(pixel, info, s.look, options.gain);
            for (int i = 0; i < options.zoom; ++i)
                row.insert(row.end(), {static_cast<uint8_t>(rgb >> 16), static_cast<uint8_t>(rgb >> 8),
                                       static_cast<uint8_t>(rgb)});
        }
    }
    return row;
}

void run(const PreviewOptions &options) {
    std::list<Shown> shown; // a list: readers stay where they are
    for (const std::string &path : options.files)
        shown.emplace_back(path, options.false_colour);
    check_sizes(shown);
    const Crop crop = crop_in(options.crop, shown.front().reader);
    const auto count = static_cast<int64_t>(shown.size());
    const int64_t width = count * crop.width * options.zoom + (count - 1) * GAP;
    const int64_t height = int64_t{crop.height} * options.zoom;
    if (width > 1000000 || height > 1000000)
        throw file_trouble(options.output, "a preview of more than 1000000 pixels a side");

    PngWriter png(options.output, static_cast<int>(width), static_cast<int>(height));
    for (int y = 0; y < shown.front().reader.info().height; ++y) {
        for (Shown &s : shown)
            s.reader.read_row(s.samples);
        if (y < crop.y || y >= crop.y + crop.height)
            continue;
        const std::vector<uint8_t> row = preview_row(shown, crop, options);
        for (int i = 0; i < options.zoom; ++i)
            png.write_row(row);
    }
    for (Shown &s : shown)
        s.reader.finish();
    png.commit();
}

} // namespace

void preview_command(Command &command) {
    const auto options = std::make_shared<PreviewOptions>();
    command.words("FILES", options->files, "P5 or P6 pictures of one size, 1 to 4 bytes a sample");
    command.text("-o", options->output, "FILE", "The PNG file to write", Need::required);
    command.thousandths("--gain", options->gain, 1, 1000000, "Brighten by this factor (1)");
    command.flag("--false-colour", options->false_colour, "Show one channel from black over blue to white");
    command.text("--crop", options->crop, "X,Y,W,H", "Only this part");
    command.number("--zoom", options->zoom, 1, 64, "Show every pixel as N x N (1)");
    command.footer("Examples: cfatool preview out.ppm -o out.png\n"
                   "          cfatool preview before.ppm after.ppm --crop 20,20,100,80 --zoom 4 -o both.png\n"
                   "dbg_img_DirInfo.ppm is shown in three colours, dbg_sg_*_4x_8b.ppm as signed maps.");
    command.run(options, run);
}

} // namespace cfatool
