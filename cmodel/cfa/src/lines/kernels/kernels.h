// All kernels of the line engine, in pipeline order. Each computes `n` sites of one column parity of one row;
// rows are half-rows (line_buffer.h). A Sight is the neighbourhood in several rows. "Red/blue" sites carry
// the row's own colour, red or blue; the row's other sites are green.
#pragma once

#include <cstdint>

#include "cmodel/cfa/src/lines/kernels/basics.h"

namespace cfa::CFA_ROWS {

/// Local averages, u12.
void average_at_red_blue(Sight<2> raw, Sample *green, Sample *diagonal, Sample *own, int n);
void average_at_green(Sight<2> raw, Sample *green, Sample *horizontal, Sample *vertical, int n);

/// The directional green predictions at red/blue sites, u12, and the own colour minus each, s13.
struct GreenPrediction {
    Sample *h, *v;           // GH, GV
    Sample *diff_h, *diff_v; // raw - GH, raw - GV
};
void predict_green(Sight<2> raw, GreenPrediction out, int n);

/// One candidate's red and blue where the mosaic has another colour, u12, from differences s13 to its green.
///   along_row, along_column  the colours left and right, and above and below, of a green site
void predict_at_green(const Sample *raw, const Sample *diff_left, const Sample *diff_above,
                      const Sample *diff_below, Sample *along_row, Sample *along_column, int n);
void predict_at_red_blue(const Sample *green, const Sample *diff_left_above, const Sample *diff_left_below,
                         Sample *other, int n);

/// Local maximum of all colours over the 5 x 5 window without its corners: the maxima of three and of five
/// rows in each column, then the five columns.
void largest_of_columns(FiveSamples raw, Sample *of_three, Sample *of_five, int n);
void largest_of_window(FiveSamples of_three, FiveSamples of_five, Sample *out, int n);

/// Local maximum and minimum of each colour. along_row: the colour left and right of a green site.
struct Extremes {
    Sample *max, *min;
};
void green_extremes_at_red_blue(Sight<2> raw, Extremes green, int n);
void green_extremes_at_green(Sight<2> raw, Extremes green, int n);
void color_extremes_at_red_blue(Sight<2> raw, Extremes own, Extremes diagonal, int n);
void color_extremes_at_green(Sight<2> raw, Extremes along_row, Extremes along_column, int n);

/// Activity along rows and columns, 0..20475.
void activity_at_red_blue(Sight<2> raw, Sample *lh, Sample *lv, int n);
void activity_at_green(Sight<2> raw, Sample *lh, Sample *lv, int n);

/// The sharpening weights, units of 1/32, two to a word: entry 2k in the low byte of word[k].
struct SharpeningTable {
    Sample word[16];
    Sample activity_limit; // sharpening applies below it
};
/// The two green candidates at red/blue sites, sharpened and limited to the local green range, u12.
void sharpen_green(Sight<2> raw, const Sample *lh, const Sample *lv, Extremes green, SharpeningTable table,
                   Sample *candidate_h, Sample *candidate_v, int n);

/// What only is looked at: before and behind are the neighbours along the row or the column, ends those two
/// off. Green average, u12, and correction of the own colour, s13, at red/blue sites.
void green_low_pass(const Sample *before, const Sample *behind, Sample *out, int n);
void own_high_pass(const Sample *own, const Sample *end_before, const Sample *end_behind, Sample *out, int n);
/// Green over own colour at red/blue sites, Q12, 0..4095.
void green_ratio(const Sample *before, const Sample *behind, const Sample *own, const Sample *end_before,
                 const Sample *end_behind, Sample *out, int n);
/// At most 32767, and the larger of two.
void limited_activity(const Sample *activity, Sample *out, int n);
void larger(const Sample *a, const Sample *b, Sample *out, int n);

/// Variance at green sites, 0..131071, along the five samples of a line through the site (row or column).
///   red, blue        the candidate's colours
///   red_d, blue_d    their distances from its green
void variance_at_green(FiveSamples red, FiveSamples blue, FiveSamples red_d, FiveSamples blue_d, int32_t *sig,
                       int n);

/// |a - b| of two rows.
void distances(const Sample *a, const Sample *b, Sample *out, int n);
/// |row - (before + behind) / 2|: how far green lies from the two samples of a colour beside it.
void distances_from_mean(const Sample *row, const Sample *before, const Sample *behind, Sample *out, int n);
/// Spread of three neighbouring distances, 0..16380.
void outer_spread(const Sample *before, const Sample *centre, const Sample *behind, Sample *out, int n);
/// Variance at red/blue sites, 0..131071: the centre line of five distances and the spreads two lines off.
void variance_at_red_blue(FiveSamples centre, const Sample *outer_before, const Sample *outer_behind,
                          int32_t *sig, int n);

/// What the direction decision of one half-row reads beside the thresholds.
struct DirectionEvidence {
    const Sample *lh, *lv;        // activity
    const int32_t *sig_h, *sig_v; // variance
    const Sample *luma;           // of the average colour; green sites only
    const Sample *above_left;     // directions of the row above: [i] left, [i + 1] right
    const Sample *above;          //   and straight above
    const Sample *below_left;     // votes of the row below, likewise
    const Sample *below;          //
    const Sample *right;          // vote of the right neighbour
};
struct DirectionLimits {
    int32_t decisive;     // activity: reg_cfa_edgee_thd or reg_cfa_edgee_thd2
    int32_t edge_tol;     // activity tolerance, red/blue sites only, units of 1/256
    int32_t sig_decisive; // variance, red/blue sites only
    int32_t sig_tol;      // variance tolerance of the vote, units of 1/32
    int32_t luma;         // least luma of a vote, green sites only; 32767: never
};
/// The direction of a pixel hangs on that of its left neighbour, which is not known while a half-row is
/// computed. So each pixel gets three answers, one for each direction the left neighbour may turn out to
/// have. Directions are +1 (horizontal), 0 (blend), -1 (vertical).
struct DirectionByLeft {
    Sample *if_blend, *if_horizontal, *if_vertical;
};
void direction_at_red_blue(DirectionEvidence e, DirectionLimits limits, DirectionByLeft out, int n);
void direction_at_green(DirectionEvidence e, DirectionLimits limits, DirectionByLeft out, int n);
/// Luma of the average colour, u12: at green sites a pixel votes only from a least luma on.
void weighted_luma(const Sample *red, const Sample *green, const Sample *blue, Sample *luma, int n);
/// Votes of neighbours not decided yet: below, by activity where it is strong;
/// right, by variance, twice if strong.
void votes_of_neighbours(const Sample *lh, const Sample *lv, Sample strong, Sample *below, int n);
void vote_of_right(const int32_t *sig_h, const int32_t *sig_v, const Sample *lh, const Sample *lv,
                   Sample strong, Sample *right, int n);
/// From the three answers of each pixel to its direction, in three passes over pairs: an even column and the
/// odd one to its right. compose_pairs: the direction of the odd column for each direction left of the pair,
/// packed (direction.cpp). scan_pairs, the only serial loop of the engine: the direction left of every pair,
/// from left to right. resolve_pairs: with that known, the directions of both columns.
void compose_pairs(DirectionByLeft even, DirectionByLeft odd, uint32_t *step, int n);
void scan_pairs(const uint32_t *step, Sample *before, int pairs);
void resolve_pairs(DirectionByLeft even, DirectionByLeft odd, const Sample *before, Sample *direction_even,
                   Sample *direction_odd, int n);

/// Directions as the plane DirInfo holds them: 0, 1, 2 for 0, +1, -1.
void direction_codes(const Sample *direction, Sample *code, int n);

/// The weights of the two candidates where no direction is preferred: each at
/// least 1, and their sum's reciprocal.
struct BlendWeights {
    Sample *h, *v;
    int32_t *inverse; // Q15
};
void blend_weights(const int32_t *sig_h, const int32_t *sig_v, BlendWeights out, int n);
/// Range of the 3 x 3 neighbourhood of the mosaic, whatever its colours.
void neighbourhood_range(Sight<1> raw, Sample *low, Sample *high, int n);
/// One of two candidates by direction, or their blend, u12.
void choose(const Sample *h, const Sample *v, const Sample *direction, BlendWeights weights, Sample *out,
            int n);
/// The same limited to a range.
void choose_within(const Sample *h, const Sample *v, const Sample *direction, BlendWeights weights,
                   const Sample *low, const Sample *high, Sample *out, int n);

/// The 3 x 3 binomial low-pass, truncated; limited to 12 bits.
void binomial_3x3(Sight<1> rows, Sample *out, int n);
void binomial_3x3_u12(Sight<1> rows, Sample *out, int n);

/// A curve from level y0 at the knee x0 on. On narrow rows the slope must not contradict the levels: it is
/// not negative for y0 <= y1 and not positive for y0 > y1. Products with arguments of 13 bits fit 32 bits.
struct Curve {
    int32_t x0, y0, slope;
    int32_t low, high; // the smaller and the larger of y0 and y1; on wide rows only y1 limits
};

/// Registers of the luma-moire stage.
struct LumaMoireSettings {
    bool all_colors; // red and blue count in the detail, not green alone
    int32_t noise;
    Curve detail, edge, output; // slopes with 6 fractional bits
    Sample lpf_w, dc_w;         // of 256
};
/// A low-passed maximum and minimum, and their difference.
struct Range {
    const Sample *max, *min;

