// libpng behind two small interfaces. Its errors come back by longjmp: the functions that set the jump hold
// nothing that needs a destructor.
#include "tools/cfatool/pictures/png_file.h"

#include <cstdio>
#include <png.h>

#include "tools/cfatool/base/trouble.h"

namespace cfatool {

/// What libpng said last.
struct PngMessage {
    char text[200] = "";
};

namespace {

void on_error(png_structp png, png_const_charp text) {
    auto *message = static_cast<PngMessage *>(png_get_error_ptr(png));
    std::snprintf(message->text, sizeof message->text, "%s", text);
    png_longjmp(png, 1);
}

void on_warning(png_structp, png_const_charp) {}

void on_write(png_structp png, png_bytep data, png_size_t size) {
    try {
        static_cast<std::string *>(png_get_io_ptr(png))->append(reinterpret_cast<const char *>(data), size);
    } catch (const std::exception &) {
        png_error(png, "not enough memory");
    }
}

void on_flush(png_structp) {}

/// What a PNG header says, before any conversion.
struct Header {
    png_uint_32 width = 0;
    png_uint_32 height = 0;
    int depth = 0;
    int colour = 0;
    bool transparent = false;
};

struct Reader {
    PngMessage message;
    png_structp png = nullptr;
    png_infop info = nullptr;
    std::vector<png_bytep> rows;

    Reader() : png(png_create_read_struct(PNG_LIBPNG_VER_STRING, &message, on_error, on_warning)) {
        info = png != nullptr ? png_create_info_struct(png) : nullptr;
    }
    ~Reader() { png_destroy_read_struct(&png, &info, nullptr); }
    Reader(const Reader &) = delete;
    Reader &operator=(const Reader &) = delete;
};

bool read_header(Reader &reader, std::FILE *stream, Header &header) {
    if (setjmp(png_jmpbuf(reader.png)))
        return false;
    png_init_io(reader.png, stream);
    png_read_info(reader.png, reader.info);
    png_get_IHDR(reader.png, reader.info, &header.width, &header.height, &header.depth, &header.colour,
                 nullptr, nullptr, nullptr);
    header.transparent = (header.colour & PNG_COLOR_MASK_ALPHA) != 0 ||
                         png_get_valid(reader.png, reader.info, PNG_INFO_tRNS) != 0;
    if (header.colour == PNG_COLOR_TYPE_PALETTE)
        png_set_palette_to_rgb(reader.png);
    if (header.colour == PNG_COLOR_TYPE_GRAY && header.depth < 8)
        png_set_expand_gray_1_2_4_to_8(reader.png);
    png_set_interlace_handling(reader.png);
    png_read_update_info(reader.png, reader.info);
    return true;
}

bool read_samples(Reader &reader) {
    if (setjmp(png_jmpbuf(reader.png)))
        return false;
    png_read_image(reader.png, reader.rows.data());
    png_read_end(reader.png, nullptr);
    return true;
}

} // namespace

struct PngWriter::State {
    PngMessage message;
    std::string pending; // compressed bytes that are not in the file yet
    png_structp png = nullptr;
    png_infop info = nullptr;
};

namespace {

bool begin_writing(png_structp png, png_infop info, std::string &pending, int width, int height, bool grey) {
    if (setjmp(png_jmpbuf(png)))
        return false;
    png_set_write_fn(png, &pending, on_write, on_flush);
    png_set_IHDR(png, info, static_cast<png_uint_32>(width), static_cast<png_uint_32>(height), 8,
                 grey ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    return true;
}

bool put_row(png_structp png, const uint8_t *row) {
    if (setjmp(png_jmpbuf(png)))
        return false;
    png_write_row(png, row);
    return true;
}

bool end_writing(png_structp png) {
    if (setjmp(png_jmpbuf(png)))
        return false;
    png_write_end(png, nullptr);
    return true;
}

} // namespace

PngWriter::PngWriter(const std::string &path, int width, int height, bool grey)
    : file_(path), grey_(grey), state_(new State) {
    state_->png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &state_->message, on_error, on_warning);
    state_->info = state_->png != nullptr ? png_create_info_struct(state_->png) : nullptr;
    if (state_->info == nullptr ||
        !begin_writing(state_->png, state_->info, state_->pending, width, height, grey))
        fail();
}

PngWriter::~PngWriter() {
    png_destroy_write_struct(&state_->png, &state_->info);
    delete state_;
}

void PngWriter::fail() const {
    throw file_trouble(file_.path(),
                       state_->message.text[0] != '\0' ? state_->message.text : "PNG writer failed");
}

void PngWriter::flush() {
    file_.write(state_->pending);
    state_->pending.clear();
}

void PngWriter::write_row(const std::vector<uint8_t> &row) {
    std::vector<uint8_t> grey;
    for (size_t i = 0; grey_ && i < row.size(); i += 3)
        grey.push_back(row[i]);
    if (!put_row(state_->png, grey_ ? grey.data() : row.data()))
        fail();
    flush();
}

void PngWriter::commit() {
    if (!end_writing(state_->png))
        fail();
    flush();
    file_.commit();
}

bool is_png(const std::string &path) {
    const Stream stream = open_to_read(path);
    uint8_t signature[8] = {};
    return std::fread(signature, 1, sizeof signature, stream.get()) == sizeof signature &&
           png_sig_cmp(signature, 0, sizeof signature) == 0;
}

RgbPicture read_png(const std::string &path, PngColours colours) {
    const Stream stream = open_to_read(path);
    Reader reader;
    Header header;
    if (reader.info == nullptr || !read_header(reader, stream.get(), header))
        throw file_trouble(path, reader.message.text);
    if (header.transparent)
        throw file_trouble(path, "has an alpha channel or a transparent colour; an RGB picture is needed");
    const bool grey = (header.colour & PNG_COLOR_MASK_COLOR) == 0;
    if (grey && colours == PngColours::rgb)
        throw file_trouble(path, "is greyscale; an RGB picture is needed");

    RgbPicture picture;
    picture.width = static_cast<int>(header.width);
    picture.height = static_cast<int>(header.height);
    picture.channels = grey ? 1 : 3;
    picture.max = header.depth == 16 ? 65535 : 255;
    const size_t row_bytes = png_get_rowbytes(reader.png, reader.info);
    picture.samples.resize(row_bytes * header.height);
    for (size_t y = 0; y < header.height; ++y)
        reader.rows.push_back(picture.samples.data() + y * row_bytes);
    if (!read_samples(reader))
        throw file_trouble(path, reader.message.text);
    return picture;
}

} // namespace cfatool
