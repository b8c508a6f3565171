// Writing JSON, compiled once.
#include "tools/cfatool/base/json_text.h"

#include <nlohmann/json.hpp>

namespace cfatool {

std::string json_text(const Json &value) {
    return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

} // namespace cfatool
