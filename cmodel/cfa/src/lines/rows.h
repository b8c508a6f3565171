// Where the line engine takes its rows from and where it gives them to.
#pragma once

#include "cmodel/cfa/src/lines/kernels/basics.h"

namespace cfa {

/// A row split by column parity; element i of half p is column 2*i + p.
struct SplitRow {
    const Sample *half[2];
};

/// Gives the rows of the mosaic in order, each once. Samples are 0..4095.
class RowSource {
  public:
    virtual ~RowSource() = default;
    /// Writes row y into its two halves.
    virtual void read(int y, Sample *even, Sample *odd) = 0;
};

/// Takes the rows of the three outputs, each output's rows in order. A row is valid until the call returns.
class RowSink {
  public:
    virtual ~RowSink() = default;
    virtual void rgb(int y, SplitRow red, SplitRow green, SplitRow blue) = 0;
    virtual void dc(int y, SplitRow row) = 0;
    virtual void gain(int y, SplitRow row) = 0; // u12, 1024 is 1.0
};

} // namespace cfa
