// The rays of a field in time: from each node of an edge one to each point, with a weight and a travel time, and one
// reference ray. The pressure is sum_j weight_j [v(t - delay_j) - v(t - reference)].
#pragma once

#include <algorithm>
#include <cstddef>

#include "core/internal/host.h"
#include "fields/edge.h"

namespace kesto {

// When the sound of an edge arrives at a point, s.
struct Arrivals {
  double first, last;
};

// Where the samples of the reference ray begin: with its own arrival, or with the first one of the edge.
enum class ReferenceStart { own, first_arrival };

// The rays of up to `capacity` points. Ray j of point p lies at [j capacity + p].
struct RayBlock {
  static constexpr int capacity = 8;
  static_assert(capacity % widest_target == 0);

  explicit RayBlock(int most_rays) : weight(size_of(most_rays)), delay(size_of(most_rays)) {}
  static std::size_t size_of(int rays) { return static_cast<std::size_t>(std::max(rays, 0)) * capacity; }

  // Fills the last vector with copies of the last point.
  void pad() {
    for (int p = count; p < capacity; ++p) {
      const int from = count - 1;
      x[p] = x[from], y[p] = y[from], z[p] = z[from];
      arrivals[p] = arrivals[from];
    }
  }

  int rays = 0;  // of a point
  int count = 0;
  int index[capacity];  // in the grid
  double x[capacity], y[capacity], z[capacity];
  Arrivals arrivals[capacity];
  double weight_sum[capacity];         // over the rays
  double reference[capacity];          // s
  ScratchArray<double> weight, delay;  // delay in s
};

// How a travel time is rounded.
enum class TravelTime { by_division, by_reciprocal };

template <class Edge>
struct FillRays {
  using Signature = void(const Edge& edge, double soundspeed, TravelTime rounding, RayBlock& block);

  template <class T>
  KESTO_INLINE static void run(const Edge& edge_of_caller, double c, TravelTime rounding, RayBlock& block) {
    const Edge edge = edge_of_caller;
    const double reciprocal = 1 / c;
    double* const weights = block.weight.data();
    double* const delays = block.delay.data();
    for (int p = 0; p < block.count; p += T::width) {
      const LocalPoints<T> point = {load<T::width>(block.x + p), load<T::width>(block.y + p),
                                    load<T::width>(block.z + p)};
      store<T::width>(block.reference + p, edge.template reference_distance<T>(point) / c);
      Double<T> sum = {};
      int ray = 0;
      edge.template visit_parts<T>(point, [&](int n, const auto& node) KESTO_INLINE_LAMBDA {
        for (int i = 0; i < n; ++i) {
          const auto terms = node(i);
          for (int t = 0; t < terms.count; ++t, ++ray) {
            sum = sum + terms.coefficient[t];
            store<T::width>(weights + RayBlock::capacity * ray + p, terms.coefficient[t]);
            store<T::width>(delays + RayBlock::capacity * ray + p, rounding == TravelTime::by_reciprocal
                                                                       ? terms.distance[t] * reciprocal
                                                                       : terms.distance[t] / c);
          }
        }
      });
      store<T::width>(block.weight_sum + p, sum);
    }
  }
};

}  // namespace kesto
