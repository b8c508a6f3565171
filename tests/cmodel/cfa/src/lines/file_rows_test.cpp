#include "cmodel/cfa/src/lines/file_rows.h"

#include <doctest/doctest.h>

#include "tests/support/support.h"

using namespace cfa;

TEST_CASE("a word store takes samples of 0..4095 alone, in every block of a file") {
    const TempFolder folder;
    const std::string path = folder / "raw", head = "P5\n400 400\n65535\n"; // 320,000 bytes: two blocks
    for (const size_t at : {0, 131071, 131072, 159998, 159999})
        for (const int high : {0x0f, 0x10, 0x80}) {
            INFO("sample ", at, ": ", high, " * 256");
            std::string words(320000, '\x01');
            words[2 * at] = static_cast<char>(high);
            write_file(path, head + words);
            PpmReader reader(path.c_str());
            CHECK(WordStore(reader.header()).read(reader) == (high == 0x0f));
            reader.close(); // the next one waits for its lock
        }
    write_file(path, head + std::string(319999, '\x01')); // a byte is missing
    PpmReader reader(path.c_str());
    CHECK_FALSE(WordStore(reader.header()).read(reader));
    reader.close();
}
