// Into the skewed layout and back, a plane at a time, in every vector width.
#pragma once

#include "core/vector_target.h"
#include "heat/internal/skewed_layout.h"

namespace kesto {

// Column-major, of (columns + 2) (lines + 2) (planes + 2) points.
struct Pressure {
  const double *real, *imag;
};

// (imag^2 + real^2) absorbed inverse_conductivity, the factors one after the other, into plane k of `source`. Dead
// lanes receive whatever stands near.
using SkewSource = void (*)(const SkewedLayout& layout, int k, const Pressure& pressure, double absorbed,
                            double inverse_conductivity, double* source);

// The interior points of plane k into `column_major`.
using Unskew = void (*)(const SkewedLayout& layout, int k, const double* skewed, double* column_major);

SkewSource skew_source_on(VectorTarget target);
Unskew unskew_on(VectorTarget target);

}  // namespace kesto
