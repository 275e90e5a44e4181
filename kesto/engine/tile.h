// What the shapes' tiles share. All lengths are in units of 1/k: a distance is its phase.
//
// A tile's field is p / (rho c v) = jk / (alpha + jk) E(d) G with E(d) = e^{-(loss + j) d}, d the distance of the wave
// along the normal, and G = sum of coefficient (e^{-(loss + j) delta} - 1), delta = R - d from a difference of squares.
// So G's terms have small relative errors however small delta is, and in single precision an error of delta's own size.
#pragma once

#include <algorithm>
#include <cmath>

#include "core/lanes/float_lanes.h"
#include "kesto/engine/constants.h"
#include "kesto/engine/order.h"
#include "kesto/engine/rules.h"

namespace kesto {

// Some tiles under way at once: what chooses rules waits for itself otherwise.
constexpr int batch_tiles = 4, batch_size = batch_tiles * tile_size;

using BatchArray = double[batch_size];

struct LocalBatch {
  int size;  // a multiple of tile_size
  alignas(64) BatchArray x, y, z;
};

struct Loss {
  double per_phase;  // alpha / k
  double growth;     // hypot(k, alpha) / k
};

// What a part's G may be off by, and what follows from it.
struct Accuracy {
  double whole;
  double truncation;  // of the whole; the rest is for rounding in single precision
  float log_2_by_truncation;
  bool allows_single;  // precision: no wave grows beyond its range
};

struct RuleSet {
  Rules midpoint{Rule::midpoint}, gauss{Rule::gauss}, from_foot{Rule::gauss_from_foot};
};

struct TileSum {
  alignas(64) double re[tile_size], im[tile_size];  // G
  alignas(64) double distance[tile_size];           // d
  float error;                                      // of G at every point
  float size;                                       // no smaller than |G|, roughly
  int terms = 0, terms_in_single_precision = 0;     // of every point
  int graded_points = 0, graded_terms = 0;          // in all
};

// The part of the accuracy that abscissas may use up.
constexpr double share_of_truncation = 0.6;

// `growth`: the most that a wave has lost along the normal and another has not, Np.
inline Accuracy accuracy_of(double whole, double growth) {
  const double truncation = share_of_truncation * whole;
  return {whole, truncation, static_cast<float>(std::log(2 / truncation)),
          growth < static_cast<double>(InSingle<Baseline>::exp_minus_1_range)};
}

// Largest of tile_size floats, no smaller than 0; beyond every limit if one is NaN.
KESTO_INLINE float largest_of_tile(const float* values) {
  using S = InSingle<Baseline>;
  const S::V huge = S::of(1e30f);
  S::V most = {};
  for (int i = 0; i < tile_size; i += 4) {
    const S::V v = S::load(values + i);
    most = S::max(most, v < huge ? v : huge);
  }
  return std::max(std::max(most[0], most[1]), std::max(most[2], most[3]));
}

// Adds coefficient (e^{-(loss + j) x} - 1) by way of -2 sin x/2 (sin x/2 + j cos x/2).
template <class P, bool lossy>
class TermSum {
 public:
  using V = typename P::V;
  KESTO_INLINE explicit TermSum(double loss) : minus_loss_(P::of(static_cast<typename P::Scalar>(-loss))) {}

  KESTO_INLINE void add(V coefficient, V x) {
    V sine, cosine;
    P::unsigned_sincos_of_half(x, sine, cosine);
    if constexpr (lossy) {
      const V exponent = minus_loss_ * x, most = P::of(P::exp_minus_1_range);
      const V within = exponent > most ? most : exponent;
      const V decay = P::exp_minus_1(within < -most ? -most : within);
      decay_ = P::multiply_add(coefficient, decay, decay_);
      coefficient = P::multiply_add(coefficient, decay, coefficient);
    }
    const V weighted = coefficient * sine;
    squares_ = P::multiply_add(weighted, sine, squares_);
    products_ = P::multiply_add(weighted, cosine, products_);
  }
  KESTO_INLINE V re() const {
    if constexpr (lossy) return P::multiply_add(squares_, P::of(-2), decay_);
    return squares_ * P::of(-2);
  }
  KESTO_INLINE V im() const { return products_ * P::of(-2); }

