// Register values at random: what finds faults is drawn more often than chance would.
#pragma once

#include <cstdint>
#include <functional>

#include "cmodel/common/register_block.h"

namespace cfatool {

/// Of 64 random bits: an end of low..high, the value beside it, a value of any magnitude (thresholds near the
/// data are small), a round one (products meet thresholds and halves exactly), or any at all.
int64_t drawn_value(uint64_t random, int64_t low, int64_t high);

/// Turns the slopes of the block's curves that lead away from their limit. Slopes, levels and limits are read
/// and stored through the two functions.
void let_slopes_agree(const std::function<int64_t(const cfa::RegisterInfo &)> &read,
                      const std::function<void(const cfa::RegisterInfo &, int64_t)> &store);

} // namespace cfatool
