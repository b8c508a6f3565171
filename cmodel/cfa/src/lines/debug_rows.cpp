#include "cmodel/cfa/src/lines/debug_rows.h"

#include <algorithm>

#include "cmodel/cfa/src/kit/debug_image.h"
#include "cmodel/cfa/src/kit/register_groups.h"
#include "cmodel/cfa/src/lines/kernels/file_words.h"
#include "cmodel/cfa/src/lines/kernels/plane_words.h"
#include "cmodel/common/color_id.h"

namespace cfa {

namespace {

// Small, so that the blocks of all images stay in the cache.
constexpr size_t BLOCK_BYTES = 32 * 1024;

// Columns that are converted at a time.
constexpr int TILE = 1024;
using Tile = int16_t[2][TILE / 2];

template <class Word> void join_tile(SplitRow<int16_t> row, int width, uint8_t *bytes, int first) {
    join_words(row, width, reinterpret_cast<Word *>(bytes) + first);
}
template <class Word> void join_tile(SplitRow<int16_t> red, SplitRow<int16_t> green, SplitRow<int16_t> blue,
                                     int width, uint8_t *bytes, int first) {
    join_words(red, green, blue, width, reinterpret_cast<Word *>(bytes) + 3 * first);
}

SplitRow<int16_t> row_of(const Tile &tile) {
    return {{tile[0], tile[1]}};
}

// Calls act(first column, columns) for the tiles of a row.
template <class Act> void for_tiles(int width, const Act &act) {
    for (int first = 0; first < width; first += TILE)
        act(first, std::min(TILE, width - first));
}

// One tile of a channel as the image shows it.
template <class T>
void show(const SplitRow<T> &row, Shown shown, int16_t limit, int first, int columns, Tile &out) {
    for (int p = 0; p < 2; ++p) {
        const T *const in = row.half[p] + first / 2;
        if (shown == Shown::low_bits)
            low_words(in, out[p], (columns + 1) / 2);
        else
            limited_magnitudes(in, limit, out[p], (columns + 1) / 2);
    }
}

template <class T>
void write_gray(const SplitRow<T> &row, const DebugImage &image, int width, uint8_t *bytes) {
    const auto limit = static_cast<int16_t>((1 << image.bit_depth) - 1);
    for_tiles(width, [&](int first, int columns) {
        Tile tile;
        show(row, image.shown, limit, first, columns, tile);
        if (image.bit_depth <= 8)
            join_tile<uint8_t>(row_of(tile), columns, bytes, first);
        else
            join_tile<uint16_t>(row_of(tile), columns, bytes, first);
    });
}

template <class T>
void write_color(const SplitRow<T> *rgb, const DebugImage &image, int width, uint8_t *bytes) {
    const auto limit = static_cast<int16_t>((1 << image.bit_depth) - 1);
    for_tiles(width, [&](int first, int columns) {
        Tile r, g, b;
        show(rgb[0], image.shown, limit, first, columns, r);
        show(rgb[1], image.shown, limit, first, columns, g);
        show(rgb[2], image.shown, limit, first, columns, b);
        if (image.bit_depth <= 8)
            join_tile<uint8_t>(row_of(r), row_of(g), row_of(b), columns, bytes, first);
        else
            join_tile<uint16_t>(row_of(r), row_of(g), row_of(b), columns, bytes, first);
    });
}

template <class T> void write_signed_map(const SplitRow<T> &row, int width, uint8_t *bytes) {
    constexpr Tile ZEROS = {};
    for_tiles(width, [&](int first, int columns) {
        Tile positive, negative;
        for (int p = 0; p < 2; ++p)
            signed_parts(row.half[p] + first / 2, positive[p], negative[p], (columns + 1) / 2);
        join_tile<uint8_t>(row_of(positive), row_of(negative), row_of(ZEROS), columns, bytes, first);
    });
}

// Samples of three bytes, two at a time, each pair stored as eight bytes of which the next takes the last
// two.
template <class T> void write_deep(const SplitRow<T> &row, int width, uint8_t *bytes) {
    for (int i = 0; i < (width + 1) / 2; ++i) {
        const auto even = static_cast<uint64_t>(row.half[0][i]); // variances: never negative
        const auto odd = static_cast<uint64_t>(row.half[1][i]);
        const uint64_t pair = even << 40 | odd << 16;
        for (int k = 0; k < 8; ++k) // one store
            bytes[6 * i + k] = static_cast<uint8_t>(pair >> (56 - 8 * k));
    }
}

} // namespace

DebugRows::DebugRows(int width, int height)
    : width_(width), pattern_(pattern_id()), zeros_(static_cast<size_t>(width) / 2 + 1),
      images_(planes().size()) {
    for (const PlaneInfo *plane : shown_planes()) {
        const DebugImage &image = plane->image;
        const bool color = image.channel == 3 || image.shown == Shown::signed_map;
        // Kept: a selector beyond the one channel shows the plane shifted left, and zeros behind it.
        const int shift = plane->channels == 1 ? image.channel : 0;
        const int skipped = shift * ppm_sample_bytes(image.bit_depth);
        images_[static_cast<size_t>(plane - planes().data())].emplace(debug_path_of(image.file).c_str(),
                                                                      color ? '6' : '5', width, height,
                                                                      image.bit_depth, BLOCK_BYTES, skipped);
    }
}

RowWriter &DebugRows::image_of(const PlaneInfo &plane) {
    return *images_[static_cast<size_t>(&plane - planes().data())];
}

bool DebugRows::wants(const PlaneInfo &plane) const {
    return images_[static_cast<size_t>(&plane - planes().data())].has_value();
}

void DebugRows::row(const PlaneInfo &plane, int y, const SplitRow<int16_t> *channels) {
    write(plane, y, channels);
}
void DebugRows::row(const PlaneInfo &plane, int y, const SplitRow<int32_t> *channels) {
    write(plane, y, channels);
}

template <class T> void DebugRows::write(const PlaneInfo &plane, int y, const SplitRow<T> *channels) {
    const DebugImage &image = plane.image;
    RowWriter &writer = image_of(plane);
    SplitRow<T> row = channels[plane.channels == 1 ? 0 : image.channel % 3];
    if (image.shown == Shown::at_green) {
        const uint32_t code = CM_GET_COLOR_ID(y, 0, pattern_);
        row.half[code == CODE_GB || code == CODE_GR ? 1 : 0] = reinterpret_cast<const T *>(zeros_.data());
    }
    if (image.shown == Shown::signed_map)
        write_signed_map(row, width_, writer.room());
    else if (image.channel == 3)
        write_color(channels, image, width_, writer.room());
    else if (image.bit_depth > 16)
        write_deep(row, width_, writer.room());
    else
        write_gray(row, image, width_, writer.room());
    writer.done();
}

} // namespace cfa
