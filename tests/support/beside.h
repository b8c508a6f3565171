// What a run leaves beside its outputs: exact planes, debug images.
#pragma once

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <map>
#include <string>
#include <vector>

#include "tests/support/planes.h"

/// What is compared beside the outputs: all planes, some of them, or the files of the debug folder.
enum class Beside { nothing, planes, some_planes, images };

/// By name.
struct Found {
    std::map<std::string, std::vector<int32_t>> planes;
    std::map<std::string, std::string> images;
};

/// Runs one way on the mosaic, with what is to be found asked for.
Found run_beside(const Plane &raw, Beside beside, const std::function<void()> &way);

/// A line for each plane or image that is not as wanted.
void compare_found(std::ostream &out, const Found &want, const Found &got);
