// Running sums of decomposed pulses, in lanes over points.
#pragma once

#include <algorithm>
#include <cstddef>

#include "excitation/lanes/pulse_lanes.h"
#include "fields/decomposition.h"

namespace kesto {

// Samples that are summed at a stretch: the differences of eight points fit a cache of the second level.
constexpr int samples_of_stretch = 1024;

// The integer at or below, for what an index can hold.
template <class T>
KESTO_INLINE Double<T> floor_of(Double<T> x) {
  const Double<T> rounded = (x + round_in_place) - round_in_place;
  return rounded > x ? rounded - 1.0 : rounded;
}

// `position` within 0 and `count`; NaN is 0.
template <class T>
KESTO_INLINE Double<T> clamped(Double<T> position, double count) {
  return position > 0.0 ? (position < count ? position : broadcast<T>(count)) : Double<T>{};
}

template <class T>
struct SpanLanes {
  Double<T> first, last;
};

// TimeAxis::first_within and end_of in lanes.
template <class T>
KESTO_INLINE Double<T> first_within(const DecompositionArguments& d, Double<T> travel_time) {
  const Double<T> position = (travel_time + d.time_delay - d.start) * d.per_sample;
  return -floor_of<T>(-clamped<T>(position, d.samples));
}
template <class T>
KESTO_INLINE Double<T> end_of(const DecompositionArguments& d, Double<T> position) {
  const double count = d.samples;
  const Double<T> bounded = position > -1.0 ? (position < count ? position : broadcast<T>(count)) : broadcast<T>(-1.0);
  return clamped<T>(floor_of<T>(bounded) + 1.0, count);
}

// TimeAxis::within_pulse and within_cut_pulse in lanes.
template <class T>
KESTO_INLINE SpanLanes<T> within_pulse(const DecompositionArguments& d, Double<T> travel_time) {
  return {first_within<T>(d, travel_time),
          end_of<T>(d, (travel_time + d.time_delay - d.start + d.pulse_width) * d.per_sample)};
}
template <class T>
KESTO_INLINE SpanLanes<T> within_cut_pulse(const DecompositionArguments& d, Double<T> starts, Double<T> travel_time) {
  return {first_within<T>(d, starts),
          end_of<T>(d, (travel_time + d.time_delay + d.pulse_width - d.start) * d.per_sample)};
}

// One vector of points on its way through the samples.
template <class PulseLanes>
struct SuperposeRunningSums {
  using Signature = void(const ExcitationFunction& signal, const DecompositionArguments& arguments);
  static constexpr int terms = PulseLanes::terms;

  template <class T>
  KESTO_INLINE static void run(const ExcitationFunction& signal, const DecompositionArguments& arguments) {
    const DecompositionArguments d = arguments;
    const PulseLanes pulse(static_cast<const typename PulseLanes::Pulse&>(signal));
    for (int p = 0; p < d.block->count; p += T::width) superpose_points<T>(pulse, d, *d.block, p);
  }

 private:
  // Where the pulses of a point's rays begin and end: the rays' own spans to d.begins and d.ends.
  template <class T>
  struct RaySpans {
    Span all;                 // over the lanes
    double last[T::width];    // of each lane
  };
  template <class T>
  KESTO_INLINE static RaySpans<T> span_rays(const DecompositionArguments& d, const RayBlock& block, int p) {
    Double<T> first = broadcast<T>(d.time_block.last), last = broadcast<T>(d.time_block.first);
    for (int j = 0; j < block.rays; ++j) {
      SpanLanes<T> ray = within_pulse<T>(d, load<T::width>(&block.delay[RayBlock::capacity * j + p]));
      const double block_first = d.time_block.first, block_last = d.time_block.last;
      ray.first = ray.first > block_first ? ray.first : broadcast<T>(block_first);
      ray.last = ray.last < block_last ? ray.last : broadcast<T>(block_last);
      for (int lane = 0; lane < T::width; ++lane) {
        d.begins[T::width * j + lane] = static_cast<int>(ray.first[lane]);
        d.ends[T::width * j + lane] = static_cast<int>(ray.last[lane]);
      }
      const Double<T> heard_first = ray.first < ray.last ? ray.first : broadcast<T>(block_last);
      const Double<T> heard_last = ray.first < ray.last ? ray.last : broadcast<T>(block_first);
      first = heard_first < first ? heard_first : first;
      last = heard_last > last ? heard_last : last;
    }
    RaySpans<T> spans = {{d.time_block.last, d.time_block.first}, {}};
    for (int lane = 0; lane < T::width; ++lane) {
      spans.last[lane] = last[lane];
      spans.all = union_of(spans.all, {static_cast<int>(first[lane]), static_cast<int>(last[lane])});
    }
    return spans;
  }

