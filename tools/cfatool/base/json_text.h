// JSON as the program prints it.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace cfatool {

/// JSON whose members keep their order.
using Json = nlohmann::ordered_json;

/// A value as one line of text, in UTF-8 whatever file names are made of.
std::string json_text(const Json &value);

} // namespace cfatool
