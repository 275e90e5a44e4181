// Signals along rays, evaluated sample by sample: the direct transient form.
#pragma once

#include "core/internal/host.h"
#include "excitation/excitation_function.h"
#include "fields/rays.h"
#include "fields/time_axis.h"

namespace kesto {

enum class SignalForm { value, derivative };

// Adds delayed copies of a signal to traces. The analytic pulses run in lanes over samples, other signals through
// their own functions.
class DirectSum {
 public:
  // `time_delay_first`: the order in which a sample's time is taken less the element's delay and the ray's. It decides
  // on which side of a pulse's end a sample falls that lies on it.
  DirectSum(const ExcitationFunction& signal, SignalForm form, const TimeAxis& axis, bool time_delay_first);

  // trace[k] += sum over n rays of weight_j v(t_k - delay_j - time delay), for the samples of `window`. Weights and
  // delays lie `stride` apart. Sets the sample_padding values behind the window to 0.
  void add(const double* weight, const double* delay, std::size_t stride, std::size_t n, Span window,
           double* trace) const;

  // The same for point p of a block, less its reference ray.
  void add(const RayBlock& block, int p, Span window, double* trace) const {
    const double minus_sum = -block.weight_sum[p];
    add(&block.weight[p], &block.delay[p], RayBlock::capacity, static_cast<std::size_t>(block.n), window, trace);
    add(&minus_sum, &block.reference[p], 1, 1, window, trace);
  }

  // Samples beyond which every ray of the block, reference included, is 0: all of them for signals that may reach
  // anywhere, and where samples lie anywhere.
  Span reach(const RayBlock& block) const;

  // Everything that lanes work on, for the functions that carry the target attribute.
  struct Work {
    const double *weight, *delay;
    std::size_t stride, n;
    const double* times;
    double then_subtracted;  // s, after the ray's delay
    double* trace;
    Span window;
    double origin, per_sample, pulse_width;  // sample 0 less the element's delay, s; 1/s; s
    bool regular;
  };

 private:
  const ExcitationFunction& signal_;
  SignalForm form_;
  const TimeAxis& axis_;
  double then_subtracted_;
  ScratchArray<double> times_;                             // less the element's delay where that comes first
  void (*laned_)(const ExcitationFunction&, const Work&);  // null for other signals
};

}  // namespace kesto
