#include "block/cfa_block.h"

#include <array>
#include <csignal>
#include <cstring>
#include <map>
#include <thread>

#include <doctest/doctest.h>

#include "cmodel/cfa/src/cfa_hw.h"
#include "cmodel/cfa/src/stages.h"
#include "cmodel/common/color_id.h"
#include "tests/support/equality.h"
#include "tests/support/hooks.h"
#include "tests/support/registers.h"
#include "tests/support/tool.h"

using namespace cfa;

namespace {

struct Block {
    cfa_block *handle = cfa_block_new();
    ~Block() { cfa_block_delete(handle); }
    operator cfa_block *() const { return handle; }

    // The registers of the process, key by key.
    void take_registers() {
        for (const RegisterInfo &info : cfa_reg_hw_table().registers)
            REQUIRE(cfa_block_set(handle, info.key, info.read(cfa_reg.hw)) == CFA_OK);
        REQUIRE(cfa_block_set(handle, "reg_img_bayerid", cmodel_top_reg.hw.reg_img_bayerid) == CFA_OK);
    }
};

// Places for the samples of a run, forms in turn; what is no sample stays UNTOUCHED.
constexpr uint16_t UNTOUCHED = 0xBEEF;
struct Memory {
    int width, height;
    std::vector<uint16_t> raw, rgb, dc, gain;
    ptrdiff_t raw_stride;
    cfa_image images[3];

    Memory(const Plane &mosaic, uint32_t form) : width(mosaic.width()), height(mosaic.height()) {
        const ptrdiff_t gap = form % 3 * 2, w = width, h = height; // samples behind a row
        raw_stride = 2 * (w + gap);
        raw.assign(static_cast<size_t>((w + gap) * h), UNTOUCHED);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                raw[static_cast<size_t>(y * (w + gap) + x)] = static_cast<uint16_t>(mosaic(y, x));
        const bool planar = form % 2 != 0, bottom_up = form % 5 == 1, spread = form % 7 == 2,
                   bgr = form % 4 == 2;
        const ptrdiff_t pixel = planar   ? 1
                                : spread ? 5
                                         : 3,
                        row = w * pixel + gap,
                        plane = planar ? row * h
                                : bgr  ? -1
                                       : 1;
        rgb.assign(static_cast<size_t>(planar ? 3 * plane : row * h), UNTOUCHED);
        dc.assign(static_cast<size_t>(2 * w * h), UNTOUCHED), gain = dc;
        images[0] = {rgb.data() + (bottom_up ? row * (h - 1) : 0) + (bgr ? 2 : 0),
                     2 * (bottom_up ? -row : row), 2 * pixel, 2 * plane};
        images[1] = {dc.data(), 0, 0, 0};
        images[2] = {gain.data(), 4 * w, 4, 0};
    }
    int run(cfa_block *block) {
        return cfa_block_run(block, width, height, raw.data(), raw_stride, &images[0], &images[1],
                             &images[2]);
    }
    int32_t at(int image, int y, int x, int c) const {
        const cfa_image &i = images[image];
        const ptrdiff_t row = i.row_stride != 0 ? i.row_stride : 2 * width,
                        pixel = i.pixel_stride != 0 ? i.pixel_stride : 2;
        return i.data[(y * row + x * pixel + c * i.channel_stride) / 2];
    }
    void expect(const Plane &want_rgb, const Plane &want_dc, const Plane &want_gain) const {
        const std::array<const Plane *, 3> want = {&want_rgb, &want_dc, &want_gain};
        for (int k = 0; k < 3; ++k)
            for (int y = 0; y < height; ++y)
                for (int x = 0; x < width; ++x)
                    for (int c = 0; c < (k == 0 ? 3 : 1); ++c)
                        if (at(k, y, x, c) != ((*want[k])(y, x, c) & 0xFFFF))
                            FAIL("output ", k, ", y ", y, ", x ", x, ", channel ", c, ": got ",
                                 at(k, y, x, c));
        const size_t samples = static_cast<size_t>(width) * height;
        CHECK(std::count(rgb.begin(), rgb.end(), UNTOUCHED) >=
              static_cast<ptrdiff_t>(rgb.size() - 3 * samples));
        CHECK(std::count(gain.begin(), gain.end(), UNTOUCHED) >= static_cast<ptrdiff_t>(samples));
    }
};

Plane deep_mosaic(uint32_t seed, PictureSize size) {
    Plane raw =
        seed % 6 == 0 ? Noise(seed).plane(size.width, size.height, 1, 0, 65535) : drawn_mosaic(seed, size);
    if (seed % 6 == 1) // the last sample alone
        raw.set(size.height - 1, size.width - 1, 0, 5000);
    return raw;
}

void compare_with_hw(uint32_t seed) {
    CAPTURE(seed);
    draw_registers(seed);
    cmodel_top_reg.hw.reg_img_bayerid = seed % 11 == 0 ? 8 + seed % 8 : seed % 4;
    cfa_reg.hw.reg_cfa_enable = seed % 13 != 0;
    const Plane raw = deep_mosaic(seed, small_size(seed)), rgb(raw, 3), dc(raw, 1), gain(raw, 1);
    cfa_hw(raw, rgb, dc, gain);
    Block block;
    block.take_registers();
    Memory memory(raw, seed);
    REQUIRE(cfa_block_keep_planes(block, seed % 4 == 0 ? "*" : "") == CFA_OK);
    REQUIRE(cfa_block_set_threads(block, 1 + static_cast<int>(seed % 3)) == CFA_OK);
    REQUIRE_MESSAGE(memory.run(block) == CFA_OK, cfa_block_error(block));
    memory.expect(rgb, dc, gain);
}

} // namespace

