// What the transient computations share: their context, sample indices, and traces added to the time-major buffer.
#pragma once

#include <climits>
#include <cmath>
#include <cstddef>

#include "core/host_api.h"
#include "core/medium.h"
#include "core/transducer.h"
#include "excitation/excitation_function.h"

namespace kesto {

// The sample at or before, at or after a position in samples; within 0 and `count`, and 0 where there is none (NaN).
inline int sample_at_or_before(double position, int count) {
  const double floor = std::floor(position);
  return floor > 0 ? (floor < count ? static_cast<int>(floor) : count) : 0;
}
inline int sample_at_or_after(double position, int count) {
  const double ceiling = std::ceil(position);
  return ceiling > 0 ? (ceiling < count ? static_cast<int>(ceiling) : count) : 0;
}

// Samples from first to before last; none when last is not beyond first.
struct Span {
  int first, last;
};

// The element's time vector as a computation sees it, and its delay.
class TimeAxis {
 public:
  explicit TimeAxis(const Transducer& element);

  double position(double time) const { return (time - start) * per_sample; }  // in samples

  // The samples that a decomposed pulse of this length covers: both ends included.
  Span decomposed(double delay, double pulse_width) const {
    return {sample_at_or_after(position(delay + time_delay), samples),
            end_of_decomposed((delay + time_delay - start + pulse_width) * per_sample)};
  }
  int end_of_decomposed(double position) const {
    const double end = std::floor(position) + 1;
    return end > 0 ? (end < samples ? static_cast<int>(end) : samples) : 0;
  }

  int samples;
  double start, per_sample;  // s, 1/s
  double time_delay;         // s
  bool regular;              // the samples lie where start and step say, to within a hundredth of a step
  // `samples` times, then a vector's worth of times before any pulse.
  ScratchArray<double> times;
};

// An error unless the element has all that a transient computation reads and, where there are points and samples,
// somewhere to add to.
void require_transient_output(const Transducer& element);
void require_excitation(const Transducer& element);

}  // namespace kesto
