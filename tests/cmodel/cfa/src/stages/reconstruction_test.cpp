#include <algorithm>

#include <doctest/doctest.h>

#include "cmodel/cfa/src/kit/fixed_point.h"
#include "cmodel/cfa/src/stages.h"
#include "tests/support/planes.h"
#include "tests/support/registers.h"

namespace {

struct Planes {
    Plane GH, GV, GH_lp, GV_lp, GH_hp, GV_hp, MaxRGB, MinRGB, SigH, SigV, LMax, RatioH, RatioV, DirInfo;

    Planes(const Plane &raw, Noise &noise, int32_t deepest) {
        const auto plane = [&](int channels, int32_t low, int32_t high) {
            return noise.plane(raw.width(), raw.height(), channels, low, high);
        };
        GH = plane(3, 0, deepest), GV = plane(3, 0, deepest);
        GH_lp = plane(1, 0, deepest), GV_lp = plane(1, 0, deepest);
        GH_hp = plane(1, -deepest, deepest), GV_hp = plane(1, -deepest, deepest);
        MaxRGB = plane(3, deepest / 2, deepest), MinRGB = plane(3, 0, deepest / 2);
        SigH = plane(1, 0, noise.in(0, 1) * 120000 + 11000),
        SigV = plane(1, 0, noise.in(0, 1) * 120000 + 11000);
        LMax = plane(1, 0, 70000), RatioH = plane(1, 0, 4095), RatioV = plane(1, 0, 4095),
        DirInfo = plane(1, 0, 2);
    }
};

int32_t chosen(const Planes &p, int y, int x, int64_t h, int64_t v) {
    const int32_t dir = reg("reg_cfa_force_dir_enable") == 1 ? reg("reg_cfa_force_dir_sel") : p.DirInfo(y, x);
    if (dir != 0)
        return static_cast<int32_t>(dir == 1 ? h : v);
    const int32_t larger = std::max(p.SigH(y, x), p.SigV(y, x));
    const auto weight = [&](int32_t other) {
        return std::max(1, (other - larger / 1024) >> (larger < 16384 ? 5 : 7));
    };
    const int32_t w_h = weight(p.SigV(y, x)), w_v = weight(p.SigH(y, x));
    return limited(((w_h * h + w_v * v) * get_inv(w_h + w_v)) >> 15, 4095);
}

int32_t green(const Planes &p, int y, int x) {
    const auto candidate = [&](const Plane &G, const Plane &lp, const Plane &hp, const Plane &ratio) {
        const std::string entry = std::to_string(100 + ratio(y, x) / 128).substr(1);
        const int32_t g =
            p.LMax(y, x) < reg("reg_cfa_ghp_thd")
                ? limited(lp(y, x) + ((reg(("reg_cfa_ghp_lut" + entry).c_str()) * hp(y, x)) >> 5), 4095)
                : G(y, x, 1);
        return std::min(p.MaxRGB(y, x, 1), std::max(p.MinRGB(y, x, 1), g));
    };
    return chosen(p, y, x, candidate(p.GH, p.GH_lp, p.GH_hp, p.RatioH),
                  candidate(p.GV, p.GV_lp, p.GV_hp, p.RatioV));
}

int32_t color(const Plane &raw, const Planes &p, int y, int x, int c) {
    const auto nine = picked(raw, y, x, "111 111 111");
    const auto [low, high] = std::minmax_element(nine.begin(), nine.end());
    return std::clamp(chosen(p, y, x, p.GH(y, x, c), p.GV(y, x, c)), *low, *high);
}

int32_t reconstructed(const Plane &raw, const Planes &p, uint32_t id, int y, int x, int c) {
    const int code = code_at(y, x, id);
    if (code > 3) // repeats the pixel before in scan order
        return x > 0   ? reconstructed(raw, p, id, y, x - 1, c)
               : y > 0 ? reconstructed(raw, p, id, y - 1, raw.width() - 1, c)
                       : 0;
    const int own[] = {2, 1, 1, 0};
    if (c == own[code])
        return raw(y, x);
    return c == 1 ? green(p, y, x) : color(raw, p, y, x, c);
}

} // namespace

TEST_CASE_FIXTURE(FreshRegisters, "cfa_CalRGB: every site") {
    Noise noise(37);
    uint32_t run = 0;
    for_each_mosaic([&](const Plane &raw, uint32_t id) {
        if (run++ % 4 != 0) {
            randomize_registers(run, "ghp");
            randomize_registers(run, "force_dir");
        }
        const Planes p(raw, noise, run % 5 == 0 ? 1 << 26 : 4095);
        const Plane rgb(raw, 3);
        cfa_CalRGB(raw, rgb, p.GH, p.GV, p.GH_lp, p.GV_lp, p.GH_hp, p.GV_hp, p.MaxRGB, p.MinRGB, p.SigH,
                   p.SigV, p.LMax, p.RatioH, p.RatioV, p.DirInfo, id);
        expect_plane("RGB", rgb, [&](int y, int x, int c) { return reconstructed(raw, p, id, y, x, c); });
    });
}