TEST_CASE_FIXTURE(FreshRegisters, "runs in memory of any form give what cfa_hw gives") {
    for (uint32_t seed = 0; seed < static_cast<uint32_t>(rounds(300)); ++seed)
        compare_with_hw(seed);
}

TEST_CASE_FIXTURE(FreshRegisters, "four blocks at once, each with its own registers, share nothing") {
    std::vector<Memory> alone, together;
    const auto run = [](uint32_t seed, Memory &memory) {
        Block block;
        const uint32_t tol = 1 + 600 * seed;
        bool ok = cfa_block_set(block, "reg_img_bayerid", seed) == 0 &&
                  cfa_block_set(block, "reg_cfa_edge_tol", tol) == 0 &&
                  cfa_block_set(block, "reg_cfa_shpn_gain_value", 20 * seed) == 0 &&
                  cfa_block_set(block, "reg_cfa_ymoire_enable", seed % 2) == 0 &&
                  cfa_block_keep_planes(block, seed < 2 ? "*" : "") == 0 &&
                  cfa_block_set_threads(block, 1 + seed % 2) == 0;
        for (int i = 0; i < 5; ++i)
            ok = ok && memory.run(block) == 0;
        if (!ok)
            memory.rgb.clear();
    };
    for (uint32_t seed = 0; seed < 4; ++seed) {
        alone.emplace_back(Noise(seed).plane(61, 40, 1, 0, seed == 3 ? 65535 : 4095), seed);
        together.emplace_back(Noise(seed).plane(61, 40, 1, 0, seed == 3 ? 65535 : 4095), seed);
        run(seed, alone[seed]);
    }
    std::vector<std::thread> threads;
    for (uint32_t seed = 0; seed < 4; ++seed)
        threads.emplace_back(run, seed, std::ref(together[seed]));
    for (std::thread &thread : threads)
        thread.join();
    for (uint32_t seed = 0; seed < 4; ++seed) {
        REQUIRE(!alone[seed].rgb.empty());
        CHECK(together[seed].rgb == alone[seed].rgb);
        CHECK(together[seed].dc == alone[seed].dc);
        CHECK(together[seed].gain == alone[seed].gain);
    }
}

