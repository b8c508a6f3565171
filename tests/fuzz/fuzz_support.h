// What the fuzz targets share. Each of them judges one input; limits and files are here.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

/// Pictures with more pixels are not tried: large sizes are a matter of other tests.
constexpr int64_t FUZZ_PIXELS = 65536;

/// Of each target: judges an input, given as the path of a file in memory and as its bytes.
void try_input(const std::string &path, const std::string &bytes);

/// The bytes as a file in memory. The path is good until the next call with the same slot (0 or 1;
/// try_input's is 0).
std::string memory_file(int slot, const std::string &bytes);

/// Runs a function; returns whether it threw an Error.
bool refused(const std::function<void()> &function);

/// Stops the fuzzer with a message unless this holds.
void expect(bool holds, const std::string &message);
