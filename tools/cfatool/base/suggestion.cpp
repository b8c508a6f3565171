#include "tools/cfatool/base/suggestion.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

namespace cfatool {
namespace {

/// Insertions, deletions and replacements that turn a into b.
size_t edit_distance(const std::string &a, const std::string &b) {
    std::vector<size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), size_t{0});
    for (size_t i = 1; i <= a.size(); ++i) {
        size_t diagonal = row[0];
        row[0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            const size_t replaced = diagonal + (a[i - 1] != b[j - 1]);
            diagonal = row[j];
            row[j] = std::min({replaced, row[j] + 1, row[j - 1] + 1});
        }
    }
    return row[b.size()];
}

} // namespace

std::string nearest(const std::string &name, const std::vector<std::string> &candidates) {
    for (const std::string &candidate : candidates) // its end alone: a register without its prefix
        if (name.size() >= 3 && candidate.ends_with("_" + name))
            return candidate;
    std::string best;
    size_t best_distance = std::max<size_t>(2, name.size() / 2) + 1; // farther ones help nobody
    for (const std::string &candidate : candidates) {
        const size_t distance = edit_distance(name, candidate);
        if (distance < best_distance) {
            best_distance = distance;
            best = candidate;
        }
    }
    return best;
}

std::string suggestion(const std::string &name, const std::vector<std::string> &candidates) {
    const std::string near = nearest(name, candidates);
    return near.empty() ? "" : "; did you mean '" + near + "'?";
}

} // namespace cfatool