 private:
  V minus_loss_, squares_ = {}, products_ = {}, decay_ = {};
};

// Midpoint rules of the even, periodic integrands of rims. For any t up to the nearest singularity the rule of N nodes
// is off by no more than 2 M e^{growth} / (e^{2Nt} - 1), growth = kappa sinh t: X = log(2/eps) + log M + growth.
template <class S>
struct MidpointNeed {
  typename S::V x, t;

  KESTO_INLINE typename S::V nodes() const {
    using V = typename S::V;
    constexpr float square_of_2_log_2 = 1.93f;
    const V log_of_1_plus = 0.5f * (x + S::rough_sqrt(x * x + square_of_2_log_2));  // no less than log(1 + e^x)
    return log_of_1_plus * S::reciprocal(t + t);
  }
};

// t that makes N nearly smallest.
template <class S>
KESTO_INLINE typename S::V strip_of(float log_2_by_accuracy, typename S::V kappa, typename S::V limit) {
  const typename S::V c = S::rough_cube_root(3 * log_2_by_accuracy * S::reciprocal(kappa));
  return S::max(S::min(S::min(c * S::reciprocal(0.085f * c + 1.0f), limit), S::of(10)), S::of(1e-6f));
}

// What is decided for the points of a batch about a rim.
struct RimChoice {
  alignas(64) float nodes[batch_size], x[batch_size], t[batch_size], phase[batch_size], size[batch_size];

  // The level that serves every point of the tile from `first` on; bits are set in `beyond` for those that ask for too
  // much (or NaN).
  KESTO_INLINE int level(int first, unsigned& beyond) const {
    constexpr float limit = largest_level - 1;
    const float most = largest_of_tile(nodes + first);
    beyond = 0;
    if (most < limit) return Rules::level_of(static_cast<int>(most) + 1);
    float counted = 0;
    for (int i = 0; i < tile_size; ++i) {
      if (nodes[first + i] < limit) {
        counted = std::max(counted, nodes[first + i]);
      } else {
        beyond |= 1u << i;
      }
    }
    return Rules::level_of(static_cast<int>(counted) + 1);
  }
};

// The bound at the level used, for the points that it serves.
template <class T>
KESTO_INLINE float truncation_error(const RimChoice& choice, int first, int level, const Accuracy& accuracy) {
  using S = InSingle<T>;
  using V = typename S::V;
  alignas(64) float errors[tile_size];
  const float n2 = static_cast<float>(2 * level);
  for (int i = 0; i < tile_size; i += S::width) {
    const V exponent = n2 * S::load(choice.t + first + i), x = S::load(choice.x + first + i);
    const V error = S::exp(S::min(x - exponent, S::of(0))) * S::reciprocal(1.0f - S::exp(-exponent));
    S::store(errors + i, S::max(error, S::of(1e-7f)));  // exp carries rounding of this size
  }
  return std::min(largest_of_tile(errors), 1.0f) * static_cast<float>(accuracy.truncation);
}

// Runs `compute` in single precision if that leaves the accuracy alone, else in double, and adds what rounds.
// `phase`: the mean of |coefficient| delta; `size`: of |coefficient| min(2, delta), both at the tile's worst point.
template <class T, class Compute>
KESTO_INLINE void add_rounding(TileSum& sum, int terms, float phase, float size, const Accuracy& accuracy,
                               Compute compute) {
  const float rounding = 4 * phase + (8 + static_cast<float>(terms)) * std::min(phase, 2 * size);
  const float single = unit_roundoff_single * rounding;
  sum.size = std::min(phase, 2 * size);
  sum.terms += terms;
  if (accuracy.allows_single && static_cast<double>(single) <= accuracy.whole - accuracy.truncation) {
    sum.error += single;
    sum.terms_in_single_precision += terms;
    compute(InSingle<T>());
  } else {
    sum.error += static_cast<float>(unit_roundoff) * rounding;
    compute(InDouble<T>());
  }
}

}  // namespace kesto
