// The line engine: the enabled block row by row through line buffers, as the silicon does it. One
// row in, and every stage advances by one row; at most eight rows of a plane are alive, and the
// picture leaves five rows later.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <variant>
#include <vector>

#include "cmodel/cfa/src/lines/kernels/kernels.h"
#include "cmodel/cfa/src/lines/line_buffer.h"
#include "cmodel/cfa/src/lines/rows.h"
#include "cmodel/cfa/src/lines/settings.h"
#include "cmodel/cfa/src/lines/side_by_side.h"

namespace cfa::CFA_ROWS {

/// A row of a plane of one channel or three, of either kind of samples.
using TappedRow = std::variant<std::array<SplitRow<int16_t>, 3>, std::array<SplitRow<int32_t>, 3>>;

class LineEngine {
  public:
    /// `taker` may be null: nobody wants rows of planes. threads: 1, or 2.
    LineEngine(int width, int height, const EngineSettings &settings, RowSource<Sample> &source,
               RowSink<Sample> &sink, RowTaker *taker, int threads);
    void run();

    /// One line of the schedule: at each step t a stage computes row t - lag.
    struct Stage {
        void (LineEngine::*compute)(int y);
        int lag;
        bool EngineSettings::*only_if; // null: always
    };

    /// How a row of a plane is seen: behind the stage that has made it.
    struct Tap {
        const char *plane;
        void (LineEngine::*behind)(int y);
        TappedRow (*row)(LineEngine &engine, int y);
    };

  private:
    /// A stage, or a tap, that this run needs.
    struct Step {
        int lag;
        void (LineEngine::*compute)(int y); // null: a tap
        TappedRow (*row)(LineEngine &engine, int y);
        const PlaneInfo *plane;
    };
    enum class Part { all, front, back };
    std::vector<Step> steps(Part part) const;
    void run(const std::vector<Step> &steps, int t);
    void take(const Step &step, int y);

    // What taps show beside the planes of the stages (engine_taps.cpp).
    static std::span<const Tap> taps();
    struct Pair {
        const Sample *before, *behind;
    };
    Pair beside(int y, int distance) const; // of the red/blue sites, along the row
    Pair across(int y, int distance) const; // along the column
    static TappedRow candidate(const std::array<Lines, 2> &color, const Lines &green, int y);
    TappedRow green_average(int y, Pair greens);
    TappedRow own_correction(int y, Pair ends);
    TappedRow ratio(int y, Pair greens, Pair ends);
    TappedRow activity(const Lines &plane, int y);
    TappedRow larger_activity(int y);
    TappedRow luma_factor(bool detail);
    TappedRow directions(int y);
    enum class Detail { source, low_passed, high, medium };
    TappedRow detail_source(int y, Detail what);

    // The stages, in the order of the schedule (engine.cpp). Each computes row y of its planes.
    void read(int y);
    void average(int y);
    void predict_greens(int y);
    void find_green_extremes(int y);
    void find_color_extremes(int y);
    void find_largest(int y);
    void measure_rows(int y);
    void predict_colors(int y);
    void measure_green_distances(int y);
    void write_dc(int y);
    void weigh_luma_moire(int y);
    void weigh_color_moire(int y);
    void weigh_phase_difference(int y);
    void cast_votes(int y);
    void low_pass_mosaic(int y);
    void measure_variance(int y);
    void decide_direction(int y);
    void reconstruct(int y);
    void remove_luma(int y);
    void remove_color(int y);
    void sharpen(int y);
    void write_row(int y);

    // A row carries green and one of red and blue. color_parity: the column parity, 0 or 1, of its red or
    // blue sites; own_color: which of the two, 0 red, 1 blue.
    int color_parity(int y) const { return settings_.first_color_parity ^ (y & 1); }
    int own_color(int y) const { return settings_.first_color ^ (y & 1); }
    Lines lines(int rows) const { return Lines(width_, height_, rows); }
    // Written by the front part of the schedule, read by the back one: on a thread of its own the front is
    // ahead.
    Lines ahead(int rows) const { return lines(rows + (threads_ > 1 ? FRONT_LEAD : 0)); }
    static FiveSamples along_row(const Lines &plane, int y, int parity);
    static FiveSamples along_column(const Lines &plane, int y, int parity);
    void decide_half(int y, int parity, DirectionByLeft out, bool may_vote, int first, int count);
    DirectionEvidence evidence(int y, int parity, int first) const;
    void predict_candidate(int y, const Lines &green, const Lines &difference, std::array<Lines, 2> &color,
                           std::array<Lines, 2> &distance);

