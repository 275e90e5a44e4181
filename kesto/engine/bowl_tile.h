// A tile's field of a bowl of aperture radius a and radius of curvature d, its rim h below the centre of curvature, by
// the rim integral
//
//   G = (1/pi) int_0^pi C (e^{-(loss + j) delta} - 1) dpsi.
//
// z counts from the centre of curvature, rho is the distance from it; the wave along the normal has gone |d -+ rho|,
// minus on the apex's side. With psi counted from the far side of the rim where z >= 0, and versine = 1 - cos psi,
//
//   A = d rho - h|z| - ar cos psi = A0 + ar versine            A0 = (d rho - h|z|) - ar
//   B = d rho + h|z| + ar cos psi = B0 + ar (2 - versine)
//   C = +-d a (a|z| - h r cos psi) / AB,  delta = -+2A / (R + |d -+ rho|)         upper signs for z >= 0
//
// with A0 = A1^2 / (hypot(A1, ar) + ar), A1 = |h rho - d|z|| = |a|z| - hr| (a|z| + hr) / (h rho + d|z|), and B0
// likewise, so that nothing cancels, at the focus and near the shadow line neither. It is the Rayleigh integral
// everywhere, also beside the bowl (where C integrates to 0) and behind it. The midpoint rule in psi.
#pragma once

#include "kesto/engine/graded.h"
#include "kesto/engine/tile.h"

namespace kesto {

struct BowlPart {
  double a, d, h;
};

// In the notation above; see BowlPoints.
struct BowlPoint {
  double r, ar, near0, far0, cross0, hr, distance, nearest2, side;
};

struct BowlPoints {
  template <class Real>
  using Array = Real[tile_size];
  alignas(64) Array<double> r, z, rho, ar, hr, near0, far0;  // z from the centre of curvature; ar, hr products; A0, B0
  alignas(64) Array<double> near_sinh, far_sinh;             // A1, B1
  alignas(64) Array<double> cross0;                          // a|z| - hr
  alignas(64) Array<double> distance;                        // |d -+ rho|
  alignas(64) Array<double> nearest2, farthest2;             // from the rim, squared
  alignas(64) Array<double> side;                            // of delta: +1 where z < 0, else -1

