// Reads pictures row by row: P5 and P6 with big-endian samples of 1 to 4 bytes, and PNG.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/cfatool/base/files.h"

namespace cfatool {

/// What the header of a picture says.
struct PictureInfo {
    int width = 0;
    int height = 0;
    int channels = 0; // 1 (P5) or 3 (P6)
    uint32_t max = 0; // maximum value, at least 1; samples may lie above it
    int bytes = 0;    // of a sample
    bool png = false; // the maximum value is that of the file format: 255 or 65535

    size_t row_samples() const { return static_cast<size_t>(width) * channels; }
};

/// An open picture. Header words are set apart by any white space and by comments from # to the end of the
/// line; one white-space character (or a carriage return and line feed) ends the header. A file that another
/// program holds locked, because it is still writing it, is waited for; a missing one never is. A PNG file is
/// read whole. Every member throws Trouble naming the file and the reason.
class PictureReader {
  public:
    explicit PictureReader(const std::string &path);

    const std::string &path() const { return path_; }
    const PictureInfo &info() const { return info_; }

    /// The next row, channels interleaved, as they stand in the file. REQUIRES fewer than `height` calls
    /// before.
    void read_row(std::vector<uint32_t> &row);

    /// The next bytes as they stand in the file, high byte of a sample first.
    void read_bytes(uint8_t *to, size_t size);

    /// Where the samples begin in a regular file that may be read in place; -1 for any other. REQUIRES that
    /// nothing has been read yet.
    int64_t begin() const;

    /// Gives the open stream away. REQUIRES no call behind it.
    Stream release() { return std::move(stream_); }

    /// Refuses bytes behind the last sample. REQUIRES that all rows have been read.
    void finish();

  private:
    void read_header();
    void read_png_samples();
    uint32_t header_number(const char *what);
    void decide_bytes(uint32_t max);
    int64_t bytes_left() const;

    std::string path_;
    Stream stream_;
    PictureInfo info_;
    std::vector<uint8_t> buffer_; // one row as it stands in the file
    std::vector<uint8_t> png_;    // all samples of a PNG file
    size_t bytes_read_ = 0;
};

} // namespace cfatool
