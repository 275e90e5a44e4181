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

struct BowlPoint {
  double r, z;             // z from the centre of curvature
  double rho, distance;    // |d -+ rho|
  double ar, near0, far0;  // A0, B0
  double near_sinh;        // |h rho - d|z||: ar times the sine of the pole that delta removes
  double cross0, hr;       // a|z| - h r
  double nearest2, far_2;  // from the rim, squared
  double side;             // of delta: +1 where z < 0, else -1

  KESTO_INLINE void set(BowlPart bowl, double radial, double axial) {
    constexpr double next_to_focus = 1e-16;  // closer, the field is that of the focus
    const double a = bowl.a, d = bowl.d, h = bowl.h, z_abs_given = __builtin_fabs(axial);
    const bool at_focus = radial + z_abs_given < next_to_focus;
    r = at_focus ? 0 : radial;
    z = at_focus ? next_to_focus : axial;
    const double z_abs = __builtin_fabs(z);
    rho = __builtin_sqrt(r * r + z * z);
    side = z < 0 ? 1 : -1;
    distance = __builtin_fabs(d - side * rho);
    ar = a * r, hr = h * r;
    cross0 = a * z_abs - hr;
    near_sinh = __builtin_fabs(cross0) * (a * z_abs + hr) / (h * rho + d * z_abs);
    const double far_sinh = d * z_abs + h * rho;
    near0 = near_sinh * (near_sinh / (__builtin_sqrt(near_sinh * near_sinh + ar * ar) + ar));
    far0 = far_sinh * (far_sinh / (d * rho + h * z_abs + ar));
    const double above = z + h;
    nearest2 = (r - a) * (r - a) + above * above;
    far_2 = (r + a) * (r + a) + above * above;
  }
};

struct BowlPoints {
  alignas(64) double r[tile_size], z[tile_size];
};

// With the poles' hyperbolic cosines and sines, ar times as large, and rho_t as for discs:
// M = d/2rho min(2 far + min(2 near, near_sinh s), (far + near)(near_cosh + ar cosh t) s),
// far = far_sinh / |far_cosh - ar cosh t|, near likewise, s = 2 g / (|d -+ rho| + rho_t).
template <class T>
KESTO_INLINE void choose_for_bowl(BowlPart bowl, Loss loss, double accuracy, const BowlPoint (&points)[tile_size],
                                  RimChoice& choice, float& size) {
  using S = InSingle<T>;
  using V = typename S::V;
  const float a = static_cast<float>(bowl.a), d = static_cast<float>(bowl.d), h = static_cast<float>(bowl.h);
  const float growth = static_cast<float>(loss.growth);
  const float log_2_by_accuracy = static_cast<float>(std::log(2 / accuracy));
  struct {
    alignas(64) float ar[tile_size], near0[tile_size], far0[tile_size], near_sinh[tile_size], nearest2[tile_size],
        farthest2[tile_size], distance[tile_size], rho[tile_size], z[tile_size], size[tile_size];
  } in;
  for (int i = 0; i < tile_size; ++i) {
    const BowlPoint& p = points[i];
    in.ar[i] = static_cast<float>(p.ar), in.near0[i] = static_cast<float>(p.near0);
    in.far0[i] = static_cast<float>(p.far0), in.near_sinh[i] = static_cast<float>(p.near_sinh);
    in.nearest2[i] = static_cast<float>(p.nearest2), in.farthest2[i] = static_cast<float>(p.far_2);
    in.distance[i] = static_cast<float>(p.distance), in.rho[i] = static_cast<float>(p.rho);
    in.z[i] = static_cast<float>(p.z);
  }
  for (int i = 0; i < tile_size; i += S::width) {
    const V ar = S::max(S::load(in.ar + i), S::of(1e-25f)), near0 = S::load(in.near0 + i), far0 = S::load(in.far0 + i);
    const V near_sinh = S::load(in.near_sinh + i), near2 = S::load(in.nearest2 + i), far2 = S::load(in.farthest2 + i);
    const V distance = S::load(in.distance + i), rho = S::load(in.rho + i), z = S::load(in.z + i);
    const V z_abs = z < 0.0f ? -z : z, tiny = S::of(1e-30f);
    const V nearest = S::sqrt(near2), farthest = S::sqrt(far2), kappa = 2.0f * ar / (nearest + farthest);
    const V y_rim = 0.5f * near2 / ar, y_pole = S::max(far0, S::of(0)) / ar;
    const V y = S::min(S::min(y_rim, y_pole), S::of(1e9f));
    const V limit = S::log(y + S::sqrt(y * (y + 2.0f)) + 1.0f);
    const V t = strip_of<S>(log_2_by_accuracy, kappa, 0.9f * limit);
    const V e = S::exp(t), inverse = 1.0f / e, sinh = 0.5f * (e - inverse), cosh = 0.5f * (e + inverse);
    const V bulge = ar * (sinh * sinh / (cosh + 1.0f));  // ar (cosh t - 1)
    const V rho_t = S::sqrt(S::max(near2 - 2.0f * bulge, S::of(0)));
    const V far_sinh = d * z_abs + h * rho, to_far = far0 - bulge, to_near = near0 - bulge;
    const V far = far_sinh / S::max(to_far < 0.0f ? -to_far : to_far, tiny);
    const V near = near_sinh / S::max(to_near < 0.0f ? -to_near : to_near, tiny);
    const V s = 2 * growth / S::max(distance + rho_t, tiny);
    const V by_pole = 2.0f * far + S::min(2.0f * near, near_sinh * s);
    const V by_distance = (far + near) * (near0 + 2.0f * ar + bulge) * s;
    const V m = 0.5f * d / rho * S::min(by_pole, by_distance);
    const MidpointNeed<S> need = {log_2_by_accuracy + S::log(S::max(m, tiny)) + kappa * sinh, t};
    S::store(choice.nodes + i, need.nodes());
    S::store(choice.x + i, need.x);
    S::store(choice.t + i, t);
    // Where z >= 0 the distance from the rim is formed down from the farthest.
    const V cancelled = z < 0.0f ? S::of(1) : 1.0f + far2 / S::max(nearest * (nearest + distance), tiny);
    const V slant = S::min((a * z_abs + h * (ar / a)) / S::max(far_sinh, tiny), S::of(1));
    S::store(choice.phase + i, cancelled * (2 * d * a) * slant / (0.5f * (nearest + farthest) + distance));
    S::store(in.size + i, d / rho);
  }
  size = largest_of_tile(in.size);
}

