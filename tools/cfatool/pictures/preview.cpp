// cfatool preview: any of our images as an 8-bit PNG, several side by side.
#include <algorithm>
#include <cctype>
#include <fmt/core.h>
#include <list>
#include <memory>
#include <optional>

#include "tools/cfatool/base/font.h"
#include "tools/cfatool/pictures/picture_crop.h"
#include "tools/cfatool/pictures/png_file.h"
#include "tools/cfatool/pictures/preview_colours.h"
#include "tools/cfatool/subcommands.h"

namespace cfatool {
namespace {

constexpr int GAP = 8;           // white pixels between two pictures
constexpr int LETTER = 2;        // pixels a dot of a label
constexpr int LABEL_HEIGHT = 20; // of the strip above a picture

struct PreviewOptions {
    std::vector<std::string> files;
    std::string output;
    std::string crop;
    int zoom = 1;
    int64_t gain = 1000;
    bool false_colour = false;
    std::vector<std::string> labels; // none, or one a picture
    size_t columns = 0;              // pictures in a row of the sheet; 0: all
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

using Row = std::vector<uint8_t>;   // of the sheet, RGB
using Group = std::vector<Shown *>; // pictures that stand side by side

/// The current rows of a group, cropped and zoomed.
Row preview_row(const Group &group, const Crop &crop, const PreviewOptions &options) {
    Row row;
    for (const Shown *s : group) {
        if (!row.empty())
            row.insert(row.end(), 3 * GAP, 255);
        const PictureInfo &info = s->reader.info();
        for (int x = crop.x; x < crop.x + crop.width; ++x) {
            const uint32_t *pixel = &s->samples[static_cast<size_t>(x) * info.channels];
            const uint32_t rgb = preview_colour(pixel, info, s->look, options.gain);
            for (int i = 0; i < options.zoom; ++i)
                row.insert(row.end(), {static_cast<uint8_t>(rgb >> 16), static_cast<uint8_t>(rgb >> 8),
                                       static_cast<uint8_t>(rgb)});
        }
    }
    return row;
}

/// One row of the strip of labels from picture `first` on.
Row label_row(const PreviewOptions &options, size_t first, size_t count, int picture_width, int y) {
    Row row;
    for (size_t i = first; i < first + count; ++i) {
        std::string text = options.labels[i];
        std::transform(text.begin(), text.end(), text.begin(),
                       [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
        for (int x = 0; x < picture_width + GAP; ++x) {
            const int column = x / LETTER, line = y / LETTER;
            const bool ink = x < picture_width && column < 6 * static_cast<int>(text.size()) &&
                             font_dot(text.c_str(), column, line);
            row.insert(row.end(), 3, ink ? 0 : 255);
        }
    }
    row.resize(row.size() - 3 * GAP);
    return row;
}

/// The sheet row by row; rows of pictures that are not full end in white.
class Sheet {
  public:
    Sheet(const PreviewOptions &options, size_t count, const Crop &crop, bool grey)
        : columns_(options.columns == 0 ? count : std::min(options.columns, count)) {
        const auto across = static_cast<int64_t>(columns_);
        const auto down = static_cast<int64_t>((count + columns_ - 1) / columns_);
        const int64_t picture =
            int64_t{crop.height} * options.zoom + (options.labels.empty() ? 0 : LABEL_HEIGHT);
        const int64_t width = across * crop.width * options.zoom + (across - 1) * GAP;
        const int64_t height = down * picture + (down - 1) * GAP;
        if (width > 1000000 || height > 1000000)
            throw file_trouble(options.output, "a preview of more than 1000000 pixels a side");
        width_ = static_cast<size_t>(width);
        png_.emplace(options.output, static_cast<int>(width), static_cast<int>(height), grey);
    }
    size_t columns() const { return columns_; }
    void add(Row row) {
        row.resize(3 * width_, 255);
        png_->write_row(row);
    }
    void commit() { png_->commit(); }

  private:
    size_t columns_, width_;
    std::optional<PngWriter> png_;
};

void add_group(Sheet &sheet, const Group &group, size_t first, const Crop &crop,
               const PreviewOptions &options) {
    for (int y = 0; y < GAP && first > 0; ++y)
        sheet.add({});
    for (int y = 0; y < LABEL_HEIGHT && !options.labels.empty(); ++y)
        sheet.add(label_row(options, first, group.size(), crop.width * options.zoom, y));
    for (int y = 0; y < group.front()->reader.info().height; ++y) {
        for (Shown *s : group)
            s->reader.read_row(s->samples);
        if (y < crop.y || y >= crop.y + crop.height)
            continue;
        const Row row = preview_row(group, crop, options);
        for (int i = 0; i < options.zoom; ++i)
            sheet.add(row);
    }
    for (Shown *s : group)
        s->reader.finish();
}

void run(const PreviewOptions &options) {
    if (!options.labels.empty() && options.labels.size() != options.files.size())
        throw UsageTrouble(
            fmt::format("{} labels for {} pictures", options.labels.size(), options.files.size()));
    for (const std::string &path : options.files)
        keep_apart(path, options.output);
    std::list<Shown> shown; // a list: readers stay where they are
    for (const std::string &path : options.files)
        shown.emplace_back(path, options.false_colour);
    check_sizes(shown);
    const Crop crop = crop_in(options.crop, shown.front().reader);
    const bool grey = std::all_of(shown.begin(), shown.end(), [](const Shown &s) {
        return s.look == Look::plain && s.reader.info().channels == 1;
    });
    Sheet sheet(options, shown.size(), crop, grey);
    auto next = shown.begin();
    for (size_t first = 0; first < shown.size(); first += sheet.columns()) {
        Group group;
        for (; next != shown.end() && group.size() < sheet.columns(); ++next)
            group.push_back(&*next);
        add_group(sheet, group, first, crop, options);
    }
    sheet.commit();
}

} // namespace

void preview_command(Command &command) {
    const auto options = std::make_shared<PreviewOptions>();
    command.words("FILES", options->files, "P5, P6 or PNG pictures of one size, 1 to 4 bytes a sample");
    command.text("-o", options->output, "FILE", "The PNG file to write", Need::required);
    command.thousandths("--gain", options->gain, 1, 1000000, "Brighten by this factor (1)");
    command.flag("--false-colour", options->false_colour, "Show one channel from black over blue to white");
    command.text("--crop", options->crop, "X,Y,W,H", "Only this part");
    command.number("--zoom", options->zoom, 1, 64, "Show every pixel as N x N (1)");
    command.texts("--label", options->labels, "TEXT", "Capitals and digits above a picture; once for each");
    command.number("--columns", options->columns, 1, 1000, "Pictures in a row of the sheet (all)");
    command.footer("Examples: cfatool preview out.ppm -o out.png\n"
                   "          cfatool preview before.ppm after.ppm --crop 20,20,100,80 --zoom 4 \\\n"
                   "              --label BEFORE --label AFTER -o both.png\n"
                   "dbg_img_DirInfo.ppm is shown in three colours, dbg_sg_*_4x_8b.ppm as signed maps.");
    command.run(options, run);
}

} // namespace cfatool
