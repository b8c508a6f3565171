// A line that is written over.
#include "tools/cfatool/base/progress.h"

#include <algorithm>
#include <cstdio>
#include <unistd.h>

namespace cfatool {

using namespace std::chrono_literals;

Progress::Progress(uint64_t total, const char *work)
    : total_(std::max<uint64_t>(total, 1)), work_(work), terminal_(isatty(STDERR_FILENO) == 1) {}

Progress::~Progress() {
    if (written_)
        std::fputs("\r\033[K", stderr);
}

void Progress::add(uint64_t done) {
    const std::lock_guard lock(mutex_);
    done_ += done;
    const Clock::time_point now = Clock::now();
    if (!terminal_ || now - start_ < 500ms || now - shown_ < 100ms)
        return;
    shown_ = now;
    written_ = true;
    const std::chrono::duration<double> spent = now - start_;
    const double part = static_cast<double>(done_) / static_cast<double>(total_);
    std::fprintf(stderr, "\r%s %.0f %%, %.0f s left \033[K", work_, 100 * part,
                 spent.count() * (1 - part) / std::max(part, 1e-6));
}

} // namespace cfatool
