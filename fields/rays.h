// The rim integral in time: from each point a ray to every node of the rim, with a weight and a travel time, and one
// reference ray. Its field is sum_j weight_j [v(t - delay_j) - v(t - reference)].
#pragma once

#include <algorithm>
#include <cstddef>

#include "core/internal/host.h"
#include "core/lanes/outermost.h"
#include "core/transducer.h"
#include "fields/point_road.h"
#include "fields/wave_sum.h"

namespace kesto {

// The rays of up to `capacity` points. Node j of point p lies at [j capacity + p].
struct RayBlock {
  static constexpr int capacity = 8;  // a multiple of every width

  explicit RayBlock(int nodes) : n(nodes), weight(size_of(nodes)), delay(size_of(nodes)) {}
  static std::size_t size_of(int nodes) { return static_cast<std::size_t>(std::max(nodes, 0)) * capacity; }

  int n;
  int count = 0;
  int index[capacity];  // in the grid
  double x[capacity], y[capacity], z[capacity];
  double weight_sum[capacity];             // over the nodes
  double reference[capacity];              // s
  double first[capacity], last[capacity];  // arrivals of the rim, s
  ScratchArray<double> weight, delay;      // delay in s
};

// How a travel time is rounded.
struct SoundSpeed {
  double value;  // m/s
  bool by_reciprocal = false;
};

template <class Rim, class T>
KESTO_INLINE void fill_rays(const Rim rim, SoundSpeed c, RayBlock& block) {
  const double reciprocal = 1 / c.value;
  double* const weights = block.weight.data();
  double* const delays = block.delay.data();
  for (int p = 0; p < block.count; p += T::width) {
    const LocalPoints<T> point = {load<T::width>(block.x + p), load<T::width>(block.y + p),
                                  load<T::width>(block.z + p)};
    store<T::width>(block.reference + p, rim.template reference_distance<T>(point) / c.value);
    const auto terms = rim.template terms<T>(point);
    Double<T> sum = {};
    for (int j = 0; j < block.n; ++j) {
      const WaveTerms<T> term = terms(j);
      sum = sum + term.coefficient[0];
      store<T::width>(weights + RayBlock::capacity * j + p, term.coefficient[0]);
      store<T::width>(delays + RayBlock::capacity * j + p,
                      c.by_reciprocal ? term.distance[0] * reciprocal : term.distance[0] / c.value);
    }
    store<T::width>(block.weight_sum + p, sum);
  }
}

template <class Rim>
struct OutermostRays {
  static void baseline(const Rim& rim, SoundSpeed c, RayBlock& block) { fill_rays<Rim, Baseline>(rim, c, block); }
#if KESTO_X86_64
  KESTO_TARGET_AVX2_FMA static void avx2(const Rim& rim, SoundSpeed c, RayBlock& block) {
    fill_rays<Rim, Avx2Fma>(rim, c, block);
  }
  KESTO_TARGET_AVX512 static void avx512(const Rim& rim, SoundSpeed c, RayBlock& block) {
    fill_rays<Rim, Avx512>(rim, c, block);
  }
#endif
};

// Fills blocks of rays in the order of the grid and hands each to consume(block). accept(i, p) says whether a point has
// rays; where not, it gets nothing, or accept has superposed its trace itself. arrive(p, first, last) tells when the
// rim's sound arrives.
template <class Fill, class Accept, class Arrive, class Consume>
void for_each_ray_block(Transducer& element, RayBlock& block, Fill fill, Accept accept, Arrive arrive,
                        Consume consume) {
  const auto flush = [&] {
    if (block.count == 0) return;
    for (int p = block.count; p < RayBlock::capacity; ++p) {  // the last vector has work in every lane
      const int from = block.count - 1;
      block.x[p] = block.x[from], block.y[p] = block.y[from], block.z[p] = block.z[from];
      block.first[p] = block.first[from], block.last[p] = block.last[from];
    }
    fill(block);
    consume(block);
    block.count = 0;
  };
  for_each_local_point(element, [&](int i, const CartesianCoordinate& p) {
    if (!accept(i, p)) return;
    const int at = block.count++;
    block.index[at] = i;
    block.x[at] = p.x, block.y[at] = p.y, block.z[at] = p.z;
    arrive(p, block.first[at], block.last[at]);
    if (block.count == RayBlock::capacity) flush();
  });
  flush();
}

}  // namespace kesto
