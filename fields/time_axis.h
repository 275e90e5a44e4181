// The sample times of a transient computation, and sample ranges with their rounding.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "core/internal/host.h"
#include "core/transducer.h"

namespace kesto {

// Samples from `first` to before `last`; none when last is not beyond first.
struct Span {
  int first, last;

  bool empty() const { return first >= last; }
};

inline Span union_of(Span a, Span b) { return {std::min(a.first, b.first), std::max(a.last, b.last)}; }
inline Span intersection_of(Span a, Span b) { return {std::max(a.first, b.first), std::min(a.last, b.last)}; }

// A position in samples as an index from 0 to count. NaN is 0.
inline int clamped_index(double position, int count) {
  return position > 0 ? (position < count ? static_cast<int>(position) : count) : 0;
}

// The element's time vector as a computation sees it, and its delay.
struct TimeAxis {
  explicit TimeAxis(const Transducer& element);

  // Everything from the first arrival to the end of a pulse that arrives last, rounded outwards.
  Span between(double first_arrival, double last_arrival, double pulse_width) const {
    return {clamped_index(std::floor((first_arrival + time_delay - start) * per_sample), samples),
            clamped_index(std::ceil((last_arrival + time_delay + pulse_width - start) * per_sample), samples)};
  }

  // The samples within a pulse of this travel time, rounded inwards, the end included.
  Span within_pulse(double travel_time, double pulse_width) const {
    return {first_within(travel_time), end_of((travel_time + time_delay - start + pulse_width) * per_sample)};
  }
  // Those of a reference wave that starts elsewhere. KEPT: the sum of its end has an order of its own, which decides
  // where a sample lies on it.
  Span within_cut_pulse(double starts, double travel_time, double pulse_width) const {
    return {first_within(starts), end_of((travel_time + time_delay + pulse_width - start) * per_sample)};
  }
  int first_within(double travel_time) const {
    return clamped_index(std::ceil((travel_time + time_delay - start) * per_sample), samples);
  }
  int end_of(double position) const { return clamped_index(std::floor(position) + 1, samples); }

  double longest() const;  // largest |time|, s

  int samples;
  double start, per_sample;  // s, 1/s
  double time_delay;         // s
  // Whether every sample lies where start and step say, within half a step. A list of times need not.
  bool regular = true;
  // The times, then a vector's worth of times that no pulse reaches.
  ScratchArray<double> times;
};

// Elements of scratch behind the last sample that vectors may read and write.
constexpr int sample_padding = 8;

inline std::size_t padded(int samples) { return static_cast<std::size_t>(std::max(samples, 0)) + sample_padding; }

}  // namespace kesto
