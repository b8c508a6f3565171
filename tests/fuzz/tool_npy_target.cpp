// NumPy files of any bytes: samples as the bytes say, or one line of trouble that names the file.

#include <algorithm>

#include "tests/fuzz/fuzz_support.h"
#include "tests/support/support.h"
#include "tools/cfatool/base/trouble.h"
#include "tools/cfatool/runs/plane_file.h"

namespace {

/// The low 32 bits of the sample that begins at a byte.
int32_t sample_at(const std::string &bytes, size_t at, const cfatool::PlaneForm &form) {
    uint64_t value = 0;
    for (int i = 0; i < form.bytes; ++i) {
        const int place = form.big_endian ? i : form.bytes - 1 - i;
        value = value << 8 | static_cast<uint8_t>(bytes[at + static_cast<size_t>(place)]);
    }
    const int unused = 64 - 8 * form.bytes;
    return static_cast<int32_t>(form.is_signed ? static_cast<int64_t>(value << unused) >> unused
                                               : static_cast<int64_t>(value));
}

} // namespace

void try_input(const std::string &, const std::string &bytes) {
    static const TempFolder folder;
    const std::string path = folder / "plane.npy"; // the name makes it one
    write_file(path, bytes);
    try {
        const cfatool::PlaneFile file(path);
        const cfatool::PlaneForm &form = file.form();
        const auto begin = static_cast<size_t>(form.begin);
        const size_t rows = static_cast<size_t>(form.height);
        expect(form.row_bytes() == 0 || rows == (bytes.size() - begin) / form.row_bytes(), "another size");
        const std::vector<int32_t> samples = file.read();
        expect(samples.size() == form.row_samples() * rows, "another number of samples");
        for (size_t i = 0; i < samples.size(); ++i)
            expect(samples[i] == sample_at(bytes, begin + i * static_cast<size_t>(form.bytes), form),
                   "another sample");
    } catch (const cfatool::Trouble &error) {
        expect(std::string(error.what()).find(path) != std::string::npos,
               "a message without the file's name");
    }
}
