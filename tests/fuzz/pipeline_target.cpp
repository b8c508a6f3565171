// The enabled block on a small picture with any registers: the line engine gives the model's bytes or
// refuses.

#include <algorithm>
#include <cstring>

#include <fuzzer/FuzzedDataProvider.h>

#include "cmodel/cfa/src/cfa_hw.h"
#include "cmodel/cfa/src/cfa_model.h"
#include "cmodel/cfa/src/lines/frame_rows.h"
#include "cmodel/cfa/src/reg_parse/cfa_reg.h"
#include "cmodel/cmodel_top/src/reg_parse/cmodel_top_reg.h"
#include "tests/fuzz/fuzz_support.h"

using namespace cfa;

namespace {

constexpr uint32_t UNTOUCHED = 0xF8A432EB;

struct Outputs {
    FramePtr rgb, dc, gain;
    explicit Outputs(const FRAME *raw)
        : rgb(plane_like(raw, FRAME_TYPE_IMG, 3, 12)), dc(plane_like(raw, FRAME_TYPE_IMG, 1, 12)),
          gain(plane_like(raw, FRAME_TYPE_IMG, 1, 12)) {
        for (const FRAME *const frame : {rgb.get(), dc.get(), gain.get()})
            std::fill_n(frame->data, static_cast<size_t>(frame->width) * frame->height * frame->channels,
                        UNTOUCHED);
    }
};

void expect_same(const char *name, const FRAME *want, const FRAME *got) {
    const size_t count = static_cast<size_t>(want->width) * want->height * want->channels;
    if (std::memcmp(want->data, got->data, count * sizeof *want->data) != 0)
        fuzz_failure(std::string(name) + ": engine and model differ");
}

// Nothing, a few or all registers, each over its whole range.
void draw_registers(FuzzedDataProvider &data) {
    INIT_CFA_REG("NULL");
    INIT_CMODEL_TOP_REG("NULL");
    cmodel_top_reg.hw.reg_img_bayerid = data.ConsumeIntegralInRange(0, 15);
    const auto &registers = cfa_reg_hw_table().registers;
    const bool all = data.ConsumeBool();
    const size_t count = all ? registers.size() : data.ConsumeIntegralInRange<size_t>(0, 20);
    for (size_t i = 0; i < count; i++) {
        const RegisterInfo &info =
            registers[all ? i : data.ConsumeIntegralInRange<size_t>(0, registers.size() - 1)];
        info.store(cfa_reg.hw, data.ConsumeIntegralInRange(register_min(info.bits, info.is_signed),
                                                           register_max(info.bits, info.is_signed)));
    }
    cfa_reg.hw.reg_cfa_enable = 1;
}

// What is left of the input is the mosaic, twelve bits a sample, or deeper when asked for.
FramePtr draw_mosaic(FuzzedDataProvider &data) {
    const uint32_t width = data.ConsumeIntegralInRange<uint32_t>(4, 48);
    const uint32_t height = data.ConsumeIntegralInRange<uint32_t>(3, 24);
    const uint32_t mask = data.ConsumeIntegralInRange(0, 15) == 0 ? 0xFFFF : 0xFFF;
    FramePtr raw(CM_NewFRAME(FRAME_TYPE_IMG, FRAME_FMT_MONO, width, height, 1, 12));
    uint32_t last = 0; // an input that ends early leaves noise
    for (size_t i = 0; i < static_cast<size_t>(width) * height; i++) {
        last = data.remaining_bytes() >= 2 ? data.ConsumeIntegral<uint16_t>() : last * 1103515245u + 12345u;
        raw->data[i] = (last ^ last >> 16) & mask;
    }
    return raw;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    FuzzedDataProvider data(bytes, size);
    draw_registers(data);
    const FramePtr raw = draw_mosaic(data);
    const Outputs untouched(raw.get()), model(raw.get()), engine(raw.get());
    const int status = run_refusable([&] {
        cfa_model(raw.get(), model.rgb.get(), model.dc.get(), model.gain.get());
        const bool served = cfa_lines(raw.get(), engine.rgb.get(), engine.dc.get(), engine.gain.get());
        const Outputs &want = served ? model : untouched;
        expect_same("rgb", want.rgb.get(), engine.rgb.get());
        expect_same("dc", want.dc.get(), engine.dc.get());
        expect_same("gain", want.gain.get(), engine.gain.get());
    });
    if (status != 0)
        fuzz_failure("a picture ended the process");
    return 0;
}
