// PPM files piece by piece: the header, then any number of samples at a time, in large blocks.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

#include "cmodel/common/image_file.h"

namespace cfa {

struct PpmHeader {
    int32_t width;
    int32_t height;
    int32_t max_value; // at least 1
    uint32_t bit_depth;
};

/// Bits that hold 0..max_value - 1: the logarithm to base 2, rounded up. REQUIRES max_value >= 1.
uint32_t ppm_bit_depth(int32_t max_value);

/// Bytes per sample in a file: 1 for up to 8 bits, 2 for up to 16, 3 for up to 24, else 4.
constexpr int ppm_sample_bytes(uint32_t bit_depth) {
    return bit_depth <= 8 ? 1 : bit_depth <= 16 ? 2 : bit_depth <= 24 ? 3 : 4;
}

/// Bytes read or written at a time.
constexpr size_t PPM_BLOCK_BYTES = 256 * 1024;

/// The text before the samples. kind is '5' or '6'.
std::string ppm_header_text(char kind, uint32_t width, uint32_t height, uint32_t bit_depth);

/// Reads a P5 picture. An object holds the lock on its file from construction to close().
class PpmReader {
  public:
    /// Opens the file, waiting for it if need be, and reads its header. Throws Error when the
    /// header is not that of a P5 picture with three numbers that fit an int, the last at least 1.
    explicit PpmReader(const char *path);
    PpmReader(const PpmReader &) = delete;
    PpmReader &operator=(const PpmReader &) = delete;

    const PpmHeader &header() const { return header_; }

    /// Reads the next `count` samples. A byte behind the end of the file counts as -1 in the sum of its
    /// sample: a missing sample of two bytes is -257. A depth of 0 bits reads nothing and gives 0.
    void read(uint32_t *samples, size_t count);

    /// `read` in two steps, for who keeps the file's bytes: reads the next `size` bytes of the samples and
    /// returns how many there were, ...
    size_t read_bytes(uint8_t *bytes, size_t size);
    /// ... and converts `count` samples of which the first `present` bytes were
    /// there. REQUIRES a depth above 0.
    void convert(const uint8_t *bytes, size_t present, uint32_t *samples, size_t count);

    /// Closes. Returns "", or one line that says how many samples were missing.
    std::string close();

  private:
    void read_magic();
    void skip_comments();
    bool read_int(int32_t &number);
    [[noreturn]] void fail(const char *what);

    std::string path_;
    std::unique_ptr<uint8_t[]> block_; // not cleared: a small picture touches little of it
    ImageFile stream_;
    PpmHeader header_{};
    int sample_bytes_ = 0;
    uint64_t missing_ = 0;
};

/// Writes a P5 or P6 picture. An object holds the lock on its file from construction to close().
class PpmWriter {
  public:
    /// Opens the file, waiting for it if need be, and writes the header. kind is '5' or '6'.
    PpmWriter(const char *path, char kind, uint32_t width, uint32_t height, uint32_t bit_depth);
    /// A file that was not closed is emptied: it shall not look finished.
    ~PpmWriter();
    PpmWriter(const PpmWriter &) = delete;
    PpmWriter &operator=(const PpmWriter &) = delete;

    /// Writes the next `count` samples (three per pixel for P6): their low bytes, as many as the depth needs.
    /// A failure is an Error, after which the file is empty.
    void write(const uint32_t *samples, size_t count);

    /// Writes samples that are the file's bytes already.
    void write_bytes(const void *bytes, size_t size);

    /// Writes what is left and closes.
    void close();

  private:
    void flush();

    std::string path_;
    std::unique_ptr<uint8_t[]> block_; // not cleared: a small picture touches little of it
    ImageFile stream_;
    int sample_bytes_;
    size_t filled_ = 0;
};

} // namespace cfa
