#include "kesto/engine/tile_field.h"

#include <type_traits>

#include "core/lanes/outermost.h"
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

KESTO_INLINE void to_local(const Tile& tile, const PlacedElement& element, LocalTile& local) {
  const auto& axes = element.axes;
  for (int i = 0; i < tile_size; ++i) {
    const double x = tile.x[i] - element.centre[0], y = tile.y[i] - element.centre[1],
                 z = tile.z[i] - element.centre[2];
    local.x[i] = axes[0][0] * x + axes[0][1] * y + axes[0][2] * z;
    local.y[i] = axes[1][0] * x + axes[1][1] * y + axes[1][2] * z;
    local.z[i] = axes[2][0] * x + axes[2][1] * y + axes[2][2] * z;
  }
}

// 1 where the element is heard, else 0. Whether it is heard anywhere.
template <class Part>
KESTO_INLINE bool fill_audible(const Job& job, const LocalTile& p, double (&audible)[tile_size]) {
  if (!job.silent_behind) {
    for (int i = 0; i < tile_size; ++i) audible[i] = 1;
    return true;
  }
  for (int i = 0; i < tile_size; ++i) {
    if constexpr (std::is_same_v<Part, BowlPart>) {
      const double z = p.z[i] - job.depth, r2 = p.x[i] * p.x[i] + p.y[i] * p.y[i];
      const double beside = z < -job.rim_depth ? 0.0 : 1.0;
      audible[i] = r2 + z * z > job.depth * job.depth ? beside : 1.0;
    } else {
      audible[i] = p.z[i] < 0 ? 0.0 : 1.0;
    }
  }
  Double<Baseline> any = load<2>(audible);
  for (int i = 2; i < tile_size; i += 2) any += load<2>(audible + i);
  return any[0] + any[1] > 0;
}

// Adds weight E(d) G.
template <class T, bool lossy>
KESTO_INLINE void superpose(const Job& job, const TileSum& sum, double weight_re, double weight_im,
                            const double (&audible)[tile_size], TileResult& result) {
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
KESTO_INLINE void add_fields(const Job& job, RuleSet& rules, const Tile& tile, TileResult& result) {
  result = {};
  const double reach = job.k * reach_of(tile) + job.parts[0].size[0] + job.parts[0].size[1];
  for (std::size_t e = 0; e < job.element_count; ++e) {
    const PlacedElement& element = job.elements[e];
    LocalTile local;
    to_local(tile, element, local);
    alignas(64) double audible[tile_size];
    if (!fill_audible<Part>(job, local, audible)) continue;
    // Of places, and so of phases; and of the last steps.
    const double rounding = unit_roundoff * (8 * (reach + element.centre_sum) + 20);
    for (int part = 0; part < job.part_count; ++part) {
      const double sign = job.parts[part].sign;
      TileSum sum;
      sum_tile<T, lossy>(part_of<Part>(job.parts[part]), job.loss, job.accuracy, rules, local, sum);
      superpose<T, lossy>(job, sum, sign * element.re, sign * element.im, audible, result);
      result.error += element.magnitude * (static_cast<double>(sum.error) + rounding * static_cast<double>(sum.size));
      result.terms += sum.terms * tile.count + sum.graded_terms;
      result.terms_in_single_precision += sum.terms_in_single_precision * tile.count;
      result.graded_points += sum.graded_points;
    }
  }
}

template <class Part, bool lossy>
struct OutermostTile {
  static void baseline(const Job& job, RuleSet& rules, const Tile& tile, TileResult& result) {
    add_fields<Part, Baseline, lossy>(job, rules, tile, result);
  }
#if KESTO_X86_64
  KESTO_TARGET_AVX2_FMA static void avx2(const Job& job, RuleSet& rules, const Tile& tile, TileResult& result) {
    add_fields<Part, Avx2Fma, lossy>(job, rules, tile, result);
  }
  KESTO_TARGET_AVX512 static void avx512(const Job& job, RuleSet& rules, const Tile& tile, TileResult& result) {
    add_fields<Part, Avx512, lossy>(job, rules, tile, result);
  }
#endif
};

template <class Part>
TileField tile_field_of_part(bool lossy, VectorTarget target) {
  return lossy ? function_on<OutermostTile<Part, true>>(target) : function_on<OutermostTile<Part, false>>(target);
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
