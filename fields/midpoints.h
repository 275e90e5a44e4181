// Midpoint rules of the Rayleigh sums.
#pragma once

#include <cmath>

#include "core/internal/host.h"

namespace kesto {

// Midpoint i of n equal steps from 0 to `length`.
inline double midpoint(int i, int n, double length) { return (i + 0.5) * (length / n); }

inline void fill_cosines_of_midpoints(const ScratchArray<double>& cosine, int n, double length) {
  for (int i = 0; i < n; ++i) cosine[i] = std::cos(midpoint(i, n, length));
}

}  // namespace kesto
