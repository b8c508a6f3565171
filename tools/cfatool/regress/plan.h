// The plan of a regression: a text of one line a case.
//
//     case <tab> picture <tab> registers <tab> id [<tab> key=value key=value ...]
//
// case       names the case and its folder in results and references: a relative path without . and ..
// picture    a P5 file, random:SEED, limits:SEED or large:SEED
// registers  an INI file, random:SEED, limits:SEED, or - for the defaults
// id         the pattern id, 0 to 15, or - for what the registers say
// key=value  over what the registers say
// Paths that are not absolute start at the folder of the plan. Empty lines and lines with # first are
// skipped.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace cfatool {

struct Case {
    std::string name, raw, registers, bayer, settings;
};

/// The parts of a text between separators; one more than there are separators.
std::vector<std::string_view> parts_of(std::string_view text, char separator);

/// The line of a case, with its line feed.
std::string plan_line(const Case &c);

/// The seed of "random:7", if the text begins with this kind. Throws Trouble for what is no seed.
std::optional<uint32_t> drawn_seed(const std::string &text, const std::string &kind);

class Plan {
  public:
    /// Throws Trouble for a file that cannot be read, a malformed line, and two cases of one name.
    explicit Plan(const std::string &path);
    ~Plan();
    Plan(const Plan &) = delete;
    Plan &operator=(const Plan &) = delete;

    size_t size() const { return lines_.size(); }
    /// Paths lead from the current folder.
    Case at(size_t index) const;
    std::string_view name(size_t index) const;
    /// The place of a case in the plan.
    std::optional<size_t> find(std::string_view name) const;

  private:
    void check_line(std::string_view line, size_t number) const;
    void index_names();
    std::string_view line(size_t index) const;

    std::string path_, folder_;
    std::string_view text_;       // the mapped file
    std::vector<uint64_t> lines_; // where they start
    struct Name {
        uint64_t hash;
        uint32_t index;
    };
    std::vector<Name> names_; // by hash
};

} // namespace cfatool
