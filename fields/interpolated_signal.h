// A sampled signal for many rays: its series as polynomials.
#pragma once

#include <cstddef>

#include "excitation/sampled_signal.h"
#include "fields/time_axis.h"

namespace kesto {

enum class SignalForm { value, derivative };

// Everything that lanes work on, for the functions that carry the target attribute.
struct InterpolationTables {
  double* coefficients;   // [part of a row's step][power][row]
  std::size_t stride;     // of rows, with what vectors may overhang
  double step, per_step;  // between rows, s
  int rows, parts, powers;
  bool in_step;  // rows go with the samples
};

// The kept series within its pulse, to some 1e-14 of its bins' sum, at a cost that does not go with their number.
//
// The pulse is cut into cells short enough for a Taylor polynomial about each middle. Where the samples of the time
// axis have one step, so have the rows of cells, each in as many parts as the highest frequency asks for: along a ray
// every sample then lies at the same place within its cell, and the sum over samples runs through contiguous
// coefficients, in lanes. Other times look for their cells one by one.
class InterpolatedSignal {
 public:
  // Whether the signal's phases are within those of the vector functions.
  static bool serves(const SampledSignal& signal);

  // `times` are those of the axis, less the element's delay or not: then `then_subtracted` is that. They outlive it.
  InterpolatedSignal(const SampledSignal& signal, SignalForm form, const TimeAxis& axis, const double* times,
                     double then_subtracted);

  // trace[k] += sum over n rays of weight_j v(times[k] - delay_j - then_subtracted) for the samples of `window`.
  // Weights and delays lie `stride` apart.
  void add(const double* weight, const double* delay, std::size_t stride, std::size_t n, Span window,
           double* trace) const;

 private:
  double time_along(double delay, int k) const { return times_[k] - delay - then_subtracted_; }
  double value_at(double t) const;

  double width_;
  const double* times_;
  double then_subtracted_;
  int samples_;
  double origin_;  // sample 0 less the element's delay, s
  InterpolationTables tables_;
  ScratchArray<double> coefficients_;
  void (*add_in_step_)(const InterpolationTables&, double weight, int first_row, int part, double place, double* trace,
                       int samples);
};

}  // namespace kesto