    constexpr Sample at(Index i) const { return static_cast<Sample>(max[i] - min[i]); }
    constexpr Range from(Index first) const { return {max + first, min + first}; }
};
struct ThreeRanges {
    Range of[3]; // green is 1; red and blue are read where all colours count
};
/// The four steps between five green predictions in a line, 0..16380.
void sum_of_steps(FiveSamples green, Sample *sum, int n);
/// The larger of the two gradient sums over 5 x 5 green predictions, 0..81900.
///   columns  vertical steps of green_h, five columns along the row
///   rows     horizontal steps of green_v, five rows down the column
/// Kept: vertical steps are those of the horizontal prediction, horizontal steps those of the vertical one.
void gradient_sum(FiveSamples columns, FiveSamples rows, int32_t *out, int n);
void luma_moire_weight(ThreeRanges ranges, const int32_t *gradient, LumaMoireSettings settings,
                       Sample *weight, int n);
/// Its factors, u8: detail and edge.
void luma_moire_factors(ThreeRanges ranges, const int32_t *gradient, LumaMoireSettings settings,
                        Sample *detail, Sample *edge, int n);
void average_luma(const Sample *red, const Sample *green, const Sample *blue, Sample *luma, int n);
void remove_luma_moire(Sight<0> color, const Sample *average, const Sample *luma, const Sample *weight,
                       LumaMoireSettings settings, Sample *out, int n);

/// Registers of the colour-moire statistics.
struct ColorDistanceSettings {
    Curve saturation, hue;   // slopes with 10 fractional bits
    Sample protected_hue[3]; // 0..4095
    Sample out_of_reach[3];  // 0, or 16384 for a hue that is not protected
};
/// High for a pale colour far from the protected hues, 0..4095.
void color_distance_weight(const Sample *red, const Sample *green, const Sample *blue,
                           ColorDistanceSettings settings, Sample *weight, int n);

/// Sums of five green predictions along the row or down the column, 0..20475.
void sum_of_five(FiveSamples green, Sample *sum, int n);

/// The coefficients a and b, s13, of two groups of samples that the diagonal kernels swap.
struct SwappedPair {
    Sample b, sum, difference; // a + b, a - b
};
/// The two 5 x 5 kernels.
struct DirectionalKernels {
    Sample line0, line1, line2; // 0 and 90 degrees: centre line, next, outer
    int32_t line_constant;      // 20475 * (line1 + line2)
    Sample c0, c3, c6;          // on narrow rows doubled
    SwappedPair c15, c28, c47;
};
/// Spread of the four directional responses over 5 x 5 green predictions, 0..16380.
///   columns  column sums of green_v along the row
///   rows     row sums of green_h down the column
void directional_spread_at_red_blue(Sight<2> green_h, Sight<2> green_v, FiveSamples columns, FiveSamples rows,
                                    DirectionalKernels kernels, Sample *spread, int n);
void directional_spread_at_green(Sight<2> green_h, Sight<2> green_v, FiveSamples columns, FiveSamples rows,
                                 DirectionalKernels kernels, Sample *spread, int n);
struct EdgeWeightSettings {
    int32_t luma_target; // 0: no gain
    Curve edge;
};
void edge_spread_weight(const Sample *spread, const Sample *green, EdgeWeightSettings settings,
                        Sample *weight, int n);

/// First differences along the row of one prediction and down the column of the other, +-8190.
void first_difference_row(Sight<0> green_h, Sample *out, int n);
void first_difference_column(FiveSamples green_v, Sample *out, int n);
/// Fourth differences across them, magnitude, and the weight through the curve, 0..4095.
void phase_difference_weight(Sight<0> first_v, FiveSamples first_h, Curve curve, Sample *weight, int n);

/// Colour-moire removal.
void largest_of_three(const Sample *above, const Sample *row, const Sample *below, Sample *out, int n);
void largest_of_seven(Sight<0> row, Sample *out, int n);
void mix_edges(const Sample *widened, const Sample *edge, const Sample *phase, Sample *mix, int n);
void removal_weight(Sight<0> mix, Sight<1> color_distance, Sample *weight, int n);
void remove_color_moire(const Sample *green, const Sample *weight, Sample strength, Sample *color, int n);

/// Sharpen gain.
struct SharpenSettings {
    Sample remove_spikes; // all ones or 0
    Sample threshold_hf, threshold_mf;
    int32_t weight_hf, weight_mf; // of 128
    int32_t min_y, min_gain, max_gain;
    Sample gain; // of 32
};
/// Cored detail, +-4095, and the rgb luma that the gain is normalised by.
void sharpen_detail(Sight<1> bayer_luma, const Sample *red, const Sample *green, const Sample *blue,
                    SharpenSettings settings, Sample *detail, Sample *luma, int n);
/// The luma that both details are taken from, and a - b.
void remove_spikes(Sight<1> bayer_luma, SharpenSettings settings, Sample *out, int n);
void difference(const Sample *a, const Sample *b, Sample *out, int n);
void sharpen_gain(const Sample *detail, const Sample *luma, SharpenSettings settings, Sample *gain, int n);
void add_detail(const Sample *detail, SharpenSettings settings, Sample *color, int n);

} // namespace cfa::CFA_ROWS
