#include "cmodel/common/large_buffer.h"

#include <limits>

#include <sys/mman.h>

#include "cmodel/common/error.h"

namespace cfa {

namespace {

constexpr size_t HUGE_PAGE = size_t{2} << 20;
constexpr size_t CACHE_LINE = 64;

} // namespace

LargeBuffer make_large_buffer(size_t size) {
    const size_t unit = size < HUGE_PAGE ? CACHE_LINE : HUGE_PAGE;
    if (size > std::numeric_limits<size_t>::max() - unit)
        allocation_error();
    const size_t rounded = (size + unit - 1) / unit * unit;
    auto *const bytes = static_cast<uint8_t *>(std::aligned_alloc(unit, rounded > 0 ? rounded : unit));
    if (bytes == nullptr)
        allocation_error();
    if (unit == HUGE_PAGE)
        madvise(bytes, rounded, MADV_HUGEPAGE); // advice only: small pages do as well
    return LargeBuffer(bytes);
}

} // namespace cfa
