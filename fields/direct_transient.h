// Signals along rays, evaluated sample by sample: the direct transient form.
#pragma once

#include <optional>

#include "excitation/excitation_function.h"
#include "fields/delayed_slope.h"
#include "fields/interpolated_signal.h"
#include "fields/rays.h"
#include "fields/time_axis.h"
#include "fields/traces.h"

namespace kesto {

// The order in which a sample's time is taken less the ray's travel time and the element's delay. KEPT: it decides on
// which side of a pulse's end a sample falls that lies on it.
enum class DelayOrder { travel_time_first, time_delay_first };

// Everything that lanes work on, for the functions that carry the target attribute.
struct DirectArguments {
  const double *weight, *delay;
  std::size_t stride, rays;
  const double* times;
  double then_subtracted;  // s, after the ray's delay
  double* trace;
  Span window;
  double origin, per_sample, pulse_width;  // sample 0 less the element's delay, s; 1/s; s
  bool regular;
};

// Adds delayed copies of a signal to traces. The analytic pulses and sampled signals run in lanes over samples, other
// signals through their own functions.
class DirectSum {
 public:
  DirectSum(const ExcitationFunction& signal, SignalForm form, const TimeAxis& axis, DelayOrder order);

  // trace[k] += sum over n rays of weight_j v(t_k - delay_j - time delay), for the samples of `window`. Weights and
  // delays lie `stride` apart. Sets the sample_padding values behind the window to 0.
  void add(const double* weight, const double* delay, std::size_t stride, std::size_t n, Span window,
           double* trace) const;

  // The same for point p of a block, less its reference ray.
  void add(const RayBlock& block, int p, Span window, double* trace) const;

  // Samples beyond which every ray of the point, reference included, is 0: all of them for signals that may reach
  // anywhere, and where samples lie anywhere.
  Span audible(const RayBlock& block, int p) const;

  double pulse_width() const { return signal_.get_pulse_width(); }

 private:
  const ExcitationFunction& signal_;
  SignalForm form_;
  const TimeAxis& axis_;
  double then_subtracted_;
  ScratchArray<double> times_;                                        // less the element's delay where that comes first
  void (*laned_)(const ExcitationFunction&, const DirectArguments&);  // null for other signals than analytic pulses
  std::optional<InterpolatedSignal> interpolated_;                    // of a sampled signal
};

// Which samples of a point are computed. KEPT: those of a disc end with its arrivals, so that beside the disc the
// reference wave, which would come first, is cut; and they are told by a step even where the samples have none.
enum class DirectWindow { of_arrivals, of_arrivals_where_regular, every_sample };

// The direct form on the transient road.
class DirectForm {
 public:
  DirectForm(Transducer& element, const TimeAxis& axis, DelayOrder order, DirectWindow window)
      : element_(element),
        axis_(axis),
        window_(window),
        sum_(*element.excitation, SignalForm::value, axis, order),
        traces_(axis.samples) {}

  double pulse_width() const { return sum_.pulse_width(); }
  void superpose(const RayBlock& block);
  void superpose(int i, const DelayedSlope& slope) { superpose_slope(element_, axis_, slope, {0, axis_.samples}, i); }

 private:
  Span window_of(const RayBlock& block, int p) const;

  Transducer& element_;
  const TimeAxis& axis_;
  DirectWindow window_;
  DirectSum sum_;
  Traces traces_;
};

}  // namespace kesto
