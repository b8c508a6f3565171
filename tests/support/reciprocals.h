// The line engine's reciprocal held against the table, in a loop compiled as its kernels are.
#pragma once

#include <cstdint>

/// How many of `count` arguments from `first` on give another result than get_inv.
int64_t count_reciprocal_differences(int64_t first, int64_t count);

/// The same for reciprocal_below_2048 over its whole range.
int64_t count_reciprocal_below_2048_differences();
