// A transient computation of the library's, with all that it needs.
#pragma once

#include <memory>
#include <vector>

#include "core/coordinate_grid.h"
#include "core/medium.h"
#include "core/numerical_integration.h"
#include "core/time_samples.h"
#include "core/transducer.h"
#include "excitation/excitation_function.h"
#include "validation/computation.h"
#include "validation/geometries.h"

namespace kesto::validation {

using Times = std::vector<double>;  // s
using Trace = std::vector<double>;  // a value for each time
using Traces = std::vector<Trace>;  // a trace for each point

// Samples a step apart.
struct Sampling {
  double first, step;  // s
  int count;

  double at(int k) const { return first + step * k; }
  Times times() const;
};

// In water. The element moves with 0.04 m/s at 0.3 rad and is delayed, so that a weight or a delay left out shows, and
// a phase taken in; traces are those of a velocity of 1 m/s without a delay.
class TransientComputation {
 public:
  static constexpr double usual_delay = 0.37e-6;  // s

  TransientComputation(const Geometry& geometry, const Points& points, double delay = usual_delay);

  void sample(const Sampling& sampling);
  void sample_at(Times times);  // anywhere, in any order

  // Of the element at these samples. Throws when the geometry does not offer the method.
  Traces traces(Method method);  // without signal and rule
  Traces traces(Method method, const ExcitationFunction& signal, int nodes);

 private:
  std::unique_ptr<Transducer> element_;
  Medium medium_;
  CoordinateGrid grid_;
  NumericalIntegration rule_;
  TimeSamples time_;
  double delay_;
};

Traces library_traces(const Geometry& geometry, const Points& points, const Sampling& sampling, Method method,
                      const ExcitationFunction& signal, int nodes);

double largest(const Trace& trace);

// The worst of the traces: max |trace - reference| over its own max |reference|. NaN where one has a NaN.
double error_of(const Traces& traces, const Traces& references);

}  // namespace kesto::validation
