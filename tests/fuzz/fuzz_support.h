// What the fuzz targets share: inputs as files, refused inputs, limits.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

/// Pictures with more pixels are not tried: large sizes are a matter of other tests.
constexpr int64_t FUZZ_PIXELS = 65536;

/// The bytes as a file in memory. The path is good until the next call with the same slot (0 to 3).
std::string memory_file(int slot, const void *bytes, size_t size);

/// All bytes of a file.
std::string file_bytes(const std::string &path);

/// Runs a function; returns 0, or the status with which it ended the process. Files that it left open then
/// are closed. A status other than 0 or 1 stops the fuzzer.
int run_refusable(const std::function<void()> &function);

/// Stops the fuzzer with a message.
[[noreturn]] void fuzz_failure(const std::string &message);
