// The companion program's picture reader on any bytes: whole rows, or one line of trouble that names the
// file.

#include <algorithm>
#include <vector>

#include "cmodel/common/ppm_stream.h"
#include "tests/fuzz/fuzz_support.h"
#include "tools/cfatool/base/trouble.h"
#include "tools/cfatool/compare/picture_compare.h"
#include "tools/cfatool/pictures/picture_reader.h"

using namespace cfa;

void try_input(const std::string &path, const std::string &bytes) {
    cfatool::PictureInfo info;
    try {
        cfatool::PictureReader reader(path);
        info = reader.info();
        if (std::max<int64_t>(1, info.width) * info.height > FUZZ_PIXELS)
            return;
        std::vector<uint32_t> row;
        for (int y = 0; y < info.height; ++y) {
            reader.read_row(row);
            expect(row.size() == info.row_samples(), "a row of another length");
        }
        reader.finish();
    } catch (const cfatool::Trouble &error) {
        expect(std::string(error.what()).find(path) != std::string::npos,
               "a message without the file's name");
        return;
    }
    // Where the model's reader takes the picture, it sees the same size. It does not take every maximum
    // value, knows comments behind the first line only, and no number on that line.
    if (bytes.starts_with("P5\n") && bytes.find('#') == std::string::npos)
        refused([&] {
            PpmReader reader(path.c_str());
            const PpmHeader header = reader.header();
            reader.close();
            expect(header.width == info.width && header.height == info.height, "the model sees another size");
        });
    if (info.width > 0 && info.height > 0)
        expect(cfatool::compare_pictures(path, path, {}).equal(), "a picture differs from itself");
}
