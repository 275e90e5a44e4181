// Four floats at a time, beyond vector_math.h: what the single-precision field variants share.
#pragma once

#include <cmath>
#include <complex>

#include "core/vector_math.h"

namespace kesto {

inline Float4 broadcast_ps(float v) { return Float4{v, v, v, v}; }

inline Float4 sqrt_ps(Float4 v) {
  for (int lane = 0; lane < 4; ++lane) v[lane] = std::sqrt(v[lane]);
  return v;
}

// 1 / v to about 12 bits where the processor offers that, else rounded correctly.
inline Float4 approximate_reciprocal_ps(Float4 v) {
#if defined(__x86_64__)
  return __builtin_ia32_rcpps(v);
#else
  return 1.0f / v;
#endif
}

// Squared distances that are differences of nearly equal floats may round to 0 or less.
inline float above_zero(float v) { return v > 1e-30f ? v : 1e-30f; }
inline Float4 above_zero(Float4 v) { return v > 1e-30f ? v : broadcast_ps(1e-30f); }

// Four doubles rounded to float.
inline Float4 rounded_ps(const double* v) { return _mm_set_doubles(v[0], v[1], v[2], v[3]); }

// Four sums of complex terms, one to a lane.
struct ComplexSum4 {
  Float4 re = {}, im = {};

  std::complex<double> total() const {
    return {static_cast<double>(horizontal_add_ps(re)), static_cast<double>(horizontal_add_ps(im))};
  }
};

}  // namespace kesto