    const int width_;
    const int height_;
    const int n_; // padded elements of a half-row
    const EngineSettings settings_;
    RowSource<Sample> &source_;
    RowSink<Sample> &sink_;
    RowTaker *const taker_;
    const int threads_;

    // Planes: the number is how many rows are alive, counted from the stage that writes to the last that
    // reads. Pairs of colours are red, blue; pairs of candidates are horizontal, vertical.
    Lines raw_ = ahead(8);
    Lines average_[3] = {ahead(4), ahead(4), ahead(4)};
    Lines green_h_ = lines(5), green_v_ = lines(5);           // raw at green sites
    Lines difference_h_ = lines(3), difference_v_ = lines(3); // raw - green at red/blue sites
    Lines candidate_h_ = ahead(4), candidate_v_ = ahead(4);   // sharpened, at red/blue sites
    Lines activity_h_ = ahead(4), activity_v_ = ahead(4);
    Lines column_of_three_ = lines(1), column_of_five_ = lines(1), largest_ = lines(3);
    Lines first_h_ = lines(5), row_sum_ = lines(5); // of green_h along the row
    std::array<Lines, 2> color_h_{ahead(3), ahead(3)}, color_v_{ahead(5), ahead(5)};
    std::array<Lines, 2> distance_h_{ahead(3), ahead(3)}, distance_v_{ahead(5), ahead(5)}; // from their green
    // At green sites: distance of green from the mean of its left and right, and of its upper and lower
    // neighbours.
    Lines beside_ = ahead(3), across_ = ahead(4);
    // At red/blue sites: spread of three such distances along the row, down the column.
    Lines outer_h_ = ahead(5), outer_v_ = lines(1);
    LineBuffer<int32_t> sig_h_{width_, height_, 1}, sig_v_{width_, height_, 1};
    Lines luma_ = lines(1), vote_below_ = lines(3), vote_right_ = lines(1), direction_ = lines(2);
    Lines forced_ = lines(1); // every row's direction, where one is forced
    Lines by_left_[3] = {lines(1), lines(1), lines(1)};
    Lines pair_before_ = lines(1);
    LineBuffer<uint32_t> pair_step_{width_, height_, 1};
    Lines weight_h_ = lines(1), weight_v_ = lines(1);
    LineBuffer<int32_t> weight_inverse_{width_, height_, 1};
    Lines range_low_ = lines(1), range_high_ = lines(1);
    Lines extreme_max_[3] = {lines(4), lines(4), lines(4)}, extreme_min_[3] = {lines(4), lines(4), lines(4)};
    Lines luma_weight_ = ahead(2),
          range_rows_[6] = {lines(1), lines(1), lines(1), lines(1), lines(1), lines(1)};
    Lines column_steps_ = lines(1), row_steps_ = lines(5); // of green_h down, of green_v along the row
    LineBuffer<int32_t> gradient_{width_, height_, 1};
    Lines color_distance_ = ahead(3), column_sum_ = lines(1), spread_ = lines(1), edge_ = ahead(3);
    Lines first_v_ = lines(1), phase_ = ahead(2), widest_ = lines(1), mix_ = lines(1), pull_ = lines(1);
    Lines mosaic_luma_ = lines(3), detail_ = lines(1), rgb_luma_ = lines(1), gain_ = lines(1);
    Lines rgb_[3] = {lines(1), lines(1), lines(1)}, smoothed_[3] = {lines(1), lines(1), lines(1)};
    Lines dc_ = lines(1);
    // What only taps show.
    Lines zeros_ = lines(1), seen_early_ = lines(1), not_seen_ = lines(1);
    Lines seen_late_ = lines(1), low_passed_ = lines(1);
};

} // namespace cfa::CFA_ROWS
