// Pixel by pixel, row by row.
#include "tools/cfatool/charts/chart_file.h"

namespace cfatool {

int64_t default_noise(const Chart &chart, const MosaicForm &form) {
    return chart.noise * form.max() / 4095;
}

void write_chart(const std::string &path, const Chart &chart, MosaicForm form, Canvas canvas) {
    form.full = chart.in_samples ? form.max() : FULL;
    canvas.width = form.width;
    canvas.height = form.height;
    canvas.max = form.max();
    const Painter paint = chart.paint(canvas);
    MosaicWriter writer(path, form);
    std::vector<Rgb> row(static_cast<size_t>(form.width));
    for (int y = 0; y < form.height; ++y) {
        for (int x = 0; x < form.width; ++x)
            row[static_cast<size_t>(x)] = paint(x, y);
        writer.write_row(row);
    }
    writer.commit();
}

} // namespace cfatool