  KESTO_INLINE void set(BowlPart bowl, const LocalTile& local) {
    constexpr double next_to_focus = 1e-16;  // closer, the field is that of the focus
    const double a = bowl.a, d = bowl.d, h = bowl.h;
    for (int i = 0; i < tile_size; ++i) {
      const double radial = __builtin_sqrt(local.x[i] * local.x[i] + local.y[i] * local.y[i]), axial = local.z[i] - d;
      const double off_focus = radial + __builtin_fabs(axial);
      r[i] = radial;
      z[i] = off_focus < next_to_focus ? next_to_focus : axial;
    }
    for (int i = 0; i < tile_size; ++i) {
      const double z_abs = __builtin_fabs(z[i]), above = z[i] + h;
      rho[i] = __builtin_sqrt(r[i] * r[i] + z[i] * z[i]);
      side[i] = z[i] < 0 ? 1.0 : -1.0;
      distance[i] = __builtin_fabs(d - side[i] * rho[i]);
      ar[i] = a * r[i], hr[i] = h * r[i];
      cross0[i] = a * z_abs - hr[i];
      far_sinh[i] = d * z_abs + h * rho[i];
      near_sinh[i] = __builtin_fabs(cross0[i]) * (a * z_abs + hr[i]) / (h * rho[i] + d * z_abs);
      near0[i] = near_sinh[i] * (near_sinh[i] / (__builtin_sqrt(near_sinh[i] * near_sinh[i] + ar[i] * ar[i]) + ar[i]));
      far0[i] = far_sinh[i] * (far_sinh[i] / (d * rho[i] + h * z_abs + ar[i]));
      nearest2[i] = (r[i] - a) * (r[i] - a) + above * above;
      farthest2[i] = (r[i] + a) * (r[i] + a) + above * above;
    }
  }
  BowlPoint at(int i) const {
    return {r[i], ar[i], near0[i], far0[i], cross0[i], hr[i], distance[i], nearest2[i], side[i]};
  }
};

// With the poles' hyperbolic cosines and sines, ar times as large, and rho_t as for discs:
// M = d/2rho min(2 far + min(2 near, near_sinh s), (far + near)(near_cosh + ar cosh t) s),
// far = far_sinh / |far_cosh - ar cosh t|, near likewise, s = 2 g / (|d -+ rho| + rho_t).
template <class T>
KESTO_INLINE void choose_for_bowl(BowlPart bowl, Loss loss, const Accuracy& accuracy, const BowlPoints& p,
                                  RimChoice& choice, float& size) {
  using S = InSingle<T>;
  using V = typename S::V;
  const float a = static_cast<float>(bowl.a), d = static_cast<float>(bowl.d), h = static_cast<float>(bowl.h);
  const float growth = static_cast<float>(loss.growth);
  constexpr float rough = 2e-3f;  // for the rounding of what follows
  TileArray<float> ars, near0s, far0s, near_sinhs, far_sinhs, nearest2s, farthest2s, distances, rhos, zs, sizes;
  ars.set(p.ar), near0s.set(p.near0), far0s.set(p.far0), near_sinhs.set(p.near_sinh), far_sinhs.set(p.far_sinh);
  nearest2s.set(p.nearest2), farthest2s.set(p.farthest2), distances.set(p.distance), rhos.set(p.rho), zs.set(p.z);
  for (int i = 0; i < tile_size; i += S::width) {
    const V ar = S::max(S::load(ars.at + i), S::of(1e-25f)), near0 = S::load(near0s.at + i),
            far0 = S::load(far0s.at + i);
    const V near_sinh = S::load(near_sinhs.at + i), near2 = S::load(nearest2s.at + i),
            far2 = S::load(farthest2s.at + i);
    const V distance = S::load(distances.at + i), rho = S::load(rhos.at + i), z = S::load(zs.at + i);
    const V r = ar * (1 / a), z_abs = z < 0.0f ? -z : z, tiny = S::of(1e-30f);
    const V nearest = S::rough_sqrt(near2), farthest = S::rough_sqrt(far2),
            kappa = 2.0f * ar * S::reciprocal(nearest + farthest), inverse_ar = S::reciprocal(ar);
    const V y_rim = 0.5f * near2 * inverse_ar, y_pole = far0 * inverse_ar;
    const V y = S::min(S::min(y_rim, y_pole), S::of(1e9f));
    const V limit = S::log(y + S::rough_sqrt(y * (y + 2.0f)) + 1.0f);
    const V t = strip_of<S>(accuracy.log_2_by_truncation, kappa, 0.9f * limit);
    const V e = S::exp(t), inverse = S::reciprocal(e), sinh = 0.5f * (e - inverse), cosh = 0.5f * (e + inverse);
    const V bulge = ar * (sinh * sinh * S::reciprocal(cosh + 1.0f));  // ar (cosh t - 1)
    const V rho_t = S::rough_sqrt(S::max(near2 - 2.0f * bulge, S::of(0)));
    const V far_sinh = S::load(far_sinhs.at + i), to_far = far0 - bulge, to_near = near0 - bulge;
    const V far = far_sinh * S::reciprocal(S::max(to_far < 0.0f ? -to_far : to_far, tiny));
    const V near = near_sinh * S::reciprocal(S::max(to_near < 0.0f ? -to_near : to_near, tiny));
    const V s = 2 * growth * S::reciprocal(S::max(distance + rho_t, tiny));
    const V by_pole = 2.0f * far + S::min(2.0f * near, near_sinh * s);
    const V by_distance = (far + near) * (near0 + 2.0f * ar + bulge) * s;
    const V gain = d * S::reciprocal(S::max(rho, tiny)), m = 0.5f * gain * S::min(by_pole, by_distance);
    const MidpointNeed<S> need = {accuracy.log_2_by_truncation + S::log(S::max(m, tiny)) + kappa * sinh + rough, t};
    S::store(choice.nodes + i, need.nodes());
    S::store(choice.x + i, need.x);
    S::store(choice.t + i, t);
    // Where z >= 0 the distance from the rim is formed down from the farthest.
    const V cancelled = z < 0.0f ? S::of(1) : 1.0f + far2 * S::reciprocal(S::max(nearest * (nearest + distance), tiny));
    const V slant = S::min((a * z_abs + h * r) * S::reciprocal(S::max(far_sinh, tiny)), S::of(1));
    S::store(choice.phase + i, cancelled * (2 * d * a) * slant * S::reciprocal(0.5f * (nearest + farthest) + distance));
    S::store(sizes.at + i, gain);
  }
  size = largest_of_tile(sizes.at);
}

template <class P, bool lossy>
KESTO_INLINE void sum_over_rim(BowlPart bowl, Loss loss, RuleView<typename P::Scalar> rule, const BowlPoints& p,
                               TileSum& sum) {
  using Scalar = typename P::Scalar;
  using V = typename P::V;
  TileArray<Scalar> ar, near0, far0, cross0, hr, distance, r2_first, r2_slope, side;
  ar.set(p.ar), near0.set(p.near0), far0.set(p.far0), cross0.set(p.cross0), hr.set(p.hr);
  distance.set(p.distance), side.set(p.side);
  for (int i = 0; i < tile_size; ++i) {
    r2_first.at[i] = static_cast<Scalar>(p.side[i] > 0 ? p.nearest2[i] : p.farthest2[i]);
    r2_slope.at[i] = static_cast<Scalar>(2 * p.side[i] * p.ar[i]);
  }
  const Scalar scale = static_cast<Scalar>(-bowl.d * bowl.a / rule.n);
  for (int i = 0; i < tile_size; i += P::width) {
    const V ars = P::load(ar.at + i), a0 = P::load(near0.at + i), b0 = P::load(far0.at + i);
    const V c0 = P::load(cross0.at + i), hrs = P::load(hr.at + i), d = P::load(distance.at + i);
    const V first = P::load(r2_first.at + i), slope = P::load(r2_slope.at + i), sign = P::load(side.at + i),
            twice = sign + sign;
    TermSum<P, lossy> terms(loss.per_phase);
    for (int j = 0; j < rule.n; ++j) {
      const V versine = P::of(rule.node[j]), rest = P::of(rule.weight[j]);
      const V a = P::multiply_add(ars, versine, a0), b = P::multiply_add(ars, rest, b0), ab = a * b;
      const V distances = P::sqrt(P::multiply_add(slope, versine, first)) + d;
      const V inverse = P::reciprocal(ab * distances), cross = P::multiply_add(hrs, versine, c0);
      terms.add(cross * (distances * inverse), twice * a * (ab * inverse));
    }
    const V weight = sign * scale;
    P::store_wide(sum.re + i, terms.re() * weight);
    P::store_wide(sum.im + i, terms.im() * weight);
  }
}

template <class T, bool lossy>
KESTO_INLINE void sum_tile(BowlPart bowl, Loss loss, const Accuracy& accuracy, RuleSet& rules, const LocalTile& local,
                           TileSum& sum) {
  BowlPoints p;
  p.set(bowl, local);
  for (int i = 0; i < tile_size; ++i) sum.distance[i] = p.distance[i];
  RimChoice choice;
  float size;
  choose_for_bowl<T>(bowl, loss, accuracy, p, choice, size);
  unsigned beyond;
  const int level = choice.level<T>(beyond);
  sum.error = truncation_error<T>(choice, level, accuracy);
  add_rounding<T>(sum, level, largest_of_tile(choice.phase), size, accuracy, [&](auto precision) KESTO_INLINE_LAMBDA {
    using P = decltype(precision);
    sum_over_rim<P, lossy>(bowl, loss, rules.midpoint.of(level, typename P::Scalar{}), p, sum);
  });
  for (; beyond != 0; beyond &= beyond - 1) {
    const int i = __builtin_ctz(beyond);
    const Complex g = graded_bowl(bowl.a, bowl.d, p.at(i), loss.per_phase, rules.gauss, sum);
    sum.re[i] = g.real(), sum.im[i] = g.imag();
  }
}

}  // namespace kesto
