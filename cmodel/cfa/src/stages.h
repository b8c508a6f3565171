// clang-format off
// The stages of the block in pipeline order. Radius: how far a stage reads from the pixel it writes.
//
// | stage                      | reads (radius)                    | writes                          | registers              |
// |----------------------------|-----------------------------------|---------------------------------|------------------------|
// | cfa_CalAvg                 | raw (2)                           | AvgRGB                          | -                      |
// | cfa_CalPredictPixel        | raw (2), its own green (1)        | GH GV, their lp hp, Max, Min    | -                      |
// | cfa_CalClassifier          | raw (2)                           | LH LV LMax RatioH RatioV        | -                      |
// | cfa_CalVarOfColorDiffAtG   | GH GV (2)                         | SigH SigV at green sites        | -                      |
// | cfa_CalVarOfColorDiffAtRB  | raw (3), GH GV (2)                | SigH SigV at red and blue sites | -                      |
// | cfa_CalDirectionInfo       | AvgRGB (0), L Sig (1), itself (1) | DirInfo                         | edge, sig, vote limits |
// | cfa_CalRGB                 | raw (1), the planes above (0)     | cfa_RGB                         | force_dir, ghp         |
// | cfa_DeYMoire               | cfa_RGB Max Min (1), GH GV (2)    | YMoire                          | ymoire                 |
// | cfa_CalColorMoireSts       | AvgRGB (0), GH GV (2)             | cdist_wt edge_wt                | cmoire sat ptclr edge  |
// | cfa_CalPhaseDifference     | GH GV (2)                         | pd_wt                           | cmoire_pd              |
// | cfa_DeColorMoire           | YMoire (0), weights (1, edge 4)   | CMOut                           | cmoire enable, strth   |
// | copy_to_dst                | CMOut (0)                         | RGB output                      | -                      |
// | gen_MaxRGB_1ch, gen_dst_dc | Max (1)                           | DC output                       | -                      |
// | sharpen_gain_main_proc     | raw (2), RGB output (0)           | sharpen gain, RGB output        | shpn                   |
//
// raw, AvgRGB and every other plane have the same width and height; a plane has one channel unless its comment
// says three. Channel 0 holds the colour of code-3 sites, 1 green, 2 the colour of code-0 sites. All arithmetic is
// signed, 32 bits wide and wraps; right shifts are arithmetic. bayer_id is the pattern id, 0 to 15.
// clang-format on
#pragma once

#include <cstdint>

#include "cmodel/common/frame.h"

/// Smooth local estimate of all three colours.
///   raw     mosaic, u12
///   AvgRGB  three channels, u12, clipped
void cfa_CalAvg(const FRAME *raw, FRAME *AvgRGB, uint32_t bayer_id);

/// Two candidate pictures, one with green interpolated along the row, one along the column.
///   GH, GV          three channels, u12, clipped but for green at green sites
///   GH_lp, GV_lp    green average along the direction, u12; the raw sample at green sites
///   GH_hp, GV_hp    correction of the own colour, s13; 0 at green sites
///   MaxRGB, MinRGB  three channels: local maximum and minimum of the raw samples of each colour
void cfa_CalPredictPixel(const FRAME *raw, FRAME *GH, FRAME *GV, FRAME *GH_lp, FRAME *GH_hp, FRAME *GV_lp,
                         FRAME *GV_hp, FRAME *MaxRGB, FRAME *MinRGB, uint32_t bayer_id);

/// Activity along rows and columns, and the green-to-own-colour ratio at red and blue sites.
///   LH, LV          0..32767, clipped
///   LMax            the larger of the unclipped two
///   RatioH, RatioV  Q12, 0..4095; 0 at green sites; a zero denominator saturates to 4095
void cfa_CalClassifier(const FRAME *raw, FRAME *LH, FRAME *LV, FRAME *LMax, FRAME *RatioH, FRAME *RatioV,
                       uint32_t bayer_id);

