#include <doctest/doctest.h>

#include "cmodel/common/ini_file.h"
#include "tests/tools/cfatool/tool_support.h"
#include "tools/cfatool/base/integer_math.h"
#include "tools/cfatool/registers/ini_text.h"

using namespace cfatool;

namespace {

using Settings = std::vector<std::string>; // "section|key|value"

int collect(void *settings, const char *section, const char *key, const char *value) {
    static_cast<Settings *>(settings)->push_back(std::string(section) + "|" + key + "|" + value);
    return 1;
}

/// Random lines that provoke the parser: every special character, blanks everywhere, names over 49
/// characters.
std::string random_text(uint64_t seed) {
    // clang-format off
    const std::vector<std::string> pieces = {
        "[", "]", "=", ":", ";", "#", " ", "\t", "\r", "\v", "a", "key", "12", " ;", "\n", "\n", "[cfa]",
        " = ", "\n  ", "\n[", "\xEF\xBB\xBF", std::string(55, 'n'), std::string("\0", 1)};
    // clang-format on
    std::string text;
    for (uint64_t i = 0; i < 60; ++i)
        text += pieces[random_bits(seed, i) % pieces.size()];
    return text;
}

} // namespace

TEST_CASE("lines are read as the INI parser reads them") {
    const TempFolder folder;
    const std::string path = folder / "t.ini";
    int settings_seen = 0;
    for (uint64_t seed = 0; seed < 2000; ++seed) {
        const std::string text = random_text(seed);
        // The parser cuts what is longer than its line; the loader then shortens keys. Not compared here.
        size_t longest = 0, begin = 0;
        for (size_t end; begin < text.size(); begin = end + 1) {
            end = std::min(text.find('\n', begin), text.size());
            longest = std::max(longest, end - begin);
        }
        if (longest > 198)
            continue;
        write_file(path, text);
        Settings want, got;
        cfa::ini_load_file(path.c_str(), collect, &want);
        const std::vector<IniLine> lines = read_ini_text(text);
        for (const IniLine &line : lines)
            if (line.kind == IniLine::Kind::setting || line.kind == IniLine::Kind::continuation) {
                got.push_back(line.section + "|" + line.name.c_str() + "|" + line.value);
                CHECK(line.text.compare(line.value_at, line.value.size(), line.value) == 0);
            }
        CHECK_MESSAGE(got == want, "seed ", seed);
        CHECK(join_ini_text(lines) == text);
        settings_seen += static_cast<int>(want.size());
    }
    CHECK(settings_seen > 1000);
}
