// What happens when there is no memory.
#pragma once

namespace cfa {

/// Ends the process: "Unable to allocate memory" on standard error, status 1.
[[noreturn]] void allocation_error();

} // namespace cfa
