// The picture reader on any bytes: all at once, by the row and as words of the file the samples are the same.

#include <algorithm>
#include <vector>

#include "cmodel/cfa/src/lines/file_rows.h"
#include "tests/fuzz/fuzz_support.h"

using namespace cfa;

void try_input(const std::string &path, const std::string &) {
    std::vector<uint32_t> want;
    refused([&] {
        PpmReader reader(path.c_str());
        const PpmHeader &header = reader.header();
        if (header.width > 0 && header.height > 0 && int64_t{header.width} * header.height <= FUZZ_PIXELS)
            want.resize(static_cast<size_t>(header.width) * static_cast<size_t>(header.height));
        reader.read(want.data(), want.size());
    });
    if (want.empty())
        return;
    PpmHeader header{};
    {
        PpmReader rows(path.c_str());
        header = rows.header();
        std::vector<uint32_t> row(static_cast<size_t>(header.width));
        for (size_t at = 0; at < want.size(); at += row.size()) {
            rows.read(row.data(), row.size());
            expect(std::equal(row.begin(), row.end(), &want[at]), "rows: other samples");
        }
        rows.close();
    }
    if (header.bit_depth < 1 || header.bit_depth > 16)
        return;
    PpmReader reader(path.c_str());
    WordStore store(header);
    store.read(reader);
    expect(std::equal(want.begin(), want.end(), store.frame(reader)->data), "words: other samples");
}
