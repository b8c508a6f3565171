#include "tools/cfatool/regress/progress.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fmt/core.h>
#include <unistd.h>

namespace cfatool {
namespace {

constexpr std::chrono::milliseconds BAR_EVERY{200}, LINE_EVERY{10'000};
constexpr uint64_t BAR_WIDTH = 30;

std::string time_text(double seconds) {
    const auto s = std::llround(seconds);
    return s < 60     ? fmt::format("{} s", s)
           : s < 3600 ? fmt::format("{} min {} s", s / 60, s % 60)
                      : fmt::format("{} h {} min", s / 3600, s / 60 % 60);
}

} // namespace

RunProgress::RunProgress(uint64_t cases) : cases_(cases), terminal_(isatty(STDERR_FILENO) == 1) {}

RunProgress::~RunProgress() {
    if (bar_)
        std::fputs("\r\x1b[K", stderr);
}

void RunProgress::show(uint64_t done, uint64_t known, uint64_t failed) {
    const auto now = Clock::now();
    if (now - shown_ < (terminal_ ? BAR_EVERY : LINE_EVERY))
        return;
    shown_ = now;
    const double seconds = std::chrono::duration<double>(now - start_).count();
    const double rate = static_cast<double>(done - known) / seconds;
    std::string line = fmt::format("{} of {} cases, {} failed, {:.{}f} a second", done, cases_, failed, rate,
                                   rate < 10 ? 1 : 0);
    if (done > known)
        line += ", " + time_text(static_cast<double>(cases_ - done) / rate) + " left";
    if (terminal_) {
        const uint64_t full = BAR_WIDTH * done / std::max<uint64_t>(cases_, 1);
        line = "\r[" + std::string(full, '#') + std::string(BAR_WIDTH - full, ' ') + "] " + line + "\x1b[K";
        bar_ = true;
    } else {
        line += "\n";
    }
    std::fputs(line.c_str(), stderr);
}

} // namespace cfatool
