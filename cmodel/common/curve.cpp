#include "cmodel/common/curve.h"

#include <algorithm>

int32_t CM_LUT3(uint32_t x, int32_t x0, uint32_t y0, int32_t y1, uint32_t slope, uint32_t shift) {
    const int32_t sx = static_cast<int32_t>(x);
    const int32_t level = static_cast<int32_t>(y0);
    if (sx <= x0)
        return level;
    const uint32_t half = shift != 0 ? 1u << (shift - 1) : 0;
    const int32_t rise = static_cast<int32_t>((x - static_cast<uint32_t>(x0)) * slope + half) >> shift;
    const int32_t t = static_cast<int32_t>(static_cast<uint32_t>(rise) + y0);
    return level <= y1 ? std::min(t, y1) : std::max(t, y1);
}

int32_t CM_LUT3_CLIP(uint32_t x, int32_t x0, int32_t y0, int32_t y1, int32_t slope, uint32_t shift) {
    const int32_t sx = static_cast<int32_t>(x);
    if (sx <= x0)
        return y0;
    const uint32_t product = (x - static_cast<uint32_t>(x0)) * static_cast<uint32_t>(slope);
    const int32_t rise = static_cast<int32_t>(product) >> shift;
    const int32_t t = static_cast<int32_t>(static_cast<uint32_t>(rise) + static_cast<uint32_t>(y0));
    return y0 > y1 ? std::max(t, y1) : std::min(t, y1);
}

int32_t CM_SingleIntp(int32_t x0, int32_t x1, int32_t y0, int32_t y1, int32_t x) {
    const int32_t low = std::min(x0, x1);
    const int32_t high = std::max(x0, x1);
    if (x <= low)
        return low == x0 ? y0 : y1;
    if (x >= high)
        return high == x0 ? y0 : y1;
    // Here low < x < high, so x0 != x1. The product wraps; the division, in 64 bits, cannot trap.
    const uint32_t product = (static_cast<uint32_t>(y1) - static_cast<uint32_t>(y0)) *
                             (static_cast<uint32_t>(x) - static_cast<uint32_t>(x0));
    const int32_t span = static_cast<int32_t>(static_cast<uint32_t>(x1) - static_cast<uint32_t>(x0));
    const int64_t quotient = int64_t{static_cast<int32_t>(product)} / span;
    return static_cast<int32_t>(static_cast<uint32_t>(y0) + static_cast<uint32_t>(quotient));
}
