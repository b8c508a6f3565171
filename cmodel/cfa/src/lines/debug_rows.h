// Debug images written row by row, all of a run side by side.
#pragma once

#include <optional>
#include <vector>

#include "cmodel/cfa/src/lines/row_writer.h"
#include "cmodel/cfa/src/lines/rows.h"
#include "cmodel/cfa/src/planes.h"

namespace cfa {

/// The planes whose images the run in force writes, in the order of the model: that of the list, but that a
/// stage shows what it makes before what it makes it from, and its weights in the order of its arguments.
std::vector<const PlaneInfo *> shown_planes();

/// Whether all images of the run in force can be open at once, and an output at `rgb_path` with them: none
/// stands in the place of another, none is a FIFO. rgb_path may be null.
bool debug_rows_fit(const char *rgb_path = nullptr);

class DebugRows : public RowTaker {
  public:
    /// Opens the images of the run in force, in the order in which the model writes them.
    DebugRows(int width, int height);

    bool wants(const PlaneInfo &plane) const override;
    void row(const PlaneInfo &plane, int y, const SplitRow<int16_t> *channels) override;
    void row(const PlaneInfo &plane, int y, const SplitRow<int32_t> *channels) override;

  private:
    template <class T> void write(const PlaneInfo &plane, int y, const SplitRow<T> *channels);
    RowWriter &image_of(const PlaneInfo &plane);

    const int width_;
    const uint32_t pattern_;
    const std::vector<int32_t> zeros_;             // a half-row of either kind
    std::vector<std::optional<RowWriter>> images_; // as the list has their planes
};

} // namespace cfa
