#include "tools/cfatool/random/values.h"

#include <algorithm>
#include <cstring>

#include "cmodel/cfa/src/reg_parse/cfa_reg.h"

namespace cfatool {

int64_t drawn_value(uint64_t random, int64_t low, int64_t high) {
    const auto take = [&random](uint64_t n) { // one of n, of bits not used yet
        const uint64_t drawn = random % n;
        random /= n;
        return static_cast<int64_t>(drawn);
    };
    const bool upper = take(2) != 0;
    switch (take(7)) {
    case 0:
        return upper ? high : low;
    case 1:
        return upper ? high - 1 : low + 1;
    case 2: {
        const int64_t v = take(uint64_t{1} << take(19));
        return std::clamp(upper ? v : -v, low, high);
    }
    case 3: {
        const int64_t v = (1 + take(3)) << take(16);
        return std::clamp(upper ? v : -v, low, high);
    }
    default:
        return low + take(static_cast<uint64_t>(high - low + 1));
    }
}

void let_slopes_agree(const std::function<int64_t(const cfa::RegisterInfo &)> &read,
                      const std::function<void(const cfa::RegisterInfo &, int64_t)> &store) {
    for (const cfa::RegisterInfo &slope : cfa::cfa_reg_hw_table().registers) {
        if (slope.curve.role != cfa::CurveRole::slope)
            continue;
        const auto of_curve = [&](cfa::CurveRole role) {
            for (const cfa::RegisterInfo &info : cfa::cfa_reg_hw_table().registers)
                if (std::strcmp(info.curve.name, slope.curve.name) == 0 && info.curve.role == role)
                    return read(info);
            return int64_t{0};
        };
        const bool rises = of_curve(cfa::CurveRole::y0) <= of_curve(cfa::CurveRole::y1);
        const int64_t v = read(slope);
        if (rises ? v < 0 : v > 0)
            store(slope, std::min<int64_t>(-v, cfa::register_max(slope.bits, true)));
    }
}

} // namespace cfatool
