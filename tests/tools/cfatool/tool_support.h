// What the tests of cfatool share: runs of the program, pictures as bytes.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "tests/support/support.h"

/// Runs cfatool with these arguments and some more.
inline Outcome cfatool_run(std::vector<std::string> args, const std::vector<std::string> &more = {}) {
    args.insert(args.begin(), std::getenv("CFATOOL"));
    args.insert(args.end(), more.begin(), more.end());
    return run_program(args);
}

inline bool contains(const std::string &text, const std::string &part) {
    return text.find(part) != std::string::npos;
}

/// The top folder of the sources.
inline std::string source_root() {
    const char *data = std::getenv("CFA_TEST_DATA");
    return std::string(data != nullptr ? data : "tests/data") + "/../..";
}

/// Samples as they stand in a file, high byte first.
inline std::string big_endian(const std::vector<uint32_t> &samples, int bytes) {
    std::string text;
    for (const uint32_t sample : samples)
        for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8)
            text += static_cast<char>(sample >> shift);
    return text;
}

/// The samples of a file written by cfatool: four header lines, then the data.
inline std::vector<uint32_t> samples_of(const std::string &file, int bytes) {
    size_t at = 0;
    for (int line = 0; line < 4; ++line)
        at = file.find('\n', at) + 1;
    std::vector<uint32_t> samples((file.size() - at) / bytes);
    for (uint32_t &sample : samples)
        for (int i = 0; i < bytes; ++i)
            sample = sample << 8 | static_cast<uint8_t>(file[at++]);
    return samples;
}