/// Variation of the colour difference along each direction, at green sites only.
///   SigH, SigV  0..131071; other sites are left as they are
void cfa_CalVarOfColorDiffAtG(const FRAME *raw, const FRAME *GH, const FRAME *GV, FRAME *SigH, FRAME *SigV,
                              uint32_t bayer_id);

/// The same at red and blue sites.
///   Diff0H .. Diff3V  scratch planes of the caller, filled everywhere: distance of the green prediction
///                     from a bilinear estimate of the code-0 or the code-3 colour
void cfa_CalVarOfColorDiffAtRB(const FRAME *raw, const FRAME *GH, const FRAME *GV, FRAME *Diff0H,
                               FRAME *Diff0V, FRAME *Diff3H, FRAME *Diff3V, FRAME *SigH, FRAME *SigV,
                               uint32_t bayer_id);

/// The direction along which a pixel is interpolated: 0 blend, 1 horizontal, 2 vertical.
///   DirInfo  REQUIRES 0 everywhere on entry; sites of other codes than 0 to 3 stay 0
void cfa_CalDirectionInfo(const FRAME *raw, const FRAME *AvgRGB, const FRAME *LH, const FRAME *LV,
                          const FRAME *SigH, const FRAME *SigV, FRAME *DirInfo, uint32_t bayer_id);

/// Nine neighbours vote on the direction of pixel (x, y); adds to *votes_h and *votes_v.
/// Positions outside are mirrored.
void cfa_Vote(int x, int y, int32_t centre_dir, int32_t *votes_h, int32_t *votes_v, const FRAME *SigH,
              const FRAME *SigV, const FRAME *LH, const FRAME *LV, const FRAME *DirInfo);

/// 1 in the first row and in the first and last column, else 0. Kept: the last row does not count.
int32_t isAtBoundary(const FRAME *frame, int x, int y);

/// The demosaiced picture, u12. GV_lp stands before GH_hp.
void cfa_CalRGB(const FRAME *raw, FRAME *rgb_out, const FRAME *GH, const FRAME *GV, const FRAME *GH_lp,
                const FRAME *GV_lp, const FRAME *GH_hp, const FRAME *GV_hp, const FRAME *MaxRGB,
                const FRAME *MinRGB, const FRAME *SigH, const FRAME *SigV, const FRAME *LMax,
                const FRAME *RatioH, const FRAME *RatioV, const FRAME *DirInfo, uint32_t bayer_id);

/// Green, u12, at a red or blue site.
int32_t cfa_CalGPixel(const FRAME *raw, int x, int y, const FRAME *GH, const FRAME *GV, const FRAME *MaxRGB,
                      const FRAME *MinRGB, const FRAME *GH_lp, const FRAME *GH_hp, const FRAME *GV_lp,
                      const FRAME *GV_hp, const FRAME *SigH, const FRAME *SigV, const FRAME *LMax,
                      const FRAME *RatioH, const FRAME *RatioV, const FRAME *DirInfo);

/// The two green candidates, sharpened and limited to the local green range. raw and
/// DirInfo are not used. Returns 0.
int32_t cfa_CalGHPWeight(const FRAME *raw, int x, int y, const FRAME *GH, const FRAME *GV, const FRAME *GH_lp,
                         const FRAME *GH_hp, const FRAME *GV_lp, const FRAME *GV_hp, const FRAME *MaxRGB,
                         const FRAME *MinRGB, const FRAME *LMax, const FRAME *RatioH, const FRAME *RatioV,
                         const FRAME *DirInfo, int32_t *gh_out, int32_t *gv_out);

/// Red (target 3) or blue (target 0), u12, where the mosaic does not carry it; any other target gives 0.
int32_t cfa_CalRBPixel(const FRAME *raw, int x, int y, const FRAME *GH, const FRAME *GV, const FRAME *SigH,
                       const FRAME *SigV, const FRAME *DirInfo, int32_t target);

/// Weights of the horizontal and the vertical candidate, each at least 1, from the variance of the OTHER
/// direction, and the Q15 reciprocal of their sum.
void cfa_GetHVWtbySig(int32_t sig_h, int32_t sig_v, int32_t *w_h, int32_t *w_v, int64_t *inv);

