#include "tools/cfatool/regress/plan.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fmt/core.h>
#include <nlohmann/json.hpp>
#include <sys/mman.h>
#include <sys/stat.h>

#include "tools/cfatool/base/files.h"
#include "tools/cfatool/base/json_text.h"
#include "tools/cfatool/base/trouble.h"
#include "tools/cfatool/regress/sums.h"

namespace cfatool {
namespace {

constexpr size_t FIELDS = 4, MOST_FIELDS = 5;

bool is_drawn(std::string_view text) {
    return text.starts_with("random:") || text.starts_with("limits:") || text.starts_with("large:");
}

bool is_case_name(std::string_view name) {
    return std::ranges::none_of(parts_of(name, '/'), [](std::string_view part) {
        return part.empty() || part == "." || part == "..";
    });
}

/// Results, JUnit file and page are UTF-8.
bool is_utf8(std::string_view text) {
    if (std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; }))
        return true;
    return json_text(Json(std::string(text))).find("\xEF\xBF\xBD") ==
           std::string::npos; // what replaces bytes
}

bool is_id(std::string_view text) {
    int id = -1;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), id);
    return text == "-" || (error == std::errc() && end == text.data() + text.size() && 0 <= id && id <= 15);
}

uint64_t hash_of(std::string_view name) {
    return sum_of_text(name).low;
}

} // namespace

std::vector<std::string_view> parts_of(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    for (size_t start = 0; start <= text.size();) {
        const size_t end = std::min(text.find(separator, start), text.size());
        parts.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return parts;
}

std::string plan_line(const Case &c) {
    return c.name + "\t" + c.raw + "\t" + c.registers + "\t" + c.bayer +
           (c.settings.empty() ? "" : "\t" + c.settings) + "\n";
}

std::optional<uint32_t> drawn_seed(const std::string &text, const std::string &kind) {
    if (text.compare(0, kind.size() + 1, kind + ":") != 0)
        return std::nullopt;
    uint32_t seed = 0;
    const char *const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data() + kind.size() + 1, end, seed);
    if (stop != end || error != std::errc())
        throw Trouble(text + ": no seed of 0 to 4294967295");
    return seed;
}

Plan::Plan(const std::string &path)
    : path_(path), folder_(std::filesystem::path(path).parent_path().string()) {
    const Stream stream = open_to_read(path);
    struct stat status = {};
    if (fstat(fileno(stream.get()), &status) != 0)
        throw errno_trouble(path);
    if (!S_ISREG(status.st_mode))
        throw file_trouble(path, "is no file");
    const size_t size = static_cast<size_t>(status.st_size);
    if (size > 0) {
        void *const text = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, fileno(stream.get()), 0);
        if (text == MAP_FAILED)
            throw errno_trouble(path);
        text_ = {static_cast<const char *>(text), size};
    }
    size_t number = 0;
    for (size_t start = 0; start < size; ++number) {
        const size_t end = std::min(text_.find('\n', start), size);
        if (end > start && text_[start] != '#') {
            check_line(text_.substr(start, end - start), number + 1);
            lines_.push_back(start);
        }
        start = end + 1;
    }
    index_names();
}

Plan::~Plan() {
    if (!text_.empty())
        munmap(const_cast<char *>(text_.data()), text_.size());
}

void Plan::check_line(std::string_view line, size_t number) const {
    const std::vector<std::string_view> fields = parts_of(line, '\t');
    const auto trouble = [&](const std::string &what) {
        return Trouble(fmt::format("{}:{}: {}", path_, number, what));
    };
    if (fields.size() < FIELDS || fields.size() > MOST_FIELDS)
        throw trouble("not four or five fields with tabs between");
    if (!is_case_name(fields[0]))
        throw trouble(fmt::format("'{}' is no relative path without . and ..", fields[0]));
    if (!is_utf8(fields[0]))
        throw trouble("the name of the case is no UTF-8 text");
    if (!is_id(fields[3]))
        throw trouble(fmt::format("'{}' is no pattern id of 0 to 15, nor -", fields[3]));
    if (fields[3] == "-" && fields[2] == "-")
        throw trouble("nothing tells the pattern id");
}

void Plan::index_names() {
    for (size_t i = 0; i < size(); ++i)
        names_.push_back({hash_of(name(i)), static_cast<uint32_t>(i)});
    std::sort(names_.begin(), names_.end(), [](const Name &a, const Name &b) { return a.hash < b.hash; });
    for (size_t i = 1; i < names_.size(); ++i)
        for (size_t k = i; k-- > 0 && names_[k].hash == names_[i].hash;)
            if (name(names_[k].index) == name(names_[i].index))
                throw file_trouble(path_, fmt::format("two cases are called {}", name(names_[i].index)));
}

std::string_view Plan::line(size_t index) const {
    const size_t start = lines_[index];
    return text_.substr(start, std::min(text_.find('\n', start), text_.size()) - start);
}

std::string_view Plan::name(size_t index) const {
    const std::string_view text = text_.substr(lines_[index]);
    return text.substr(0, text.find('\t'));
}

Case Plan::at(size_t index) const {
    const std::vector<std::string_view> fields = parts_of(line(index), '\t');
    const auto path = [this](std::string_view text) {
        const bool from_folder = !folder_.empty() && text != "-" && !is_drawn(text) && !text.starts_with('/');
        return (from_folder ? folder_ + "/" : std::string()) + std::string(text);
    };
    return {std::string(fields[0]), path(fields[1]), path(fields[2]), std::string(fields[3]),
            fields.size() == MOST_FIELDS ? std::string(fields[4]) : ""};
}

std::optional<size_t> Plan::find(std::string_view wanted) const {
    const uint64_t hash = hash_of(wanted);
    auto found = std::lower_bound(names_.begin(), names_.end(), hash,
                                  [](const Name &entry, uint64_t value) { return entry.hash < value; });
    for (; found != names_.end() && found->hash == hash; ++found)
        if (name(found->index) == wanted)
            return found->index;
    return std::nullopt;
}

} // namespace cfatool