TEST_CASE_FIXTURE(FreshRegisters, "planes are the stages' own, signed, unlimited, complete") {
    const Plane raw = Noise(5).plane(19, 12, 1, 0, 60000);
    Block block;
    Memory memory(raw, 0);
    REQUIRE(cfa_block_keep_planes(block, "GH_hp,LMax,RatioV,SigH,MaxRGB,GH") == CFA_OK);
    REQUIRE(memory.run(block) == CFA_OK);
    const auto expect = [&](const char *name, const Plane &want, int channels) {
        const cfa_plane *const plane = cfa_block_plane(block, name);
        REQUIRE(plane != nullptr);
        CHECK((plane->info->channels == channels && plane->width == 19 && plane->height == 12));
        expect_plane(name, want,
                     [&](int y, int x, int c) { return plane->data[(y * 19 + x) * channels + c]; });
    };
    Plane GH(raw, 3), GV(raw, 3), GH_lp(raw, 1), GH_hp(raw, 1), GV_lp(raw, 1), GV_hp(raw, 1), Max(raw, 3),
        Min(raw, 3);
    cfa_CalPredictPixel(raw, GH, GV, GH_lp, GH_hp, GV_lp, GV_hp, Max, Min, 0);
    Plane LH(raw, 1), LV(raw, 1), LMax(raw, 1), RatioH(raw, 1), RatioV(raw, 1), SigH(raw, 1), SigV(raw, 1);
    cfa_CalClassifier(raw, LH, LV, LMax, RatioH, RatioV, 0);
    cfa_CalVarOfColorDiffAtG(raw, GH, GV, SigH, SigV, 0);
    cfa_CalVarOfColorDiffAtRB(raw, GH, GV, LH, LV, RatioH, GH_lp, SigH, SigV, 0);
    expect("GH_hp", GH_hp, 1), expect("LMax", LMax, 1), expect("RatioV", RatioV, 1), expect("SigH", SigH, 1);
    expect("MaxRGB", Max, 3), expect("GH", GH, 3);
    CHECK(cfa_block_plane(block, "GV") == nullptr); // not asked for
    for (const char *key : {"reg_cfa_ymoire_enable", "reg_cfa_shpn_enable"})
        REQUIRE(cfa_block_set(block, key, 1) == CFA_OK);
    REQUIRE(cfa_block_keep_planes(block, "*") == CFA_OK);
    REQUIRE(memory.run(block) == CFA_OK);
    for (size_t i = 0; cfa_plane_info_at(i) != nullptr; ++i)
        CHECK_MESSAGE(cfa_block_plane(block, cfa_plane_info_at(i)->name) != nullptr,
                      cfa_plane_info_at(i)->name);
    // Nothing of the last run stays: black everywhere, and a stage that is off.
    std::fill(memory.raw.begin(), memory.raw.end(), uint16_t{0});
    REQUIRE(cfa_block_set(block, "reg_cfa_shpn_enable", 0) == CFA_OK);
    REQUIRE(memory.run(block) == CFA_OK);
    expect("GH", Plane(raw, 3), 3);
    CHECK(cfa_block_plane(block, "cored") == nullptr);
    REQUIRE(cfa_block_set(block, "reg_cfa_enable", 0) == CFA_OK);
    REQUIRE(memory.run(block) == CFA_OK);
    CHECK(cfa_block_plane(block, "GH") == nullptr);
    CHECK(cfa_block_slow_reason(block) == nullptr);
    REQUIRE(cfa_block_set(block, "reg_cfa_enable", 1) == CFA_OK);
    REQUIRE(cfa_block_set(block, "reg_img_bayerid", 8) == CFA_OK);
    REQUIRE(memory.run(block) == CFA_OK);
    CHECK(std::string(cfa_block_slow_reason(block)) == "a 4 x 4 pattern");
}

