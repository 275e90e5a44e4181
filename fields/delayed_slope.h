// A field that is the slope of the signal, as a shell's is at its centre of curvature.
#pragma once

#include <algorithm>
#include <cstddef>

#include "core/transducer.h"
#include "excitation/excitation_function.h"
#include "fields/time_axis.h"

namespace kesto {

// density depth v'(t - delay).
struct DelayedSlope {
  double delay;    // s
  double depth;    // m, signed
  double density;  // kg/m^3
};

// Adds the samples of `span` to point i.
inline void superpose_slope(Transducer& element, const TimeAxis& axis, const DelayedSlope& slope, Span span, int i) {
  const std::ptrdiff_t points = element.global_coordinate_grid->npoints;
  for (int k = span.first; k < span.last; ++k) {
    const double rise = element.excitation->derivative(axis.times[k] - axis.time_delay - slope.delay);
    element.transient_pressure[i + k * points] += rise * slope.depth * slope.density * element.amplitude;
  }
}

}  // namespace kesto
