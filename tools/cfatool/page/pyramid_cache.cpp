// Making and forgetting pyramids.
#include "tools/cfatool/page/pyramid_cache.h"

#include <algorithm>

namespace cfatool {

PyramidCache::Shared PyramidCache::get(size_t plane, Side side) {
    std::unique_lock lock(mutex_);
    const auto found = std::find_if(entries_.begin(), entries_.end(),
                                    [=](const Entry &e) { return e.plane == plane && e.side == side; });
    if (found != entries_.end()) {
        entries_.splice(entries_.begin(), entries_, found);
        const std::shared_future<Shared> pyramid = found->pyramid;
        lock.unlock();
        return pyramid.get();
    }
    std::promise<Shared> promise;
    entries_.push_front({plane, side, promise.get_future().share(), 0});
    lock.unlock();
    return make(plane, side, std::move(promise));
}

PyramidCache::Shared PyramidCache::make(size_t plane, Side side, std::promise<Shared> promise) {
    makers_.acquire();
    Shared made;
    try {
        made = std::make_shared<Pyramid>(make_pyramid(read_side(runs_.planes()[plane], side)));
        promise.set_value(made);
    } catch (...) {
        promise.set_exception(std::current_exception());
        makers_.release();
        keep(plane, side, 0);
        throw;
    }
    makers_.release();
    keep(plane, side, made->bytes());
    return made;
}

/// Notes what a pyramid takes, and forgets those used longest ago that are too much. One of 0 bytes has
/// failed.
void PyramidCache::keep(size_t plane, Side side, size_t bytes) {
    const std::lock_guard lock(mutex_);
    std::erase_if(entries_, [=](Entry &e) {
        const bool is_it = e.plane == plane && e.side == side;
        if (is_it)
            e.bytes = bytes;
        return is_it && bytes == 0;
    });
    size_t held = 0;
    std::erase_if(entries_, [&](const Entry &e) {
        held += e.bytes;
        return held > most_bytes_ && e.bytes > 0 && &e != &entries_.front();
    });
}

} // namespace cfatool
