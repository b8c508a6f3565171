// A line that is written over.
#include "tools/cfatool/base/progress.h"

#include <algorithm>
#include <cstdio>
#include <fmt/core.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace cfatool {

using namespace std::chrono_literals;

StatusLine::~StatusLine() {
    if (written_)
        std::fputs("\r\033[K", stderr);
}

size_t StatusLine::room() {
    if (isatty(STDERR_FILENO) != 1)
        return 0;
    winsize window = {};
    const bool known = ioctl(STDERR_FILENO, TIOCGWINSZ, &window) == 0 && window.ws_col > 1;
    return known ? window.ws_col - 1u : 79; // in the last column it might wrap
}

void StatusLine::show(const std::string &text) {
    size_t length = text.size();
    for (const size_t most = room(); length > most;)
        length = std::min(text.rfind(", ", length - 1), most);
    std::fprintf(stderr, "\r%s\033[K", text.substr(0, length).c_str());
    written_ = true;
}

Progress::Progress(uint64_t total, const char *work) : total_(std::max<uint64_t>(total, 1)), work_(work) {}

void Progress::add(uint64_t done) {
    const std::lock_guard lock(mutex_);
    done_ += done;
    const Clock::time_point now = Clock::now();
    if (now - start_ < 500ms || now - shown_ < 100ms || StatusLine::room() == 0)
        return;
    shown_ = now;
    const std::chrono::duration<double> spent = now - start_;
    const double part = static_cast<double>(done_) / static_cast<double>(total_);
    line_.show(fmt::format("{} {:.0f} %, {:.0f} s left", work_, 100 * part,
                           spent.count() * (1 - part) / std::max(part, 1e-6)));
}

} // namespace cfatool