TEST_CASE("wrong calls are errors with one line") {
    Block block;
    std::vector<uint16_t> samples(40 * 40 * 8);
    uint16_t *const p = samples.data();
    const auto run = [&](uint32_t w, uint32_t h, const uint16_t *raw, ptrdiff_t stride, cfa_image rgb,
                         cfa_image dc = {nullptr, 0, 0, 0}) {
        return cfa_block_run(block, w, h, raw, stride, &rgb, &dc, nullptr);
    };
    const auto load = [&](const char *text) {
        return cfa_block_load_ini_text(block, text, std::strlen(text), CFA_INI_STRICT);
    };
    const auto packed = [](uint16_t *data) { return cfa_image{data, 0, 0, 0}; };
    int32_t got = 0;
    const auto expect = [&](int code, int want, const char *line) {
        CAPTURE(line);
        CHECK(code == want);
        CHECK(std::string(cfa_block_error(block)) == line);
    };
    const int A = CFA_ERROR_ARGUMENT;
    uint16_t *const out = p + 1600;
    expect(run(40, 40, nullptr, 0, packed(out)), A, "raw: null");
    expect(run(40, 40, p, 81, packed(out)), A, "raw: a stride is odd");
    expect(run(40, 40, p, 40, packed(out)), A, "raw: strides make samples overlap");
    expect(run(40, 40, p, 0, {out, 0, 4, 0}), A, "rgb: strides make samples overlap");
    expect(run(40, 40, p, 0, packed(reinterpret_cast<uint16_t *>(reinterpret_cast<char *>(out) + 1))), A,
           "rgb: the address is odd");
    expect(run(40, 40, p, 0, {out, PTRDIFF_MAX - 1, 0, 0}), A, "rgb: strides reach beyond the memory");
    expect(run(40, 40, p, 0, {out, PTRDIFF_MIN, 0, 0}), A, "rgb: strides reach beyond the memory");
    expect(run(40, 40, p, 0, packed(out), packed(out + 3)), A, "two outputs share memory");
    expect(run(40, 40, p, 0, packed(p + 1599)), A, "an output lies within the mosaic");
    expect(run(3, 40, p, 0, packed(out)), CFA_ERROR_SIZE,
           "Picture of 3 x 40 is too small: the enabled block takes 4 x 3 and larger");
    expect(run(40, 0, p, 0, packed(out)), CFA_ERROR_SIZE,
           "Picture of 40 x 0 is too small: the enabled block takes 4 x 3 and larger");
    expect(run(0, 40, p, 0, packed(out)), CFA_ERROR_SIZE,
           "Picture of 0 x 40 is too small: the enabled block takes 4 x 3 and larger");
    expect(run(40, 40, p, 0, {out, 320, 8, 0}, {out + 3, 324, 8, 0}), A, "two outputs share memory");
    const cfa_image one = packed(out);
    expect(cfa_block_run(block, 40, 40, p, 0, nullptr, &one, &one), A, "two outputs share memory");
    expect(run(26755, 26755, nullptr, 0, packed(out)), CFA_ERROR_SIZE, "the picture is too large");
    expect(cfa_block_set(block, "reg_cfa_edge_tol", 4096), CFA_ERROR_RANGE,
           "reg_cfa_edge_tol: 4096 is not 0 to 4095");
    expect(cfa_block_set(block, "reg_cfa_edge_tol", -1), CFA_ERROR_RANGE,
           "reg_cfa_edge_tol: -1 is not 0 to 4095");
    expect(cfa_block_get(block, "reg_cfa", &got), CFA_ERROR_REGISTER, "no register 'reg_cfa'");
    expect(cfa_block_keep_planes(block, "GH,,GV"), CFA_ERROR_PLANE, "no plane ''");
    expect(cfa_block_set_threads(block, 0), A, "threads: not 1 or more");
    expect(cfa_block_load_ini(block, "/no/such.ini", 0), CFA_ERROR_FILE,
           "/no/such.ini: No such file or directory");
    expect(cfa_block_load_ini(block, "/", 0), CFA_ERROR_FILE, "/: cannot be read");
    expect(cfa_block_load_ini_text(block, "", 0, 2), A, "unknown flag");
    const std::string edge = "[cfa]\nreg_cfa_edge_tol = 7\n";
    expect(load((edge + "nonsense\nreg_cfa_edge_to = 1").c_str()), CFA_ERROR_INI,
           "text:3: neither a section nor a setting");
    expect(load((edge + "reg_cfa_edge_to = 1\nnonsense").c_str()), CFA_ERROR_INI,
           "text:3: no register 'reg_cfa_edge_to' in [cfa]");
    expect(load((edge + "reg_cfa_vw_thd = 0x10").c_str()), CFA_ERROR_INI,
           "text:3: reg_cfa_vw_thd: '0x10' is not a decimal number");
    expect(load((edge + "[cmodel_top]\nreg_img_bayerid = 16").c_str()), CFA_ERROR_INI,
           "text:4: reg_img_bayerid: 16 is not 0 to 15");
    REQUIRE(cfa_block_get(block, "reg_cfa_edge_tol", &got) == CFA_OK);
    CHECK(got == 256); // none of these changed it
    CHECK(load((edge + "[other]\nx = y\n[cmodel_top]\nreg_img_bayerid = +3").c_str()) == CFA_OK);
    CHECK((cfa_block_get(block, "reg_cfa_edge_tol", &got) == CFA_OK && got == 7));
    CHECK((cfa_block_get(block, "reg_img_bayerid", &got) == CFA_OK && got == 3));
    const std::string cut = "[cfa]\nreg_cfa_edge_tol = 5000x";
    CHECK(cfa_block_load_ini_text(block, cut.data(), cut.size(), 0) == CFA_OK); // as the tool takes it
    CHECK((cfa_block_get(block, "reg_cfa_edge_tol", &got) == CFA_OK && got == 904));
    std::vector<char> text(cfa_block_ini_text(block, nullptr, 0) + 1);
    CHECK(cfa_block_ini_text(block, text.data(), text.size()) == text.size() - 1);
    CHECK(std::strlen(text.data()) == text.size() - 1);
    Block copy;
    CHECK(cfa_block_load_ini_text(copy, text.data(), text.size() - 1, CFA_INI_STRICT) == CFA_OK);
    CHECK((cfa_block_get(copy, "reg_cfa_edge_tol", &got) == CFA_OK && got == 904));
    CHECK(run(40, 40, p, 0, {out, 0, 8, 0}, {out + 3, 320, 8, 0}) == CFA_OK); // the fourth of four channels
}

