#include "kesto/engine/tile_field.h"

#include <type_traits>

#include "kesto/engine/bowl_tile.h"
#include "kesto/engine/disc_tile.h"
#include "kesto/engine/rectangle_tile.h"

namespace kesto {

namespace {

template <class Part>
KESTO_INLINE Part part_of(const Job::Part& part) {
  if constexpr (std::is_same_v<Part, DiscPart>) return {part.size[0]};
  if constexpr (std::is_same_v<Part, RectanglePart>) return {part.size[0], part.size[1]};
  if constexpr (std::is_same_v<Part, BowlPart>) return {part.size[0], part.size[1], part.size[2]};
}

template <class T>
KESTO_INLINE void to_local(const Tile* tiles, int count, const PlacedElement& element, LocalBatch& local) {
  const auto& axes = element.axes;
  local.size = count * tile_size;
  for (int i = 0; i < local.size; i += T::width) {
    const Tile& tile = tiles[i / tile_size];
    const int at = i % tile_size;
    const Double<T> x = load<T::width>(tile.x + at) - element.centre[0];
    const Double<T> y = load<T::width>(tile.y + at) - element.centre[1];
    const Double<T> z = load<T::width>(tile.z + at) - element.centre[2];
    store<T::width>(local.x + i, axes[0][0] * x + axes[0][1] * y + axes[0][2] * z);
    store<T::width>(local.y + i, axes[1][0] * x + axes[1][1] * y + axes[1][2] * z);
    store<T::width>(local.z + i, axes[2][0] * x + axes[2][1] * y + axes[2][2] * z);
  }
}

// 1 where the element is heard, else 0. Whether it is heard anywhere.
template <class Part, class T>
KESTO_INLINE bool fill_audible(const Job& job, const LocalBatch& p, BatchArray& audible) {
  const Double<T> one = broadcast<T>(1), zero = {};
  Double<T> any = {};
  for (int i = 0; i < p.size; i += T::width) {
    const Double<T> z = load<T::width>(p.z + i) - (std::is_same_v<Part, BowlPart> ? job.depth : 0);
    Double<T> heard = one;
    if (job.silent_behind) {
      if constexpr (std::is_same_v<Part, BowlPart>) {
        const Double<T> x = load<T::width>(p.x + i), y = load<T::width>(p.y + i);
        const Double<T> within = job.depth * job.depth - (x * x + y * y + z * z),
                        beside = z < -job.rim_depth ? zero : one;
        heard = within < 0.0 ? beside : one;
      } else {
        heard = z < 0.0 ? zero : one;
      }
    }
    store<T::width>(audible + i, heard);
    any += heard;
  }
  double sum = 0;
  for (int lane = 0; lane < T::width; ++lane) sum += any[lane];
  return sum > 0;
}

// Adds weight E(d) G.
template <class T, bool lossy>
KESTO_INLINE void superpose(const Job& job, const TileSum& sum, double weight_re, double weight_im,
                            const double* audible, TileResult& result) {
  for (int i = 0; i < tile_size; i += T::width) {
    const Double<T> d = load<T::width>(sum.distance + i), re = load<T::width>(sum.re + i);
    const Double<T> im = load<T::width>(sum.im + i), heard = load<T::width>(audible + i);
    const SinCos<T> wave = sincos<T, Arguments::any>(-d);
    Double<T> amplitude = broadcast<T>(1);
    if constexpr (lossy) amplitude = exp<T, Arguments::any>(-job.loss.per_phase * d);
    const Double<T> wave_re = amplitude * wave.cos, wave_im = amplitude * wave.sin;
    const Double<T> weighted_re = wave_re * weight_re - wave_im * weight_im;
    const Double<T> weighted_im = wave_re * weight_im + wave_im * weight_re;
    const Double<T> p_re = weighted_re * re - weighted_im * im, p_im = weighted_re * im + weighted_im * re;
    const Double<T> zero = {};
    store<T::width>(result.re + i, load<T::width>(result.re + i) + (heard != 0.0 ? p_re : zero));
    store<T::width>(result.im + i, load<T::width>(result.im + i) + (heard != 0.0 ? p_im : zero));
  }
}

// The largest |x| + |y| + |z|.
KESTO_INLINE double reach_of(const Tile& tile) {
  Double<Baseline> most = {};
  for (int i = 0; i < tile_size; i += 2) {
    Double<Baseline> sum = {};
    for (const double* const values : {tile.x, tile.y, tile.z}) {
      const Double<Baseline> v = load<2>(values + i);
      sum += v < 0.0 ? -v : v;
    }
    most = sum > most ? sum : most;
  }
  return std::max(most[0], most[1]);
}

template <class Part, class T, bool lossy>
KESTO_INLINE void add_fields(const Job& job, RuleSet& rules, const Tile* tiles, int count, TileResult* results) {
  double reach = 0;
  for (int t = 0; t < count; ++t) {
    results[t] = {};
    reach = std::max(reach, reach_of(tiles[t]));
  }
  reach = job.k * reach + job.parts[0].size[0] + job.parts[0].size[1];
  for (std::size_t e = 0; e < job.element_count; ++e) {
    const PlacedElement& element = job.elements[e];
    LocalBatch local;
    to_local<T>(tiles, count, element, local);
    alignas(64) BatchArray audible;
    if (!fill_audible<Part, T>(job, local, audible)) continue;
    // Of places, and so of phases; and of the last steps.
    const double rounding = unit_roundoff * (8 * (reach + element.centre_sum) + 20);
    for (int part = 0; part < job.part_count; ++part) {
      const double sign = job.parts[part].sign;
      TileSum sums[batch_tiles];
      sum_batch<T, lossy>(part_of<Part>(job.parts[part]), job.loss, job.accuracy, rules, local, sums);
      for (int t = 0; t < count; ++t) {
        const TileSum& sum = sums[t];
        TileResult& result = results[t];
        superpose<T, lossy>(job, sum, sign * element.re, sign * element.im, audible + t * tile_size, result);
        result.error += element.magnitude * (static_cast<double>(sum.error) + rounding * static_cast<double>(sum.size));
        result.terms += sum.terms * tiles[t].count + sum.graded_terms;
        result.terms_in_single_precision += sum.terms_in_single_precision * tiles[t].count;
        result.graded_points += sum.graded_points;
      }
    }
  }
}

template <class Part, bool lossy>
struct AddFields {
  using Signature = void(const Job& job, RuleSet& rules, const Tile* tiles, int count, TileResult* results);
  template <class Target>
  KESTO_INLINE static void run(const Job& job, RuleSet& rules, const Tile* tiles, int count, TileResult* results) {
    add_fields<Part, Target, lossy>(job, rules, tiles, count, results);
  }
};

template <class Part>
TileField tile_field_of_part(bool lossy, VectorTarget target) {
  return lossy ? kernel_on<AddFields<Part, true>>(target) : kernel_on<AddFields<Part, false>>(target);
}

}  // namespace

TileField tile_field_of(const Job& job, VectorTarget target) {
  const bool lossy = job.loss.per_phase != 0;
  switch (job.kind) {
    case Face::Kind::disc: return tile_field_of_part<DiscPart>(lossy, target);
    case Face::Kind::rectangle: return tile_field_of_part<RectanglePart>(lossy, target);
    default: return tile_field_of_part<BowlPart>(lossy, target);
  }
}

}  // namespace kesto
