// The companion program's picture reader on any bytes: whole rows, or one line of trouble that names the
// file.

#include <algorithm>

#include "cmodel/common/ppm_stream.h"
#include "tests/fuzz/fuzz_support.h"
#include "tools/cfatool/base/trouble.h"
#include "tools/cfatool/compare/picture_compare.h"
#include "tools/cfatool/pictures/picture_reader.h"

using namespace cfa;

namespace {

// Reads all rows; false when the picture is refused or too large.
bool read_all(const std::string &path, cfatool::PictureInfo &info, std::vector<uint32_t> &samples) {
    try {
        cfatool::PictureReader reader(path);
        info = reader.info();
        if (std::max<int64_t>(1, info.width) * info.height > FUZZ_PIXELS)
            return false;
        for (int y = 0; y < info.height; y++) {
            std::vector<uint32_t> row;
            reader.read_row(row);
            if (row.size() != info.row_samples())
                fuzz_failure("a row of another length");
            samples.insert(samples.end(), row.begin(), row.end());
        }
        reader.finish();
        return true;
    } catch (const cfatool::Trouble &error) {
        if (std::string(error.what()).find(path) == std::string::npos)
            fuzz_failure("a message without the file's name");
        return false;
    }
}

// Where the model's reader takes the picture, it sees the same size. It does not take every maximum value.
void check_size(const std::string &path, const cfatool::PictureInfo &info) {
    PpmHeader header{};
    const int status = run_refusable([&] {
        PpmReader reader(path.c_str());
        header = reader.header();
        reader.close();
    });
    if (status == 0 && (header.width != info.width || header.height != info.height))
        fuzz_failure("the model's reader sees another size");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const std::string bytes(reinterpret_cast<const char *>(data), size);
    const std::string path = memory_file(0, data, size);
    cfatool::PictureInfo info;
    std::vector<uint32_t> samples;
    if (!read_all(path, info, samples))
        return 0;
    // The model's reader knows comments behind the first line only, and no number on that line.
    if (bytes.compare(0, 3, "P5\n") == 0 && bytes.find('#') == std::string::npos)
        check_size(path, info);
    if (!samples.empty() && !cfatool::compare_pictures(path, path, {}).equal())
        fuzz_failure("a picture differs from itself");
    return 0;
}
