// What the tests of cfatool share: a folder in which command lines run, and pictures as bytes.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <doctest/doctest.h>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "tests/support/support.h"

using Samples = std::vector<uint32_t>;

/// What the first group of a regular expression matches in a text.
std::set<std::string> matches_in(const std::string &text, const std::string &expression);

/// A picture: its header, whose last number is the maximum value, then samples, high byte first.
inline std::string picture(const std::string &header, const Samples &samples) {
    const uint64_t max = std::stoull(header.substr(header.find_last_of(" \n") + 1));
    std::string text = header + "\n";
    for (const uint32_t sample : samples)
        for (int shift = max > 0xFFFFFF ? 24 : max > 0xFFFF ? 16 : max > 0xFF ? 8 : 0; shift >= 0; shift -= 8)
            text += static_cast<char>(sample >> shift);
    return text;
}

/// A command line, its status, and a part of what it prints: standard error at status 2, else standard
/// output.
using Line = std::tuple<std::string, int, std::string>;

/// A scratch folder. Files are named from there, in command lines too.
struct Room : TempFolder {
    /// Runs cfatool with these words, as a shell splits them; `before` stands in front.
    Outcome run(const std::string &words, const std::string &before = "") const {
        return run_program(
            {"/bin/sh", "-c", "cd '" + path + "' && " + before + " exec \"$CFATOOL\" " + words});
    }

    /// Runs each line; trouble is one line on standard error and nothing else.
    void check(const std::vector<Line> &lines) const {
        for (const auto &[words, status, text] : lines) {
            const Outcome outcome = run(words);
            const std::string shown = words + "\n" + outcome.out + outcome.err;
            INFO(shown);
            CHECK(outcome.status == status);
            CHECK(contains(status == 2 ? outcome.err : outcome.out, text));
            CHECK((status == 2 ? outcome.out : outcome.err).empty());
            CHECK(std::count(outcome.err.begin(), outcome.err.end(), '\n') == (status == 2));
        }
    }

    /// Writes a file, in a new folder if need be.
    void put(const std::string &name, const std::string &bytes) const;
    std::string get(const std::string &name) const { return read_file(*this / name); }
    /// The top folder of the sources.
    static std::string source_root() { return std::string(std::getenv("CFA_TEST_DATA")) + "/../.."; }
    static bool contains(const std::string &text, const std::string &part) {
        return text.find(part) != std::string::npos;
    }
    std::string list() const { return run_program({"/bin/ls", "-A", path}).out; }
};
