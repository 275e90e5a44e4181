// Ranges sampled in equal steps: the axes of a grid, the time and tau vectors.
#pragma once

#include <climits>
#include <cmath>

#include "core/internal/to_int32.h"

namespace kesto {

constexpr const char* too_many_points = "A coordinate grid must have fewer than 2^31 points.\n";

// How many samples lie from min to max, both included: one when the two are equal or the step is 0. Less than 1 when
// there is no such number: for NaN, for infinite ranges, and from 2^31 on.
//
// Decimal steps rarely fit a range exactly: (0.3 - 0) / 0.1 is a rounding below 3. The tolerance, a part of a sample,
// keeps the last one.
inline int sample_count(double min, double max, double step) {
  if (min == max || step == 0) return 1;
  const int steps = to_int32(std::floor((max - min) / step + 1e-10));
  return steps == INT_MAX ? INT_MIN : steps + 1;
}

inline void fill_samples(double* samples, int count, double min, double step) {
  for (int k = 0; k < count; ++k) samples[k] = k * step + min;
}

}  // namespace kesto
