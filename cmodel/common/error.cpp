#include "cmodel/common/error.h"

#include <cstdio>
#include <cstdlib>
#include <new>

namespace cfa {

void allocation_error() {
    throw std::bad_alloc();
}

void print_error(const std::exception &error) {
    const bool no_memory = dynamic_cast<const std::bad_alloc *>(&error) != nullptr;
    std::fprintf(stderr, "%s\n", no_memory ? "Unable to allocate memory" : error.what());
}

void end_process(const std::exception &error) {
    print_error(error);
    std::exit(ERROR_STATUS);
}

} // namespace cfa
