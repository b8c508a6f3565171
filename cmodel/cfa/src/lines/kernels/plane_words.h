// Rows of planes as debug images show them and as exact planes hold them.
#pragma once

#include "cmodel/cfa/src/lines/kernels/basics.h"
#include "cmodel/cfa/src/lines/rows.h"

namespace cfa {

/// |v|, at most `limit`, up to 32767.
void limited_magnitudes(const int16_t *in, int16_t limit, int16_t *out, int n);
void limited_magnitudes(const int32_t *in, int16_t limit, int16_t *out, int n);

/// The low 16 bits.
void low_words(const int16_t *in, int16_t *out, int n);
void low_words(const int32_t *in, int16_t *out, int n);

/// A quarter of |v|, rounded down before its sign goes, at most 255: where v is positive and where it is
/// negative.
void signed_parts(const int16_t *in, int16_t *positive, int16_t *negative, int n);
void signed_parts(const int32_t *in, int16_t *positive, int16_t *negative, int n);

/// The samples of one channel or of three, interleaved.
void join_exact(const SplitRow<int16_t> *channels, int count, int width, int32_t *out);
void join_exact(const SplitRow<int32_t> *channels, int count, int width, int32_t *out);

} // namespace cfa
