#include "cmodel/cfa/src/lines/row_writer.h"

#include <algorithm>

namespace cfa {

namespace {

constexpr size_t SPARE_BYTES = 5;

int rows_of(size_t block_bytes, size_t row_bytes, int height) {
    return static_cast<int>(std::clamp<size_t>(block_bytes / row_bytes, 1, static_cast<size_t>(height)));
}

} // namespace

RowWriter::RowWriter(const char *path, char kind, int width, int height, uint32_t bit_depth,
                     size_t block_bytes, size_t skipped)
    : writer_(path, kind, static_cast<uint32_t>(width), static_cast<uint32_t>(height), bit_depth),
      sample_bytes_(ppm_sample_bytes(bit_depth)),
      row_bytes_(static_cast<size_t>(width) * (kind == '6' ? 3 : 1) * static_cast<size_t>(sample_bytes_)),
      block_rows_(rows_of(block_bytes, row_bytes_, height)),
      block_(make_large_buffer(static_cast<size_t>(block_rows_) * row_bytes_ + SPARE_BYTES)), zeros_(skipped),
      skipped_(skipped), left_(height) {}

void RowWriter::done() {
    ++rows_;
    --left_;
    if (rows_ < block_rows_ && left_ > 0)
        return;
    writer_.write_bytes(block_.get() + skipped_, static_cast<size_t>(rows_) * row_bytes_ - skipped_);
    skipped_ = 0;
    rows_ = 0;
    if (left_ > 0)
        return;
    std::fill_n(block_.get(), zeros_, uint8_t{0});
    if (zeros_ > 0)
        writer_.write_bytes(block_.get(), zeros_);
    writer_.close();
}

} // namespace cfa
