#include "tools/cfatool/regress/minimise.h"

#include <algorithm>
#include <vector>

namespace cfatool {
namespace {

constexpr int LEAST_WIDTH = 4, LEAST_HEIGHT = 3;

using Fails = std::function<bool(const Inputs &)>;

struct Window {
    int left = 0, top = 0, right = 0, bottom = 0; // right and bottom are outside
};

Sum sum_of_samples(const FRAME *frame) {
    Summer summer;
    summer.add(&frame->width, sizeof frame->width);
    summer.add(frame->data, sizeof(uint32_t) * frame->width * frame->height);
    return summer.sum();
}

std::shared_ptr<Mosaic> part_of(const FRAME *whole, const Window &w) {
    cfa::FramePtr part(cfa::new_frame(FRAME_TYPE_IMG, FRAME_FMT_MONO, static_cast<uint32_t>(w.right - w.left),
                                      static_cast<uint32_t>(w.bottom - w.top), 1, whole->bit_depth));
    for (int y = w.top; y < w.bottom; ++y)
        std::copy_n(&whole->data[cfa::sample_index(whole, y, w.left, 0)], w.right - w.left,
                    &cfa::sample(part.get(), y - w.top, 0));
    const Sum sum = sum_of_samples(part.get());
    return Mosaic::from_frame(std::move(part), sum);
}

/// Moves a side inwards as far as it goes: first by half of what there is, then by ever less, two lines at
/// last.
void cut_side(Window &window, int Window::*side, int inwards,
              const std::function<bool(const Window &)> &fails) {
    const int most = std::max(window.right - window.left, window.bottom - window.top);
    for (int step = most / 2 * 2; step >= 2; step = step / 4 * 2) {
        Window smaller = window;
        smaller.*side += inwards * step;
        if (smaller.right - smaller.left >= LEAST_WIDTH && smaller.bottom - smaller.top >= LEAST_HEIGHT &&
            fails(smaller)) {
            window = smaller;
            step *= 2; // once more by as much
        }
    }
}

Inputs with_least_picture(const Inputs &inputs, const Fails &fails) {
    const FRAME *const whole = inputs.mosaic->frame();
    Window window{0, 0, cfa::width_of(whole), cfa::height_of(whole)};
    const auto of_window = [&](const Window &w) {
        return make_inputs(inputs.from, part_of(whole, w), inputs.registers);
    };
    for (const auto &[side, inwards] :
         {std::pair{&Window::bottom, -1}, {&Window::top, 1}, {&Window::right, -1}, {&Window::left, 1}})
        cut_side(window, side, inwards, [&](const Window &w) { return fails(of_window(w)); });
    return of_window(window);
}

/// Sets groups of registers back: all, halves, and so on to single ones.
Inputs with_fewest_registers(Inputs inputs, const Fails &fails) {
    std::vector<const RegisterInfo *> away;
    for (const RegisterInfo &info : cfa::cfa_reg_hw_table().registers)
        if (info.read(inputs.registers->block.hw) != info.reset)
            away.push_back(&info);
    for (size_t group = std::max<size_t>(away.size(), 1); group > 0; group /= 2)
        for (size_t first = 0; first < away.size();) {
            const size_t end = std::min(first + group, away.size());
            const auto registers = copy_registers(*inputs.registers);
            for (size_t i = first; i < end; ++i)
                away[i]->store(registers->block.hw, away[i]->reset);
            Inputs fewer = make_inputs(inputs.from, inputs.mosaic, registers);
            if (fails(fewer)) {
                inputs = std::move(fewer);
                away.erase(away.begin() + static_cast<ptrdiff_t>(first),
                           away.begin() + static_cast<ptrdiff_t>(end));
            } else {
                first = end;
            }
        }
    return inputs;
}

} // namespace

Inputs minimised(const Inputs &inputs, const Fails &fails) {
    return with_least_picture(with_fewest_registers(inputs, fails), fails);
}

} // namespace cfatool
