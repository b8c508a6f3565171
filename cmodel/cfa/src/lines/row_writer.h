// A picture file whose rows are made in place, a block of them at a time.
#pragma once

#include "cmodel/common/large_buffer.h"
#include "cmodel/common/ppm_stream.h"

namespace cfa {

class RowWriter {
  public:
    /// Opens the file. Blocks hold as many rows as fit into `block_bytes`, one at least. The file lacks the
    /// first `skipped` bytes of the rows, and has as many zeros behind the last.
    RowWriter(const char *path, char kind, int width, int height, uint32_t bit_depth, size_t block_bytes,
              size_t skipped = 0);

    /// Room for the next row: the bytes of its samples, and five more that do not count.
    uint8_t *room() { return block_.get() + static_cast<size_t>(rows_) * row_bytes_; }

    /// The row is in its room. The last one closes the file.
    void done();

    int sample_bytes() const { return sample_bytes_; }

  private:
    PpmWriter writer_;
    const int sample_bytes_;
    const size_t row_bytes_;
    const int block_rows_;
    const LargeBuffer block_;
    const size_t zeros_; // behind the last row
    size_t skipped_;     // of the block
    int rows_ = 0;       // in the block
    int left_;           // to come
};

} // namespace cfa
