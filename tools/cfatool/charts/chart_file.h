// Charts as mosaics in files.
#pragma once

#include <string>

#include "tools/cfatool/charts/charts.h"

namespace cfatool {

/// Noise of a chart by default, in thousandths of a sample step of this form.
int64_t default_noise(const Chart &chart, const MosaicForm &form);

/// Writes a chart as a mosaic of this form. Of the canvas, seed, period, angle and colour are taken as they
/// are; the form gives the rest, and the chart the form's `full`. Throws Trouble.
void write_chart(const std::string &path, const Chart &chart, MosaicForm form, Canvas canvas);

} // namespace cfatool
