// Samples of any plane or image file, by rows and windows.
#pragma once

#include <string>
#include <vector>

#include "tools/cfatool/base/files.h"
#include "tools/cfatool/runs/npy.h"

namespace cfatool {

/// An open file of samples: NumPy, P5, P6 or PNG, told apart by its first bytes. A regular file (but for PNG)
/// is read where it is asked for, anything else whole when it is opened. Every member throws Trouble naming
/// the file and the reason; a file that is cut short is refused when it is opened. Reading is safe from
/// several threads at once.
class PlaneFile {
  public:
    explicit PlaneFile(const std::string &path);

    const std::string &path() const { return path_; }
    const PlaneForm &form() const { return form_; }

    /// `rows` rows from y on as they lie in the file, row_bytes() each.
    void read_bytes(int y, int rows, uint8_t *to) const;

    /// A part of the plane, channels interleaved. Unsigned samples beyond int32 are their low 32 bits;
    /// numbers of 8 bytes that fit neither are refused. REQUIRES the part to lie in the plane.
    std::vector<int32_t> read(int x, int y, int width, int height) const;
    std::vector<int32_t> read() const { return read(0, 0, form_.width, form_.height); }

    /// `count` samples of these bytes.
    void decode(const uint8_t *from, size_t count, int32_t *to) const;

  private:
    std::string path_;
    PlaneForm form_;
    Stream stream_;
    std::vector<uint8_t> memory_; // all samples, where the file is not read in place
};

} // namespace cfatool