  // Adds the factors of every ray where its pulse begins and takes them away where it ends, within one stretch.
  template <class T>
  KESTO_INLINE static void scatter_rays(const PulseLanes& pulse, const DecompositionArguments& d,
                                        const RayBlock& block, int p, Span stretch) {
    constexpr int width = T::width;
    for (int j = 0; j < block.rays; ++j) {
      const int* const begins = d.begins + width * j;
      const int* const ends = d.ends + width * j;
      const Double<T> weight = load<width>(&block.weight[RayBlock::capacity * j + p]);
      Double<T> factors[terms];
      pulse.template spatial_terms<T>(load<width>(&block.delay[RayBlock::capacity * j + p]), factors);
      double of_ray[terms][width];
      for (int m = 0; m < terms; ++m) store<width>(of_ray[m], weight * factors[m]);
      for (int lane = 0; lane < width; ++lane) {
        if (begins[lane] >= ends[lane]) continue;
        if (begins[lane] >= stretch.first && begins[lane] < stretch.last) {
          double* const at = d.differences + std::ptrdiff_t{begins[lane] - stretch.first} * (terms * width) + lane;
          for (int m = 0; m < terms; ++m) at[m * width] += of_ray[m][lane];
        }
        if (ends[lane] >= stretch.first && ends[lane] < stretch.last) {
          double* const at = d.differences + std::ptrdiff_t{ends[lane] - stretch.first} * (terms * width) + lane;
          for (int m = 0; m < terms; ++m) at[m * width] -= of_ray[m][lane];
        }
      }
    }
  }

  template <class T>
  KESTO_INLINE static void superpose_points(const PulseLanes& pulse, const DecompositionArguments& d,
                                            const RayBlock& block, int p) {
    constexpr int width = T::width;
    const RaySpans<T> rays = span_rays<T>(d, block, p);
    const Double<T> last_of_lane = load<width>(rays.last);
    const Double<T> reference = load<width>(block.reference + p), weight_sum = load<width>(block.weight_sum + p);
    SpanLanes<T> of_reference = within_pulse<T>(d, reference);
    if (d.reference_start == ReferenceStart::first_arrival) {
      Double<T> first_arrival;
      for (int lane = 0; lane < width; ++lane) first_arrival[lane] = block.arrivals[p + lane].first;
      of_reference = within_cut_pulse<T>(d, first_arrival, reference);
    }
    Span references = {static_cast<int>(of_reference.first[0]), static_cast<int>(of_reference.last[0])};
    for (int lane = 1; lane < width; ++lane) {
      references = union_of(references,
                            {static_cast<int>(of_reference.first[lane]), static_cast<int>(of_reference.last[lane])});
    }
    references = intersection_of(references, d.time_block);
    Span all = rays.all;
    if (!references.empty()) all = all.empty() ? references : union_of(all, references);

    int count = block.count - p;
    if (count > width) count = width;
    const bool whole_line = count == width && block.index[p + width - 1] == block.index[p] + width - 1 &&
                            is_ascending(&block.index[p], width) && !d.rounded_to_float;
    Double<T> running[terms] = {};
    for (int from = all.first; from < all.last; from += samples_of_stretch) {
      const Span stretch = {from, std::min(all.last, from + samples_of_stretch)};
      scatter_rays<T>(pulse, d, block, p, stretch);
      for (int k = stretch.first; k < stretch.last; ++k) {
        const double sample = k;
        Double<T> value = {};
        double* const differences = d.differences + std::ptrdiff_t{k - stretch.first} * (terms * width);
        for (int m = 0; m < terms; ++m) {
          running[m] = running[m] + load<width>(differences + m * width);
          store<width>(differences + m * width, Double<T>{});
          const double temporal =
              d.temporal[std::ptrdiff_t{d.time_block.last - d.time_block.first} * m + (k - d.time_block.first)];
          value = multiply_add<T>(running[m], broadcast<T>(temporal), value);
        }
        value = where_top_bit<T>(bits_of<T>(sample - last_of_lane), value);
        if (k >= references.first && k < references.last) {
          const Double<T> v = pulse.template at<T>(d.times[k] - reference - d.time_delay) * weight_sum;
          const Bits<T> within = bits_of<T>(sample - of_reference.last) & ~bits_of<T>(sample - of_reference.first);
          value = value - where_top_bit<T>(within, v);
        }
        value = value * d.amplitude;
        double* const line = d.buffer + k * d.points;
        if (whole_line) {
          double* const to = line + block.index[p];
          store<width>(to, load<width>(to) + value);
        } else {
          for (int lane = 0; lane < count; ++lane) {
            const double v = value[lane];
            line[block.index[p + lane]] += d.rounded_to_float ? static_cast<double>(static_cast<float>(v)) : v;
          }
        }
      }
    }
  }

  KESTO_INLINE static bool is_ascending(const int* index, int count) {
    for (int i = 1; i < count; ++i) {
      if (index[i] != index[i - 1] + 1) return false;
    }
    return true;
  }
};

}  // namespace kesto
