// Pyramids of the planes that somebody looks at, made when first asked for.
#pragma once

#include <future>
#include <list>
#include <memory>
#include <mutex>
#include <semaphore>

#include "tools/cfatool/page/page_runs.h"

namespace cfatool {

/// Keeps the pyramids used last, up to a number of bytes. Safe from several threads: a pyramid is made once
/// however many ask for it, and only a few are made at a time.
class PyramidCache {
  public:
    PyramidCache(const PageRuns &runs, size_t most_bytes) : runs_(runs), most_bytes_(most_bytes) {}

    using Shared = std::shared_ptr<const Pyramid>;

    /// Throws Trouble if a file cannot be read. REQUIRES the plane to have this side.
    Shared get(size_t plane, Side side);

  private:
    struct Entry {
        size_t plane;
        Side side;
        std::shared_future<Shared> pyramid;
        size_t bytes; // 0 while it is made
    };

    Shared make(size_t plane, Side side, std::promise<Shared> promise);
    void keep(size_t plane, Side side, size_t bytes);

    const PageRuns &runs_;
    const size_t most_bytes_;
    std::mutex mutex_;
    std::counting_semaphore<> makers_{2};
    std::list<Entry> entries_; // the one used last in front
};

} // namespace cfatool
