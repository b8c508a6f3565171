#include "tests/tools/cfatool/room.h"

#include <filesystem>
#include <regex>

std::set<std::string> matches_in(const std::string &text, const std::string &expression) {
    const std::regex regex(expression);
    return {std::sregex_token_iterator(text.begin(), text.end(), regex, 1), {}};
}

void Room::put(const std::string &name, const std::string &bytes) const {
    std::filesystem::create_directories(std::filesystem::path(*this / name).parent_path());
    write_file(*this / name, bytes);
}
