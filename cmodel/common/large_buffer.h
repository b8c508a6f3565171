// Memory for what is as large as a picture.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

namespace cfa {

struct LargeBufferDeleter {
    void operator()(uint8_t *bytes) const { std::free(bytes); }
};

/// Owned bytes, aligned for any type.
using LargeBuffer = std::unique_ptr<uint8_t[], LargeBufferDeleter>;

/// Makes a buffer whose bytes have no value yet. Where the system offers huge pages it lies on them: the
/// first write to it costs a sixth. Throws std::bad_alloc.
LargeBuffer make_large_buffer(size_t size);

} // namespace cfa
