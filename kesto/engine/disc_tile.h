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
  alignas(64) double r[tile_size], beyond_rim[tile_size], z[tile_size];  // r, r - a, |z|
};

// With tau* = acosh(1 + y), y = ((r - a)^2 + z^2) / 2ar, where R vanishes, and Re R >= rho_t for t below it:
// M = [1 + min(w g / (z + rho_t), 2w / |(r - a)^2 - 2ar (cosh t - 1)|)] / 2, w = |r^2 - a^2|, g the growth.
template <class T>
KESTO_INLINE void choose_for_disc(DiscPart disc, Loss loss, double accuracy, const DiscPoints& p, RimChoice& choice) {
  using S = InSingle<T>;
  using V = typename S::V;
  const float a = static_cast<float>(disc.a), growth = static_cast<float>(loss.growth);
  const float log_2_by_accuracy = static_cast<float>(std::log(2 / accuracy));
  TileArray<float> rs, beyonds, zs;
  rs.set(p.r), beyonds.set(p.beyond_rim), zs.set(p.z);
  for (int i = 0; i < tile_size; i += S::width) {
    const V r = S::load(rs.at + i), beyond = S::load(beyonds.at + i), z = S::load(zs.at + i);
    const V ar2 = S::max(2 * a * r, S::of(1e-6f * a * a)), s2 = beyond * beyond, near2 = s2 + z * z;
    const V farthest = S::sqrt((r + a) * (r + a) + z * z), nearest = S::sqrt(near2);
    const V middle = 0.5f * (farthest + nearest), kappa = ar2 / (farthest + nearest);
    const V y = near2 / ar2, limit = S::log(y + S::sqrt(y * (y + 2.0f)) + 1.0f);
    const V t = strip_of<S>(log_2_by_accuracy, kappa, 0.9f * limit);
    const V e = S::exp(t), inverse = 1.0f / e, sinh = 0.5f * (e - inverse), cosh = 0.5f * (e + inverse);
    const V bulge = ar2 * (sinh * sinh / (cosh + 1.0f));  // 2ar (cosh t - 1)
    const V rho_t = S::sqrt(S::max(near2 - bulge, S::of(0)));
    const V w = (beyond < 0.0f ? -beyond : beyond) * (r + a), pole = s2 - bulge;
    const V by_distance = w * growth / S::max(z + rho_t, S::of(1e-30f));
    const V by_pole = 2.0f * w / S::max(pole < 0.0f ? -pole : pole, S::of(1e-30f));
    const V m = 0.5f * S::min(by_distance, by_pole) + 0.5f;
    const MidpointNeed<S> need = {log_2_by_accuracy + S::log(m) + kappa * sinh, t};
    S::store(choice.nodes + i, need.nodes());
    S::store(choice.x + i, need.x);
    S::store(choice.t + i, t);
    S::store(choice.phase + i, a * (r + a) / (middle + z));
  }
}

template <class P, bool lossy>
KESTO_INLINE void sum_over_rim(DiscPart disc, Loss loss, RuleView<typename P::Scalar> rule, const DiscPoints& p,
                               TileSum& sum) {
  using Scalar = typename P::Scalar;
  using V = typename P::V;
  TileArray<Scalar> rs, beyonds, zs;
  rs.set(p.r), beyonds.set(p.beyond_rim), zs.set(p.z);
  const Scalar scale = static_cast<Scalar>(disc.a / rule.n);
  for (int i = 0; i < tile_size; i += P::width) {
    const V r = P::load(rs.at + i), beyond = P::load(beyonds.at + i), z = P::load(zs.at + i);
    const V ar2 = r * static_cast<Scalar>(2 * disc.a), z2 = z * z, s2_least = beyond * beyond;
    TermSum<P, lossy> terms(loss.per_phase);
    for (int j = 0; j < rule.n; ++j) {
      const V versine = P::of(rule.node[j]), s2 = P::multiply_add(ar2, versine, s2_least);
      const V distances = P::sqrt(z2 + s2) + z, inverse = P::reciprocal(s2 * distances);
      const V numerator = P::multiply_add(-r, versine, beyond);
      terms.add(numerator * (distances * inverse), static_cast<Scalar>(0.5) * s2 * (s2 * inverse));
    }
    const V re = terms.re() * scale, im = terms.im() * scale;
    for (int lane = 0; lane < P::width; ++lane) {
      sum.re[i + lane] = static_cast<double>(re[lane]);
      sum.im[i + lane] = static_cast<double>(im[lane]);
    }
  }
}

template <class T, bool lossy>
KESTO_INLINE void sum_tile(DiscPart disc, Loss loss, double accuracy, RuleSet& rules, const LocalTile& local,
                           TileSum& sum) {
  DiscPoints p;
  for (int i = 0; i < tile_size; ++i) {
    p.r[i] = __builtin_sqrt(local.x[i] * local.x[i] + local.y[i] * local.y[i]);
    p.beyond_rim[i] = p.r[i] - disc.a;
    p.z[i] = sum.distance[i] = __builtin_fabs(local.z[i]);
  }
  const double truncation = share_of_truncation * accuracy;
  RimChoice choice;
  choose_for_disc<T>(disc, loss, truncation, p, choice);
  const float limit = static_cast<float>(std::min(largest_level - 1.0, 48 + 1.2 * disc.a));
  unsigned beyond;
  const int level = Rules::level_of(choice.most_nodes(limit, beyond));
  const float phase = largest_of_tile(choice.phase);
  sum.error = truncation_error<T>(choice, level, truncation);
  add_rounding<T>(sum, level, phase, 1, accuracy, [&](auto precision) KESTO_INLINE_LAMBDA {
    using P = decltype(precision);
    sum_over_rim<P, lossy>(disc, loss, rules.midpoint.of(level, typename P::Scalar{}), p, sum);
  });
  for (; beyond != 0; beyond &= beyond - 1) {
    const int i = __builtin_ctz(beyond);
    const Complex g = graded_disc(disc.a, p.r[i], p.beyond_rim[i], p.z[i], loss.per_phase, rules.gauss, sum);
    sum.re[i] = g.real(), sum.im[i] = g.imag();
  }
}

}  // namespace kesto