template <class P, bool lossy>
KESTO_INLINE void sum_over_rim(BowlPart bowl, Loss loss, RuleView<typename P::Scalar> rule,
                               const BowlPoint (&points)[tile_size], TileSum& sum) {
  using Scalar = typename P::Scalar;
  using V = typename P::V;
  TileArray<Scalar> ar, near0, far0, cross0, hr, distance, r2_first, r2_slope, side;
  for (int i = 0; i < tile_size; ++i) {
    const BowlPoint& p = points[i];
    ar.at[i] = static_cast<Scalar>(p.ar), near0.at[i] = static_cast<Scalar>(p.near0);
    far0.at[i] = static_cast<Scalar>(p.far0), cross0.at[i] = static_cast<Scalar>(p.cross0);
    hr.at[i] = static_cast<Scalar>(p.hr), distance.at[i] = static_cast<Scalar>(p.distance);
    r2_first.at[i] = static_cast<Scalar>(p.side > 0 ? p.nearest2 : p.far_2);
    r2_slope.at[i] = static_cast<Scalar>(2 * p.side * p.ar), side.at[i] = static_cast<Scalar>(p.side);
  }
  const Scalar scale = static_cast<Scalar>(-bowl.d * bowl.a / rule.n);
  for (int i = 0; i < tile_size; i += P::width) {
    const V ars = P::load(ar.at + i), a0 = P::load(near0.at + i), b0 = P::load(far0.at + i);
    const V c0 = P::load(cross0.at + i), hrs = P::load(hr.at + i), d = P::load(distance.at + i);
    const V first = P::load(r2_first.at + i), slope = P::load(r2_slope.at + i), sign = P::load(side.at + i);
    TermSum<P, lossy> terms(loss.per_phase);
    for (int j = 0; j < rule.n; ++j) {
      const V versine = P::of(rule.node[j]), rest = P::of(rule.weight[j]);
      const V a = P::multiply_add(ars, versine, a0), b = P::multiply_add(ars, rest, b0), ab = a * b;
      const V distances = P::sqrt(P::multiply_add(slope, versine, first)) + d;
      const V inverse = P::reciprocal(ab * distances), cross = P::multiply_add(hrs, versine, c0);
      terms.add(cross * (distances * inverse), sign * a * (ab * inverse));
    }
    const V weight = sign * scale, re = terms.re() * weight, im = terms.im() * weight;
    for (int lane = 0; lane < P::width; ++lane) {
      sum.re[i + lane] = static_cast<double>(re[lane]);
      sum.im[i + lane] = static_cast<double>(im[lane]);
    }
  }
}

template <class T, bool lossy>
KESTO_INLINE void sum_tile(BowlPart bowl, Loss loss, double accuracy, RuleSet& rules, const LocalTile& local,
                           TileSum& sum) {
  BowlPoint points[tile_size];
  for (int i = 0; i < tile_size; ++i) {
    points[i].set(bowl, __builtin_sqrt(local.x[i] * local.x[i] + local.y[i] * local.y[i]), local.z[i] - bowl.d);
    sum.distance[i] = points[i].distance;
  }
  const double truncation = share_of_truncation * accuracy;
  RimChoice choice;
  float size;
  choose_for_bowl<T>(bowl, loss, truncation, points, choice, size);
  const float limit = static_cast<float>(std::min(largest_level - 1.0, 48 + 1.2 * bowl.a));
  unsigned beyond;
  const int level = Rules::level_of(choice.most_nodes(limit, beyond));
  sum.error = truncation_error<T>(choice, level, truncation);
  add_rounding<T>(sum, level, largest_of_tile(choice.phase), size, accuracy, [&](auto precision) KESTO_INLINE_LAMBDA {
    using P = decltype(precision);
    sum_over_rim<P, lossy>(bowl, loss, rules.midpoint.of(level, typename P::Scalar{}), points, sum);
  });
  for (; beyond != 0; beyond &= beyond - 1) {
    const int i = __builtin_ctz(beyond);
    const Complex g = graded_bowl(bowl.a, bowl.d, points[i], loss.per_phase, rules.gauss, sum);
    sum.re[i] = g.real(), sum.im[i] = g.imag();
  }
}

}  // namespace kesto
