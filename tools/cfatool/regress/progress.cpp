#include "tools/cfatool/regress/progress.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fmt/core.h>

namespace cfatool {
namespace {

constexpr std::chrono::milliseconds BAR_EVERY{200}, LINE_EVERY{10'000};
constexpr size_t LEAST_BAR = 8, MOST_BAR = 30;

std::string time_text(double seconds) {
    const auto s = std::llround(seconds);
    return s < 60     ? fmt::format("{} s", s)
           : s < 3600 ? fmt::format("{} min {} s", s / 60, s % 60)
                      : fmt::format("{} h {} min", s / 3600, s / 60 % 60);
}

} // namespace

void RunProgress::show(uint64_t done, uint64_t known, uint64_t failed) {
    const auto now = Clock::now();
    const size_t room = StatusLine::room();
    if (now - shown_ < (room > 0 ? BAR_EVERY : LINE_EVERY))
        return;
    shown_ = now;
    const double seconds = std::chrono::duration<double>(now - start_).count();
    const double rate = static_cast<double>(done - known) / seconds;
    const std::string left = done > known ? time_text(static_cast<double>(cases_ - done) / rate) : "?";
    std::string line = fmt::format("{} %, {} failed, {} left, {:.{}f} a second, {} of {} cases",
                                   100 * done / std::max<uint64_t>(cases_, 1), failed, left, rate,
                                   rate < 10 ? 1 : 0, done, cases_);
    if (room == 0) {
        std::fprintf(stderr, "%s\n", line.c_str());
        return;
    }
    if (const size_t beside = line.size() + 3; beside + LEAST_BAR <= room) {
        const size_t width = std::min(room - beside, MOST_BAR);
        const size_t full = width * done / std::max<uint64_t>(cases_, 1);
        line = "[" + std::string(full, '#') + std::string(width - full, ' ') + "] " + line;
    }
    line_.show(line);
}

} // namespace cfatool
