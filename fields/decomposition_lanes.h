// Running sums of decomposed pulses, in lanes over points.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

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

// Integers of up to 31 bits and a sign, in the low half of each.
template <class T>
KESTO_INLINE void store_integers(std::uint64_t* to, Double<T> integers) {
  const Bits<T> bits = bits_of<T>(integers + round_in_place);
  __builtin_memcpy(to, &bits, sizeof bits);
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

// From the first of all lanes to the last.
template <class T>
KESTO_INLINE Span hull_of(const SpanLanes<T>& spans) {
  Span all = {static_cast<int>(spans.first[0]), static_cast<int>(spans.last[0])};
  for (int lane = 1; lane < T::width; ++lane) {
    all = union_of(all, {static_cast<int>(spans.first[lane]), static_cast<int>(spans.last[lane])});
  }
  return all;
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
  // Shortest and longest delay of each lane's rays.
  template <class T>
  struct DelayRange {
    Double<T> shortest, longest;

    KESTO_INLINE void include(Double<T> delay) {
      shortest = delay < shortest ? delay : shortest;
      longest = delay > longest ? delay : longest;
    }
  };

  // The samples in which the points may sound: all of the time block where that is one stretch, else as the rays say.
  template <class T>
  KESTO_INLINE static Span bounds(const DecompositionArguments& d, const RayBlock& block, int p,
                                  const SpanLanes<T>& of_reference) {
    if (d.time_block.last - d.time_block.first <= samples_of_stretch) return d.time_block;
    DelayRange<T> delays = {load<T::width>(&block.delay[p]), load<T::width>(&block.delay[p])};
    for (int j = 1; j < block.rays; ++j) delays.include(load<T::width>(&block.delay[RayBlock::capacity * j + p]));
    const Span rays = hull_of<T>({first_within<T>(d, delays.shortest), within_pulse<T>(d, delays.longest).last});
    return intersection_of(union_of(rays, hull_of<T>(of_reference)), d.time_block);
  }

  // Adds the factors of every ray where its pulse begins and takes them away where it ends, within one stretch.
  template <class T>
  KESTO_INLINE static DelayRange<T> scatter_rays(const PulseLanes& pulse, const DecompositionArguments& d,
                                                 const RayBlock& block, int p, Span stretch) {
    constexpr int width = T::width;
    const auto samples = static_cast<std::uint32_t>(stretch.last - stretch.first);
    const double block_first = d.time_block.first, stretch_first = stretch.first;
    DelayRange<T> range = {load<width>(&block.delay[p]), load<width>(&block.delay[p])};
    for (int j = 0; j < block.rays; ++j) {
      const Double<T> weight = load<width>(&block.weight[RayBlock::capacity * j + p]);
      const Double<T> delay = load<width>(&block.delay[RayBlock::capacity * j + p]);
      range.include(delay);
      SpanLanes<T> ray = within_pulse<T>(d, delay);
      if (d.time_block.first > 0) ray.first = ray.first > block_first ? ray.first : broadcast<T>(block_first);
      std::uint64_t begins[width], ends[width];  // in the stretch, by their low 32 bits
      store_integers<T>(begins, ray.first - stretch_first);
      store_integers<T>(ends, ray.last - stretch_first);
      Double<T> factors[terms];
      pulse.template spatial_terms<T>(delay, factors);
      double of_ray[terms][width];
      for (int m = 0; m < terms; ++m) store<width>(of_ray[m], weight * factors[m]);
      for (int lane = 0; lane < width; ++lane) {
        const auto begin = static_cast<std::uint32_t>(begins[lane]), end = static_cast<std::uint32_t>(ends[lane]);
        if (static_cast<std::int32_t>(begin) >= static_cast<std::int32_t>(end)) continue;
        if (begin < samples) {
          double* const at = d.differences + std::size_t{begin} * (terms * width) + lane;
          for (int m = 0; m < terms; ++m) at[m * width] += of_ray[m][lane];
        }
        if (end < samples) {
          double* const at = d.differences + std::size_t{end} * (terms * width) + lane;
          for (int m = 0; m < terms; ++m) at[m * width] -= of_ray[m][lane];
        }
      }
    }
    return range;
  }

  template <class T>
  KESTO_INLINE static void superpose_points(const PulseLanes& pulse, const DecompositionArguments& d,
                                            const RayBlock& block, int p) {
    constexpr int width = T::width;
    const Double<T> reference = load<width>(block.reference + p), weight_sum = load<width>(block.weight_sum + p);
    SpanLanes<T> of_reference = within_pulse<T>(d, reference);
    if (d.reference_start == ReferenceStart::first_arrival) {
      Double<T> first_arrival = {};
      for (int lane = 0; lane < width; ++lane) first_arrival[lane] = block.arrivals[p + lane].first;
      of_reference = within_cut_pulse<T>(d, first_arrival, reference);
    }

    int count = block.count - p;
    if (count > width) count = width;
    const bool whole_line = count == width && is_ascending(&block.index[p], width) && !d.rounded_to_float;
    Double<T> running[terms] = {};
    const Span all = bounds<T>(d, block, p, of_reference);
    for (int from = all.first; from < all.last; from += samples_of_stretch) {
      const Span stretch = {from, std::min(all.last, from + samples_of_stretch)};
      const DelayRange<T> delays = scatter_rays<T>(pulse, d, block, p, stretch);
      const Double<T> last_of_lane = within_pulse<T>(d, delays.longest).last;
      const Span rays = hull_of<T>({first_within<T>(d, delays.shortest), last_of_lane}),
                 references = hull_of<T>(of_reference);
      int first_end = rays.last;
      for (int lane = 0; lane < width; ++lane) first_end = std::min(first_end, static_cast<int>(last_of_lane[lane]));
      const Span sounding = intersection_of(union_of(rays, references), stretch);
      for (int k = sounding.first; k < sounding.last; ++k) {
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
        if (k >= first_end) value = where_top_bit<T>(bits_of<T>(sample - last_of_lane), value);
        if (k >= references.first && k < references.last) {
          const Bits<T> within = bits_of<T>(sample - of_reference.last) & ~bits_of<T>(sample - of_reference.first);
          const Double<T> v = pulse.template at<T>(d.times[k] - reference - d.time_delay) * weight_sum;
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
      // What ended with the last sounding sample is not of the next stretch.
      if (sounding.last < stretch.last) {
        double* const behind = d.differences + std::ptrdiff_t{sounding.last - stretch.first} * (terms * width);
        for (int i = 0; i < terms * width; ++i) behind[i] = 0;
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
