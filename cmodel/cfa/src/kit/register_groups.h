// Registers that belong together, as the stages and the line engine read them:
// curves, kernels, hues, the table.
#pragma once

#include <array>
#include <cstdint>

namespace cfa {

/// The pattern id in force, 0 to 15.
uint32_t pattern_id();

/// A curve's registers: level y0 up to the knee x0, from there along the slope to the limit y1.
struct CurveRegisters {
    int32_t x0, y0, slope, y1;

    /// Whether the slope leads away from y1: the curve then leaves the range between its levels.
    bool contradicts() const { return y0 <= y1 ? slope < 0 : slope > 0; }
};

/// The curves of the luma-moire stage: 6 fractional bits of slope, levels u9.
struct LumaMoireCurves {
    CurveRegisters detail, edge, output;
    bool contradict() const { return detail.contradicts() || edge.contradicts() || output.contradicts(); }
};
LumaMoireCurves luma_moire_curves();

/// The curves of the colour-moire stages: 10 fractional bits of slope, levels u12.
struct ColorMoireCurves {
    CurveRegisters saturation, hue, phase, edge;
    bool contradict() const {
        return saturation.contradicts() || hue.contradicts() || phase.contradicts() || edge.contradicts();
    }
};
ColorMoireCurves color_moire_curves();

/// The three protected hues, eighths of a degree.
struct ProtectedHue {
    bool enabled;
    int32_t hue; // 0..4095
};
std::array<ProtectedHue, 3> protected_hues();

/// Coefficients s13 of the directional 5 x 5 kernels, by distance from the centre line (straight) and by
/// class of position (diagonal).
struct DirectionalCoefficients {
    std::array<int32_t, 3> straight;
    std::array<int32_t, 9> diagonal;
};
DirectionalCoefficients directional_coefficients();

/// Entry 0 to 31 of the green sharpening table: 0..63 in units of 1/32.
int32_t sharpening_entry(int index);

} // namespace cfa
