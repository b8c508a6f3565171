// Where the line engine takes its rows from and where it gives them to.
#pragma once

#include <cstdint>

namespace cfa {

/// A row split by column parity; element i of half p is column 2*i + p.
template <class Sample> struct SplitRow { const Sample *half[2]; };

/// Gives the rows of the mosaic in order, each once.
template <class Sample> class RowSource {
  public:
    virtual ~RowSource() = default;
    /// Writes row y into its two halves.
    virtual void read(int y, Sample *even, Sample *odd) = 0;
};

/// Takes the rows of the three outputs, each output's rows in order. A row is valid until the call returns.
template <class Sample> class RowSink {
  public:
    virtual ~RowSink() = default;
    virtual void rgb(int y, SplitRow<Sample> red, SplitRow<Sample> green, SplitRow<Sample> blue) = 0;
    virtual void dc(int y, SplitRow<Sample> row) = 0;
    virtual void gain(int y, SplitRow<Sample> row) = 0; // u12, 1024 is 1.0
};

struct PlaneInfo;

/// Takes rows of planes (planes.h), every sample as it is, each plane's rows in order. Rows of several planes
/// may come from two threads at once.
class RowTaker {
  public:
    virtual ~RowTaker() = default;
    /// Whether it takes this plane. Asked before the first row.
    virtual bool wants(const PlaneInfo &plane) const = 0;
    /// A row of the plane's one channel or its three, valid until the call returns.
    virtual void row(const PlaneInfo &plane, int y, const SplitRow<int16_t> *channels) = 0;
    virtual void row(const PlaneInfo &plane, int y, const SplitRow<int32_t> *channels) = 0;
};

/// Runs the block on a picture from source to sink. REQUIRES cfa_lines_excludes to have nothing against the
/// registers and the size, and every sample to be within cfa_lines_take_samples; on 16-bit rows also that
/// cfa_lines_need_wide_rows does not ask for others. The taker of planes in force gets their rows; debug
/// images are written where they are wanted, all opened before the first row is read.
/// threads: 1 or 2; with 2, rows of the source, of the DC image and of some planes are asked for and given on
/// a thread of their own.
void run_line_engine(int width, int height, RowSource<int16_t> &source, RowSink<int16_t> &sink,
                     int threads = 1);
void run_line_engine(int width, int height, RowSource<int32_t> &source, RowSink<int32_t> &sink,
                     int threads = 1);

} // namespace cfa
