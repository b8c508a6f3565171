// Sums of files and of outputs: 128 bits of XXH3, as xxh128sum prints them.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace cfatool {

struct Sum {
    uint64_t high = 0, low = 0;
    auto operator<=>(const Sum &) const = default;
};

/// 32 hexadecimal digits, and back. Throws Trouble for any other text.
std::string sum_text(const Sum &sum);
Sum read_sum(std::string_view text);

/// Sums bytes piece by piece.
class Summer {
  public:
    Summer();
    void add(const void *bytes, size_t size);
    void add(const Sum &sum) { add(&sum, sizeof sum); }
    void add(std::string_view text); // and its length
    Sum sum() const;

    /// Begins with the header that cfa_cmodel writes; channels are 1 or 3.
    static Summer of_picture(int channels, int width, int height, uint32_t bit_depth);

  private:
    std::shared_ptr<void> state_;
};

Sum sum_of_text(std::string_view text);

/// Throws Trouble.
Sum sum_of_file(const std::string &path);

/// The outputs in the order in which every list here has them.
inline constexpr const char *OUTPUT_FILES[] = {"out.ppm", "out_dc.ppm", "out_sg.ppm"};

/// One sum an output, of the file that cfa_cmodel writes.
using OutputSums = std::array<Sum, 3>;

/// The three with a blank between, and back. Throws Trouble for any other text.
std::string sums_text(const OutputSums &sums);
OutputSums read_sums(std::string_view text);

/// The sum of a picture file as if cfa_cmodel had written its header. Throws Trouble.
Sum sum_of_picture(const std::string &path);

/// The sums of OUTPUT_FILES in a folder. Throws Trouble.
OutputSums sums_of_outputs(const std::string &folder);

/// Recorded sums by case name: lines "RGB DC GAIN<tab>CASE". Those that are not wanted are passed over.
/// Throws Trouble.
using RecordedSums = std::map<std::string, OutputSums>;
RecordedSums read_recorded_sums(const std::string &path,
                                const std::function<bool(const std::string &name)> &wanted);
std::string recorded_sums_line(const std::string &name, const OutputSums &sums);

} // namespace cfatool
