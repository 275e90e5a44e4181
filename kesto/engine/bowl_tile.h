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
  alignas(64) BatchArray r, z, rho, ar, hr, near0, far0;  // z from the centre of curvature; ar, hr products; A0, B0
  alignas(64) BatchArray near_sinh, far_sinh;             // A1, B1
  alignas(64) BatchArray cross0;                          // a|z| - h r
  alignas(64) BatchArray distance;                        // |d -+ rho|
  alignas(64) BatchArray nearest2, farthest2;             // from the rim, squared
  alignas(64) BatchArray side;                            // of delta: +1 where z < 0, else -1

  template <class T>
  KESTO_INLINE void set(BowlPart bowl, const LocalBatch& local) {
    using V = Double<T>;
    constexpr double next_to_focus = 1e-16;  // closer, the field is that of the focus
    const double a = bowl.a, d = bowl.d, h = bowl.h;
    for (int i = 0; i < local.size; i += T::width) {
      const V px = load<T::width>(local.x + i), py = load<T::width>(local.y + i);
      const V axial = load<T::width>(local.z + i) - d, radius = sqrt<T>(px * px + py * py), zero = {};
      const V off_focus = radius + (axial < 0.0 ? -axial : axial);
      const V pz = off_focus < next_to_focus ? zero + next_to_focus : axial, z_abs = pz < 0.0 ? -pz : pz;
      const V rhos = sqrt<T>(radius * radius + pz * pz), sides = pz < 0.0 ? zero + 1.0 : zero - 1.0;
      const V gap = d - sides * rhos, ars = a * radius, hrs = h * radius, cross = a * z_abs - hrs;
      const V far = d * z_abs + h * rhos;
      const V near = (cross < 0.0 ? -cross : cross) * (a * z_abs + hrs) / (h * rhos + d * z_abs);
      const V above = pz + h, above2 = above * above;
      store<T::width>(r + i, radius);
      store<T::width>(z + i, pz);
      store<T::width>(rho + i, rhos);
      store<T::width>(ar + i, ars);
      store<T::width>(hr + i, hrs);
      store<T::width>(near_sinh + i, near);
      store<T::width>(far_sinh + i, far);
      store<T::width>(near0 + i, near * (near / (sqrt<T>(near * near + ars * ars) + ars)));
      store<T::width>(far0 + i, far * (far / (d * rhos + h * z_abs + ars)));
      store<T::width>(cross0 + i, cross);
      store<T::width>(distance + i, gap < 0.0 ? -gap : gap);
      store<T::width>(nearest2 + i, (radius - a) * (radius - a) + above2);
      store<T::width>(farthest2 + i, (radius + a) * (radius + a) + above2);
      store<T::width>(side + i, sides);
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
KESTO_INLINE void choose_for_bowl(BowlPart bowl, Loss loss, const Accuracy& accuracy, const BowlPoints& p, int size,
                                  RimChoice& choice) {
  using S = InSingle<T>;
  using V = typename S::V;
  const float a = static_cast<float>(bowl.a), d = static_cast<float>(bowl.d), h = static_cast<float>(bowl.h);
  const float growth = static_cast<float>(loss.growth);
  constexpr float rough = 2e-3f;  // for the rounding of what follows
  for (int i = 0; i < size; i += S::width) {
    const V ar = S::max(S::load_narrowed(p.ar + i), S::of(1e-25f)), near0 = S::load_narrowed(p.near0 + i),
            far0 = S::load_narrowed(p.far0 + i);
    const V near_sinh = S::load_narrowed(p.near_sinh + i), near2 = S::load_narrowed(p.nearest2 + i),
            far2 = S::load_narrowed(p.farthest2 + i);
    const V distance = S::load_narrowed(p.distance + i), rho = S::load_narrowed(p.rho + i),
            z = S::load_narrowed(p.z + i);
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
    const V far_sinh = S::load_narrowed(p.far_sinh + i), to_far = far0 - bulge, to_near = near0 - bulge;
    const V far = far_sinh * S::reciprocal(S::max(to_far < 0.0f ? -to_far : to_far, tiny));
    const V near = near_sinh * S::reciprocal(S::max(to_near < 0.0f ? -to_near : to_near, tiny));
    const V s = 2 * growth * S::reciprocal(S::max(distance + rho_t, tiny));
    const V by_pole = 2.0f * far + S::min(2.0f * near, near_sinh * s);
    const V by_distance = (far + near) * (near0 + 2.0f * ar + bulge) * s;
    const V gain = d * S::reciprocal(S::max(rho, tiny)), m = 0.5f * gain * S::min(by_pole, by_distance);
    const MidpointNeed<S> need = {accuracy.log_2_by_truncation + S::log_at_most(S::max(m, tiny)) + kappa * sinh + rough,
                                  t};
    S::store(choice.nodes + i, need.nodes());
    S::store(choice.x + i, need.x);
    S::store(choice.t + i, t);
    // Where z >= 0 the distance from the rim is formed down from the farthest.
    const V cancelled = z < 0.0f ? S::of(1) : 1.0f + far2 * S::reciprocal(S::max(nearest * (nearest + distance), tiny));
    const V slant = S::min((a * z_abs + h * r) * S::reciprocal(S::max(far_sinh, tiny)), S::of(1));
    S::store(choice.phase + i, cancelled * (2 * d * a) * slant * S::reciprocal(0.5f * (nearest + farthest) + distance));
    S::store(choice.size + i, gain);
  }
}

template <class P, bool lossy>
KESTO_INLINE void sum_over_rim(BowlPart bowl, Loss loss, RuleView<typename P::Scalar> rule, const BowlPoints& p,
                               int first, TileSum& sum) {
  using Scalar = typename P::Scalar;
  using V = typename P::V;
  const Scalar scale = static_cast<Scalar>(-bowl.d * bowl.a / rule.n);
  for (int i = 0; i < tile_size; i += P::width) {
    const int at = first + i;
    const V ars = P::load_narrowed(p.ar + at), a0 = P::load_narrowed(p.near0 + at), b0 = P::load_narrowed(p.far0 + at);
    const V c0 = P::load_narrowed(p.cross0 + at), hrs = P::load_narrowed(p.hr + at);
    const V d = P::load_narrowed(p.distance + at), sign = P::load_narrowed(p.side + at), twice = sign + sign;
    const V nearest2 = P::load_narrowed(p.nearest2 + at), farthest2 = P::load_narrowed(p.farthest2 + at);
    const V first2 = sign > 0 ? nearest2 : farthest2, slope = twice * ars;
    TermSum<P, lossy> terms(loss.per_phase);
    for (int j = 0; j < rule.n; ++j) {
      const V versine = P::of(rule.node[j]), rest = P::of(rule.weight[j]);
      const V a = P::multiply_add(ars, versine, a0), b = P::multiply_add(ars, rest, b0), ab = a * b;
      const V distances = P::sqrt(P::multiply_add(slope, versine, first2)) + d;
      const V inverse = P::reciprocal(ab * distances), cross = P::multiply_add(hrs, versine, c0);
      terms.add(cross * (distances * inverse), twice * a * (ab * inverse));
    }
    const V weight = sign * scale;
    P::store_wide(sum.re + i, terms.re() * weight);
    P::store_wide(sum.im + i, terms.im() * weight);
  }
}

template <class T, bool lossy>
KESTO_INLINE void sum_batch(BowlPart bowl, Loss loss, const Accuracy& accuracy, RuleSet& rules, const LocalBatch& local,
                            TileSum (&sums)[batch_tiles]) {
  BowlPoints p;
  p.set<T>(bowl, local);
  RimChoice choice;
  choose_for_bowl<T>(bowl, loss, accuracy, p, local.size, choice);
  for (int first = 0; first < local.size; first += tile_size) {
    TileSum& sum = sums[first / tile_size];
    __builtin_memcpy(sum.distance, p.distance + first, sizeof sum.distance);
    unsigned beyond;
    const int level = choice.level(first, beyond);
    const float phase = largest_of_tile(choice.phase + first), size = largest_of_tile(choice.size + first);
    sum.error = truncation_error<T>(choice, first, level, accuracy);
    add_rounding<T>(sum, level, phase, size, accuracy, [&](auto precision) KESTO_INLINE_LAMBDA {
      using P = decltype(precision);
      sum_over_rim<P, lossy>(bowl, loss, rules.midpoint.of(level, typename P::Scalar{}), p, first, sum);
    });
    for (; beyond != 0; beyond &= beyond - 1) {
      const int i = __builtin_ctz(beyond);
      const Complex g = graded_bowl(bowl.a, bowl.d, p.at(first + i), loss.per_phase, rules.gauss, sum);
      sum.re[i] = g.real(), sum.im[i] = g.imag();
    }
  }
}

}  // namespace kesto