/// Luma moire removal: pulls a pixel to a smoothed value by its moire weight; a copy when disabled.
///   rgb, out  three channels, u12
void cfa_DeYMoire(const FRAME *rgb, const FRAME *avg, const FRAME *max_rgb, const FRAME *min_rgb,
                  const FRAME *gh, const FRAME *gv, FRAME *out);

/// Luma-moire weight, at most 255 (a negative curve value stays negative), from the low-passed
/// colour maxima and minima. Returns 0.
int32_t cfa_CalYMoireWgt(const FRAME *gh, const FRAME *gv, const FRAME *max_lpf, const FRAME *min_lpf,
                         FRAME *wgt);

/// 3 x 3 binomial low-pass of each of three channels, truncated.
void cfa_LpfFrame(const FRAME *src, FRAME *dst);

/// Colour-moire statistics: how far a pixel may lose its colour, how unequal its directional responses are.
///   cdist_wt, edge_wt  as their curves give, 0..4095 for curves whose slopes agree with their levels
void cfa_CalColorMoireSts(const FRAME *avg, const FRAME *gh, const FRAME *gv, FRAME *cdist_wt,
                          FRAME *edge_wt);

/// Phase difference: residue at the Nyquist frequency on which the two green predictions disagree.
///   pd_wt  as its curve gives, 0..4095
void cfa_CalPhaseDifference(const FRAME *raw, const FRAME *gh, const FRAME *gv, FRAME *pd_wt);

/// Colour-moire removal: pulls red and blue toward green by the combined weight; a copy when disabled.
void cfa_DeColorMoire(const FRAME *in_rgb, FRAME *out_rgb, const FRAME *pd_wt, const FRAME *cdist_wt,
                      const FRAME *edge_wt);

/// Copies every channel of src. A smaller dst is addressed with its own size, mirrored, so that later samples
/// go over earlier ones. REQUIRES dst to have as many channels, and a pixel.
void copy_to_dst(const FRAME *src, FRAME *dst);

/// The largest of the three channels.
void gen_MaxRGB_1ch(const FRAME *src, FRAME *dst);

/// 3 x 3 binomial low-pass, truncated, at most 4095.
void gen_dst_dc(const FRAME *src, FRAME *dst);

/// Sharpen-gain map, 1024 is 1.0, and the sharpening detail added into rgb_out.
/// Disabled: 1024 everywhere, rgb_out as it is.
void sharpen_gain_main_proc(const FRAME *raw, FRAME *rgb_out, FRAME *sg_out);

namespace cfa {
/// Logs the strength of the sharpening, as both the model and the engine do, once a run.
void log_sharpening_strength(int32_t gain);
} // namespace cfa

// Sub-steps of the sharpen gain. Lumas and gains are u12, details signed.
void sharpen_gain_bypass(FRAME *sg_out);
void sharpen_gain_proc(const FRAME *raw, FRAME *rgb_out, FRAME *sg_out);
void sg_get_bayer_luma(const FRAME *raw, FRAME *out);
void sg_get_rgb_luma(const FRAME *rgb, FRAME *out);
void sg_preprocess(const FRAME *in, FRAME *out);
int32_t sg_SelMin(const int32_t block[9]); // of the eight around the centre block[4]
int32_t sg_SelMax(const int32_t block[9]);
void sg_get_dalta_HF(const FRAME *rgb_luma, const FRAME *spike_removed, FRAME *out);
void sg_get_bayer_luma_lpf(const FRAME *bayer_luma, FRAME *out);
void sg_get_delta_MF(const FRAME *spike_removed, const FRAME *lpf, FRAME *out);
void sg_coring_proc(const FRAME *MF, const FRAME *HF, FRAME *out);
void get_sharpen_gain(const FRAME *rgb_luma, const FRAME *cored, FRAME *sg_out);
void apply_sharpen_gain_rgb(FRAME *rgb_out, const FRAME *cored);