TEST_CASE("random wrong calls crash nothing") {
    Block block;
    Noise noise(1);
    std::vector<uint16_t> memory(1 << 16);
    const int64_t edges[] = {0,   1,    2,     3,       4,         6,         8,        64,
                             128, 4096, 65535, 1 << 20, INT32_MAX, INT64_MAX, INT64_MIN};
    const auto any = [&] {
        return edges[noise.in(0, std::size(edges) - 1)] * (noise.in(0, 3) == 0 ? -1 : 1) + noise.in(0, 3) / 3;
    };
    for (int i = 0; i < rounds(10000); ++i) {
        const auto w = static_cast<uint32_t>(noise.in(0, 2) == 0 ? any() : noise.in(0, 20)),
                   h = static_cast<uint32_t>(noise.in(0, 20));
        cfa_image images[3];
        for (cfa_image &image : images) {
            image = {noise.in(0, 4) == 0 ? nullptr : memory.data() + 30000 + noise.in(0, 9) * 600, any(),
                     any(), any()};
            if (noise.in(0, 1) != 0)
                image.row_stride = image.pixel_stride = image.channel_stride = 0;
            // What passes must lie in the memory: at most 20 rows of 2,400 bytes.
            if (w > 20 || image.row_stride > 128 || image.row_stride < -128 || image.pixel_stride > 128 ||
                image.pixel_stride < -128 || image.channel_stride > 4096 || image.channel_stride < -4096)
                image.channel_stride = 1;
        }
        const ptrdiff_t stride = noise.in(0, 1) != 0 ? 0 : any() % 256;
        cfa_block_run(block, w, w > 20 ? 0 : h, noise.in(0, 9) == 0 ? nullptr : memory.data() + 10000, stride,
                      &images[0], &images[1], &images[2]);
        cfa_block_set(block, noise.in(0, 1) != 0 ? "reg_cfa_enable" : "reg_img_bayerid", any());
        cfa_block_keep_planes(block, noise.in(0, 3) == 0 ? "*" : noise.in(0, 1) != 0 ? "GH,x" : "");
    }
    for (cfa_block *none : {static_cast<cfa_block *>(nullptr)}) {
        CHECK(cfa_block_run(none, 4, 4, nullptr, 0, nullptr, nullptr, nullptr) == CFA_ERROR_ARGUMENT);
        CHECK(std::string(cfa_block_error(none)) == "no block");
        CHECK(cfa_block_plane(none, "GH") == nullptr);
        CHECK(cfa_block_ini_text(none, nullptr, 0) == 0);
    }
}

TEST_CASE("every allocation that fails is an error code") {
    if (SANITIZED)
        return; // a sanitizer's allocator cannot be replaced
    const Outcome outcome = run_child([] {
        const Plane raw = Noise(1).plane(24, 16, 1, 0, 4095);
        Memory undisturbed(raw, 0);
        undisturbed.run(Block());
        for (const char *planes : {"", "*"})
            for (const bool and_later : {false, true})
                for (long failing = 1;; ++failing) {
                    Memory memory(raw, 0);
                    watch(failing, and_later);
                    int code = CFA_ERROR_MEMORY;
                    if (cfa_block *const block = cfa_block_new()) {
                        cfa_block_set_threads(block, and_later ? 1 : 2);
                        code = cfa_block_keep_planes(block, planes);
                        code = code != 0 ? code
                                         : cfa_block_load_ini_text(block, "[cfa]\nreg_cfa_shpn_enable = 1\n",
                                                                   30, CFA_INI_STRICT);
                        code = code != 0 ? code : memory.run(block);
                        cfa_block_delete(block);
                    }
                    const bool failed = watched->allocations >= failing;
                    watch();
                    if (code != CFA_ERROR_MEMORY &&
                        (code != CFA_OK || memory.rgb != undisturbed.rgb)) // a stream can do without a buffer
                        std::printf("allocation %ld: code %d\n", failing, code);
                    if (!failed)
                        break;
                }
        sigset_t blocked;
        if (pthread_sigmask(SIG_SETMASK, nullptr, &blocked) != 0 || sigismember(&blocked, SIGINT) != 0)
            std::printf("signals stay blocked\n");
    });
    CHECK(outcome.status == 0);
    CHECK(outcome.out == "");
}
