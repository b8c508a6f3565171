// Registers against each other: slopes against levels, lower against upper limits.
#include <fmt/core.h>

#include "tools/cfatool/registers/regs_check.h"

namespace cfatool {
namespace {

/// The registers of one curve; x1 is null for a curve that has none.
struct Curve {
    std::string name;
    const RegisterInfo *x0 = nullptr, *y0 = nullptr, *slope = nullptr, *x1 = nullptr, *y1 = nullptr;
};

std::vector<Curve> curves_of(const RegisterTable &table) {
    std::vector<Curve> curves;
    for (const RegisterInfo &info : table.registers) {
        if (info.curve.role == CurveRole::none)
            continue;
        if (curves.empty() || curves.back().name != info.curve.name)
            curves.push_back({info.curve.name});
        Curve &curve = curves.back();
        const std::pair<CurveRole, const RegisterInfo **> roles[] = {{CurveRole::x0, &curve.x0},
                                                                     {CurveRole::y0, &curve.y0},
                                                                     {CurveRole::slope, &curve.slope},
                                                                     {CurveRole::x1, &curve.x1},
                                                                     {CurveRole::y1, &curve.y1}};
        for (const auto &[role, place] : roles)
            if (role == info.curve.role)
                *place = &info;
    }
    return curves;
}

/// The line of the slope if the file sets it, else the last line that sets any register of the curve, else 0.
int line_of(const Curve &curve, const std::map<const RegisterInfo *, int> &lines) {
    int last = 0;
    for (const RegisterInfo *info : {curve.slope, curve.x0, curve.y0, curve.x1, curve.y1}) {
        const auto line = lines.find(info);
        if (line == lines.end())
            continue;
        if (info == curve.slope)
            return line->second;
        last = std::max(last, line->second);
    }
    return last;
}

std::string named(const RegisterInfo &info, int64_t value) {
    return fmt::format("{} = {}", info.key, value);
}

/// The slope against what the four corners ask for.
void check_slope(const Curve &curve, int64_t slope, int64_t rise, int64_t run, int line,
                 std::vector<Finding> &findings) {
    const int64_t wanted =
        rise * (int64_t{1} << curve.slope->curve.fraction_bits) / run; // truncated toward zero
    const int bits = curve.slope->bits;
    const std::string formula =
        fmt::format("(y1 - y0) * 2^{} / (x1 - x0) = {}", curve.slope->curve.fraction_bits, wanted);
    if (wanted < cfa::register_min(bits, true) || wanted > cfa::register_max(bits, true))
        findings.push_back({line, fmt::format("curve {}: {} bits of {} cannot hold {}", curve.name, bits,
                                              curve.slope->key, formula)});
    else if (slope < wanted - 1 || slope > wanted + 1)
        findings.push_back(
            {line, fmt::format("curve {}: {} is not {}", curve.name, named(*curve.slope, slope), formula)});
}

void check_curve(const Curve &curve, const RegisterPart &part, int line, std::vector<Finding> &findings) {
    const int64_t y0 = curve.y0->read(part), y1 = curve.y1->read(part), slope = curve.slope->read(part);
    const bool contradicts = y1 < y0 ? slope > 0 : slope < 0;
    if (contradicts)
        findings.push_back(
            {line, fmt::format("curve {}: {} leads away from {} (starts at {})", curve.name,
                               named(*curve.slope, slope), named(*curve.y1, y1), named(*curve.y0, y0))});
    if (curve.x1 == nullptr)
        return;
    const int64_t x0 = curve.x0->read(part), x1 = curve.x1->read(part);
    if (x1 <= x0)
        findings.push_back({line, fmt::format("curve {}: {} is not above {}", curve.name,
                                              named(*curve.x1, x1), named(*curve.x0, x0))});
    else if (!contradicts)
        check_slope(curve, slope, y1 - y0, x1 - x0, line, findings);
}

} // namespace

void check_consistency(Registers &registers, const std::map<const RegisterInfo *, int> &lines,
                       std::vector<Finding> &findings) {
    for (const BlockPart &p : registers.parts())
        for (const Curve &curve : curves_of(*p.table))
            if (const int line = line_of(curve, lines); line > 0)
                check_curve(curve, *p.part, line, findings);

    const FoundRegister low = find_register(registers, "reg_cfa_shpn_min_gain");
    const FoundRegister high = find_register(registers, "reg_cfa_shpn_max_gain");
    int line = 0;
    for (const RegisterInfo *info : {low.info, high.info})
        if (const auto at = lines.find(info); at != lines.end())
            line = std::max(line, at->second);
    const int32_t least = low.info->read(*low.where.part), most = high.info->read(*high.where.part);
    if (line > 0 && least > most)
        findings.push_back({line, fmt::format("{} is above {}: the gain is {} everywhere",
                                              named(*low.info, least), named(*high.info, most), most)});
}

} // namespace cfatool
