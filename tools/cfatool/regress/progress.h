// How far a run is: a bar on a terminal, elsewhere a plain line every ten seconds.
#pragma once

#include <chrono>
#include <cstdint>

#include "tools/cfatool/base/progress.h"

namespace cfatool {

class RunProgress {
  public:
    explicit RunProgress(uint64_t cases) : cases_(cases) {}

    /// To be called often; writes on standard error when it is time. `known` of those done were known before.
    void show(uint64_t done, uint64_t known, uint64_t failed);

  private:
    using Clock = std::chrono::steady_clock;

    const uint64_t cases_;
    const Clock::time_point start_ = Clock::now();
    Clock::time_point shown_ = start_;
    StatusLine line_;
};

} // namespace cfatool
