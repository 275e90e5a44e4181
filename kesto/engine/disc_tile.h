// A tile's field of a disc of radius a by the rim integral
//
//   G = (1/pi) int_0^pi a (r cos psi - a) / s^2 (e^{-(loss + j) delta} - 1) dpsi,  s^2 = (r - a)^2 + 2 a r (1 - cos
//   psi),
//
// d = z, delta = s^2 / (R + z), R^2 = z^2 + s^2, with the midpoint rule in psi.
#pragma once

#include "kesto/engine/graded.h"
#include "kesto/engine/tile.h"

namespace kesto {

struct DiscPart {
  double a;  // radius
};

struct DiscPoints {
  alignas(64) BatchArray r, beyond_rim, z;  // r, r - a, |z|

  template <class T>
  KESTO_INLINE void set(DiscPart disc, const LocalBatch& local) {
    for (int i = 0; i < local.size; i += T::width) {
      const Double<T> x = load<T::width>(local.x + i), y = load<T::width>(local.y + i), v = load<T::width>(local.z + i);
      const Double<T> radius = sqrt<T>(x * x + y * y);
      store<T::width>(r + i, radius);
      store<T::width>(beyond_rim + i, radius - disc.a);
      store<T::width>(z + i, v < 0.0 ? -v : v);
    }
  }
};

// With tau* = acosh(1 + y), y = ((r - a)^2 + z^2) / 2ar, where R vanishes, and Re R >= rho_t for t below it:
// M = [1 + min(w g / (z + rho_t), 2w / |(r - a)^2 - 2ar (cosh t - 1)|)] / 2, w = |r^2 - a^2|, g the growth.
template <class T>
KESTO_INLINE void choose_for_disc(DiscPart disc, Loss loss, const Accuracy& accuracy, const DiscPoints& p, int size,
                                  RimChoice& choice) {
  using S = InSingle<T>;
  using V = typename S::V;
  const float a = static_cast<float>(disc.a), growth = static_cast<float>(loss.growth);
  constexpr float rough = 2e-3f;  // for the rounding of what follows
  for (int i = 0; i < size; i += S::width) {
    const V r = S::load_narrowed(p.r + i), beyond = S::load_narrowed(p.beyond_rim + i);
    const V z = S::load_narrowed(p.z + i);
    const V ar2 = S::max(2 * a * r, S::of(1e-6f * a * a)), s2 = beyond * beyond, near2 = s2 + z * z;
    const V farthest = S::rough_sqrt((r + a) * (r + a) + z * z), nearest = S::rough_sqrt(near2);
    const V middle = 0.5f * (farthest + nearest), kappa = ar2 * S::reciprocal(farthest + nearest);
    const V y = near2 * S::reciprocal(ar2), limit = S::log(y + S::rough_sqrt(y * (y + 2.0f)) + 1.0f);
    const V t = strip_of<S>(accuracy.log_2_by_truncation, kappa, 0.9f * limit);
    const V e = S::exp(t), inverse = S::reciprocal(e), sinh = 0.5f * (e - inverse), cosh = 0.5f * (e + inverse);
    const V bulge = ar2 * (sinh * sinh * S::reciprocal(cosh + 1.0f));  // 2ar (cosh t - 1)
    const V rho_t = S::rough_sqrt(S::max(near2 - bulge, S::of(0)));
    const V w = (beyond < 0.0f ? -beyond : beyond) * (r + a), pole = s2 - bulge;
    const V by_distance = w * growth * S::reciprocal(S::max(z + rho_t, S::of(1e-30f)));
    const V by_pole = 2.0f * w * S::reciprocal(S::max(pole < 0.0f ? -pole : pole, S::of(1e-30f)));
    const V m = 0.5f * S::min(by_distance, by_pole) + 0.5f;
    const MidpointNeed<S> need = {accuracy.log_2_by_truncation + S::log_at_most(m) + kappa * sinh + rough, t};
    S::store(choice.nodes + i, need.nodes());
    S::store(choice.x + i, need.x);
    S::store(choice.t + i, t);
    S::store(choice.phase + i, a * (r + a) * S::reciprocal(middle + z));
  }
}

template <class P, bool lossy>
KESTO_INLINE void sum_over_rim(DiscPart disc, Loss loss, RuleView<typename P::Scalar> rule, const DiscPoints& p,
                               int first, TileSum& sum) {
  using Scalar = typename P::Scalar;
  using V = typename P::V;
  const Scalar scale = static_cast<Scalar>(disc.a / rule.n);
  for (int i = 0; i < tile_size; i += P::width) {
    const V r = P::load_narrowed(p.r + first + i), beyond = P::load_narrowed(p.beyond_rim + first + i);
    const V z = P::load_narrowed(p.z + first + i);
    const V ar2 = r * static_cast<Scalar>(2 * disc.a), z2 = z * z, s2_least = beyond * beyond;
    TermSum<P, lossy> terms(loss.per_phase);
    for (int j = 0; j < rule.n; ++j) {
      const V versine = P::of(rule.node[j]), s2 = P::multiply_add(ar2, versine, s2_least);
      const V distances = P::sqrt(z2 + s2) + z, inverse = P::reciprocal(s2 * distances);
      const V numerator = P::multiply_add(-r, versine, beyond);
      terms.add(numerator * (distances * inverse), s2 * (s2 * inverse));
    }
    P::store_wide(sum.re + i, terms.re() * scale);
    P::store_wide(sum.im + i, terms.im() * scale);
  }
}

template <class T, bool lossy>
KESTO_INLINE void sum_batch(DiscPart disc, Loss loss, const Accuracy& accuracy, RuleSet& rules, const LocalBatch& local,
                            TileSum (&sums)[batch_tiles]) {
  DiscPoints p;
  p.set<T>(disc, local);
  RimChoice choice;
  choose_for_disc<T>(disc, loss, accuracy, p, local.size, choice);
  for (int first = 0; first < local.size; first += tile_size) {
    TileSum& sum = sums[first / tile_size];
    __builtin_memcpy(sum.distance, p.z + first, sizeof sum.distance);
    unsigned beyond;
    const int level = choice.level(first, beyond);
    const float phase = largest_of_tile(choice.phase + first);
    sum.error = truncation_error<T>(choice, first, level, accuracy);
    add_rounding<T>(sum, level, phase, 1, accuracy, [&](auto precision) KESTO_INLINE_LAMBDA {
      using P = decltype(precision);
      sum_over_rim<P, lossy>(disc, loss, rules.midpoint.of(level, typename P::Scalar{}), p, first, sum);
    });
    for (; beyond != 0; beyond &= beyond - 1) {
      const int i = __builtin_ctz(beyond), at = first + i;
      const Complex g = graded_disc(disc.a, p.r[at], p.beyond_rim[at], p.z[at], loss.per_phase, rules.gauss, sum);
      sum.re[i] = g.real(), sum.im[i] = g.imag();
    }
  }
}

}  // namespace kesto
